#include "dirmodel/name_match.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <fnmatch.h>
#include <string>
#include <string_view>

namespace dorn {

namespace {

constexpr std::size_t kBufferSize = 512;

// A NUL-terminated copy of a text: on the stack for the usual lengths, else on the heap.
class TextCopy {
  public:
    TextCopy(std::string_view text, bool lower) {
        if (text.size() >= buffer_.size()) {
            heap_.resize(text.size());
            text_ = heap_.data();
        }
        std::copy(text.begin(), text.end(), text_);
        if (lower) std::transform(text_, text_ + text.size(), text_, to_lower);
        text_[text.size()] = '\0';
    }
    TextCopy(const TextCopy&) = delete;
    TextCopy& operator=(const TextCopy&) = delete;

    const char* c_str() const {
        return text_;
    }

  private:
    // ASCII letters alone, so that the bytes of longer characters stay whole.
    static char to_lower(char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    }

    std::array<char, kBufferSize> buffer_;
    std::string heap_;
    char* text_ = buffer_.data();
};

bool is_plain(std::string_view pattern) {
    return pattern.find_first_of("*?[\\") == std::string_view::npos;
}

// One pattern against the name. "*", a plain text and "*.end" are decided by comparing bytes, with
// the result that fnmatch has in every locale: "." is never a part of a longer character.
int match_one(const char* name, std::string_view pattern) {
    if (pattern == "*") return 0;
    const std::string_view text(name);
    if (is_plain(pattern)) return text == pattern ? 0 : FNM_NOMATCH;
    if (pattern.starts_with("*.") && is_plain(pattern.substr(1))) {
        return text.ends_with(pattern.substr(1)) ? 0 : FNM_NOMATCH;
    }
    return fnmatch(TextCopy(pattern, false).c_str(), name, 0);
}

int match_any(const char* name, const char* patterns) {
    for (;;) {
        const char* end = strchrnul(patterns, '|');
        const int result =
            match_one(name, std::string_view(patterns, static_cast<std::size_t>(end - patterns)));
        if (result == 0 || *end == '\0') return result;
        patterns = end + 1;
    }
}

}  // namespace

int es_strcmp(const char* name, const char* patterns) {
    if (patterns[0] != '^') return match_any(name, patterns);
    return match_any(TextCopy(name, true).c_str(), TextCopy(patterns + 1, true).c_str());
}

}  // namespace dorn
