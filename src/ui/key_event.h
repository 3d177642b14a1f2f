// A key event as the key-binding registry and the list's key interpreter see it.
#pragma once

#include <cstdint>

namespace dorn {

// Bits of KeyEvent::flags.
inline constexpr uint32_t kKeyDown = 0x1;
inline constexpr uint32_t kKeyRepeat = 0x2;
inline constexpr uint32_t kKeyCapValid = 0x40;
inline constexpr uint32_t kKeySymValid = 0x80;

// Bits of KeyEvent::modifiers.
inline constexpr uint32_t kModShift = 0x1;
inline constexpr uint32_t kModCtrl = 0x2;
inline constexpr uint32_t kModAlt = 0x4;

// Symbols and caps of keys without a character; the others are the character's code point.
inline constexpr uint32_t kKeyBackspace = 0xF008;
inline constexpr uint32_t kKeyEnter = 0xF00D;
inline constexpr uint32_t kKeyEscape = 0xF01B;

struct KeyEvent {
    uint32_t flags = 0;
    uint32_t modifiers = 0;
    uint32_t sym = 0;  // what the key means: a code point, or one of the codes above
    uint32_t cap = 0;  // what is on the key
};

}  // namespace dorn
