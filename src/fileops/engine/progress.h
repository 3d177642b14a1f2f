// What an operation shows of itself: its slot's texts, the time left, the halt while it is paused.
// Worker thread only.
#pragma once

#include "fileops/engine/file_op.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace dorn {

// Special values of fop_update_info.
inline constexpr int32_t kPercentNone = -100;  // stores 0
inline constexpr int32_t kPercentKeep = -1;    // leaves it, and redraws as often as can be seen
inline constexpr int32_t kTimeKeep = -2;       // leaves the time left

/// Stores what is to be shown (a null text leaves that text) and redraws the slot, at most once in
/// 0.1 s, or in 16 ms when the percent is kPercentKeep; always when the time left is 0. Never waits
/// for the screen: a redraw that can't be had is left out. errno stays.
void fop_update_info(FileOp* op, const char* title, const char* from_label, const char* from_text,
                     const char* to_label, const char* to_text, int32_t percent, int32_t time_left);

/// Redraws the slot, whenever the last time was, with what is stored. errno stays.
void fop_redraw(FileOp* op);

/// True when fop_update_info with a percent and a time left would redraw, so that its texts need
/// not be made for nothing.
bool fop_redraw_due(const FileOp* op);

/// Seconds left for `total` - `done`, from the rate since the first call, leaving out the time in
/// which the operation was paused or a question was open. -1: just begun; -2: too early to say.
int32_t fop_calc_time_left(FileOp* op, uint64_t done, uint64_t total);

/// Leaves the time since `start` (of CLOCK_MONOTONIC) out of the estimate.
void fop_shift_estimate(FileOp* op, const timespec& start);

/// Shortens the path in `text` to about `max` bytes, in place: its head up to the first separator,
/// "*", and its end. Never longer than before. Returns `text`.
char* shrink_name(char* text, std::size_t max);

/// "59 seconds", "1:00 minutes", "2:02 hours"; a blank for 0 or less.
std::string time_left_text(int32_t seconds);

/// 0 when the operation may go on; 1 when it was cancelled. Waits while it is paused.
int fop_pause_trap(FileOp* op);

}  // namespace dorn
