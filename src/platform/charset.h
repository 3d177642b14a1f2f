// Translation between UTF-8 and a named character set.
//
// Threads: a Charset may be used by several threads at once; each call stands for itself.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace dorn {

class Charset;
struct CharsetCloser {
    void operator()(Charset* charset) const;
};
using CharsetPtr = std::unique_ptr<Charset, CharsetCloser>;

enum class CharsetStatus {
    Ok,           // everything was converted
    Replaced,     // some characters have no equivalent; the replacement stands for each
    Failed = -1,  // nothing usable: the output does not fit, or the text can't be represented
};

struct CharsetResult {
    CharsetStatus status;
    std::size_t written;  // bytes put into the output
};

/// Opens the set of that name (any alias). Null when no such set is known or when it is not
/// ASCII-transparent: every printing ASCII character and NUL is its own byte and stands for nothing
/// else ("/" or NUL inside a character would make another path).
[[nodiscard]] CharsetPtr charset_open(const char* name);

/// Sets the character that stands, in the UTF-8, for bytes that are no character of the set
/// (default
/// "?"). With no replacement ('\0') such a text is Failed.
void charset_set_replacement(Charset& charset, char replacement);

/// Converts `text` from the set into UTF-8. At most `capacity` bytes are written to `out`, whole
/// characters only, without a NUL; a text that doesn't fit is cut there and Replaced.
CharsetResult charset_to_utf8(const Charset& charset, std::string_view text, char* out,
                              std::size_t capacity);

/// Converts `text` from UTF-8 into the set; Failed when it doesn't fit, when it is not valid UTF-8
/// or when a character has no equivalent (a name must not reach the disk changed).
CharsetResult charset_from_utf8(const Charset& charset, std::string_view text, char* out,
                                std::size_t capacity);

/// The registered names of the sets that charset_open takes, in dictionary order, without
/// duplicates. The first call opens every set; the result is kept.
std::vector<std::string> charset_names();

/// The length in bytes of the valid UTF-8 sequence at the start of `text`; 0 when there is none.
/// NUL bytes, surrogates, overlong forms and values beyond U+10FFFF are no valid sequences.
std::size_t utf8_sequence_length(std::string_view text);

}  // namespace dorn
