#include "dirmodel/name_translation.h"

#include "config/config.h"
#include "platform/charset.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <memory>
#include <mutex>
#include <string_view>

namespace dorn {

namespace {

constexpr std::size_t kBufferSize = 1024;
constexpr std::size_t kTextSize = 1022;  // bytes of text that a component is given, marker apart
constexpr char kMark = '?';              // leads a repaired component and stands for what is lost
constexpr char kReplacement = '/';       // can't be in a component, so lost characters are found

// The alternate set; threads share it and a running call keeps the one it began with.
std::mutex sTranslationMutex;
std::shared_ptr<const Charset> gTranslation;
std::atomic<uint32_t> sEncoding{0};

std::shared_ptr<const Charset> translation() {
    const std::lock_guard lock(sTranslationMutex);
    return gTranslation;
}

// A result under construction, in a buffer of the calling thread.
class Output {
  public:
    explicit Output(char* buffer) : buffer_(buffer) {}

    std::size_t room() const {
        return kBufferSize - 1 - used_;
    }
    char* end() {
        return buffer_ + used_;
    }
    void advance(std::size_t count) {
        used_ += count;
    }
    void put(char c) {
        if (room() > 0) buffer_[used_++] = c;
    }
    const char* finish() {
        buffer_[used_] = '\0';
        return buffer_;
    }

  private:
    char* buffer_;
    std::size_t used_ = 0;
};

// Calls `convert` for each component and copies the separators; false when a call says so.
template <typename Convert>
bool each_component(std::string_view path, Output& output, Convert convert) {
    while (!path.empty()) {
        const std::size_t length = std::min(path.find('/'), path.size());
        if (length > 0 && !convert(path.substr(0, length))) return false;
        path.remove_prefix(length);
        if (path.empty()) break;
        if (output.room() == 0) return false;
        output.put('/');
        path.remove_prefix(1);
    }
    return true;
}

// The length of the valid UTF-8 at the start of `text`.
std::size_t valid_length(std::string_view text) {
    std::size_t length = 0;
    while (length < text.size()) {
        const std::size_t sequence = utf8_sequence_length(text.substr(length));
        if (sequence == 0) break;
        length += sequence;
    }
    return length;
}

bool is_valid(std::string_view text) {
    return valid_length(text) == text.size();
}

// Puts a "?" for each byte that can't be shown. Returns how many there were.
int repair(char* text, std::size_t size) {
    int bad = 0;
    std::size_t at = 0;
    while ((at += valid_length({text + at, size - at})) < size) {
        text[at++] = kMark;
        ++bad;
    }
    return bad;
}

// A component of UTF-8 is copied, with a mark when it has to be repaired.
int put_utf8(Output& output, std::string_view component) {
    if (is_valid(component) && component.size() <= output.room()) {
        std::copy(component.begin(), component.end(), output.end());
        output.advance(component.size());
        return 0;
    }
    output.put(kMark);
    const std::size_t size = std::min({component.size(), kTextSize, output.room()});
    component.copy(output.end(), size);
    const int bad = repair(output.end(), size);
    output.advance(size);
    return std::max(bad, 1);  // what is bad may lie in the part that was cut
}

// A component of the alternate set is converted, with a mark when some of it is lost.
int put_converted(Output& output, const Charset& charset, std::string_view component) {
    if (output.room() == 0) return 0;
    char* mark = output.end();
    char* text = mark + 1;
    const std::size_t capacity = std::min(kTextSize, output.room() - 1);
    const CharsetResult result = charset_to_utf8(charset, component, text, capacity);
    if (result.status == CharsetStatus::Ok) {
        std::memmove(mark, text, result.written);
        output.advance(result.written);
        return 0;
    }
    const int lost = static_cast<int>(std::count(text, text + result.written, kReplacement));
    std::replace(text, text + result.written, kReplacement, kMark);
    output.put(kMark);
    output.advance(result.written);
    return lost;
}

// Appends the on-disk form of a component; false when there is none.
bool put_encoded(Output& output, const Charset& charset, std::string_view component) {
    const CharsetResult result = charset_from_utf8(charset, component, output.end(), output.room());
    if (result.status != CharsetStatus::Ok || result.written == 0) return false;
    const std::string_view encoded(output.end(), result.written);
    if (encoded.find_first_of(std::string_view("/\0", 2)) != std::string_view::npos) return false;
    output.advance(result.written);
    return true;
}

}  // namespace

int fname_set_translation(uint32_t encoding, const char* charset) {
    // A file can hold both bits; trying UTF-8 first is then the one that loses nothing.
    uint32_t mode = encoding & kEncodingMask;
    if ((mode & kEncodingTryUtf8) != 0) mode = kEncodingTryUtf8;
    CharsetPtr opened;
    const bool wanted = mode != 0 && charset != nullptr && charset[0] != '\0';
    if (wanted) opened = charset_open(charset);
    if (opened) charset_set_replacement(*opened, kReplacement);
    const bool known = opened != nullptr;
    {
        const std::lock_guard lock(sTranslationMutex);
        gTranslation = std::move(opened);
        sEncoding = mode;
    }
    return wanted && !known ? -1 : 0;
}

const char* fname_decode(const char* name, int* count) {
    static thread_local char tDecoded[kBufferSize];
    int unused = 0;
    int& lost = count != nullptr ? *count : unused;
    lost = 0;
    const std::string_view path(name);
    const uint32_t mode = sEncoding;
    if (path.empty() || (mode != kEncodingAlternate && is_valid(path))) return name;

    std::shared_ptr<const Charset> charset;
    if (mode != 0 && !(charset = translation())) return name;
    Output output(tDecoded);
    each_component(path, output, [&](std::string_view component) {
        const bool as_utf8 = mode == 0 || (mode == kEncodingTryUtf8 && is_valid(component));
        lost += as_utf8 ? put_utf8(output, component) : put_converted(output, *charset, component);
        return true;
    });
    return output.finish();
}

const char* fname_encode(const char* name) {
    static thread_local char tEncoded[kBufferSize];
    if (sEncoding != kEncodingAlternate) return name;
    const std::shared_ptr<const Charset> charset = translation();
    if (!charset) return name;
    Output output(tEncoded);
    const bool done = each_component(name, output, [&](std::string_view component) {
        return put_encoded(output, *charset, component);
    });
    return done ? output.finish() : nullptr;
}

}  // namespace dorn
