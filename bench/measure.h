// Clocks, medians, commands and directories for the benchmarks.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace dorn::bench {

/// Milliseconds that `work` takes.
double time_ms(const std::function<void()>& work);

/// The one in the middle; of an even number the higher of the two.
double median(std::vector<double> values);

/// Milliseconds that the shell takes for `command`; ends the benchmark when it fails.
double command_ms(const std::string& command);

struct Painted {
    double ms;             // from just before the process was made to its line "painted"
    int64_t resident = 0;  // bytes, as the line told them; 0 when it did not
};
/// Starts a program that prints "painted [bytes]" once its window is painted and the event loop
/// idle, and then ends. Ends the benchmark when it doesn't.
Painted run_until_painted(const std::vector<std::string>& command);

/// The resident memory of this process, in bytes.
int64_t resident_bytes();

/// The directory of `count` empty files below `root`, made when it is not there.
std::string make_tree(const std::string& root, int count);

/// A line of the result: what, the time, and how it stands to what it is compared with.
void print_ratio(const std::string& what, double ms, const std::string& against, double other_ms,
                 double limit);

/// The same for a figure with a limit of its own.
void print_figure(const std::string& what, double value, const char* unit, double limit);

}  // namespace dorn::bench
