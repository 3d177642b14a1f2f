// File names between the disk's encoding and the display's UTF-8.
//
// Which conversion is applied is chosen by the encoding bits of the configuration record together
// with the alternate character set. Paths go through component by component: a separator stays one.
//
// Results that are not the caller's own string live in a buffer of the calling thread, one for each
// direction, and are valid until that thread's next call of the same function.
#pragma once

#include <cstdint>

namespace dorn {

/// Sets the conversion: `encoding` is kEncodingTryUtf8, kEncodingAlternate or 0, `charset` the name
/// of the alternate set (empty for none). 0, or -1 when no such set is known (then names are
/// treated as if none were given). Event-loop thread; other threads' running calls are not harmed.
int fname_set_translation(uint32_t encoding, const char* charset);

/// The text to display for the on-disk `name`: `name` itself, or converted text; a name with bytes
/// that can't be shown begins with "?" and has "?" in their place. `*count`, unless null, receives
/// how many there were.
const char* fname_decode(const char* name, int* count);

/// The on-disk form of the displayed `name`: `name` itself, or converted text; null when the
/// alternate set can't represent it or it does not fit.
const char* fname_encode(const char* name);

}  // namespace dorn
