#include "platform/charset.h"

#include <algorithm>
#include <mutex>
#include <strings.h>
#include <unicode/ucnv.h>
#include <unicode/ucnv_cb.h>
#include <unicode/ucnv_err.h>
#include <unicode/ustring.h>

namespace dorn {

class Charset {
  public:
    explicit Charset(UConverter* opened) : converter(opened) {}
    ~Charset() {
        ucnv_close(converter);
    }
    Charset(const Charset&) = delete;
    Charset& operator=(const Charset&) = delete;

    UConverter* const converter;
    char replacement = '?';
    mutable std::mutex mutex;          // a converter keeps state while it works
    mutable std::size_t replaced = 0;  // characters replaced in the conversion under way
};

namespace {

/// Called for bytes that are no character of the set: puts the replacement, or ends the conversion.
void put_replacement(const void* context, UConverterToUnicodeArgs* args, const char*, int32_t,
                     UConverterCallbackReason reason, UErrorCode* error) {
    if (reason > UCNV_IRREGULAR) return;  // the converter is being reset, cloned or closed
    const auto* charset = static_cast<const Charset*>(context);
    if (charset->replacement == '\0') return;
    ++charset->replaced;
    *error = U_ZERO_ERROR;
    const UChar replacement = static_cast<unsigned char>(charset->replacement);
    ucnv_cbToUWriteUChars(args, &replacement, 1, 0, error);
}

/// Converts all of `text` into UTF-16. False when that stops at a character.
bool decode(const Charset& charset, std::string_view text, std::u16string* out) {
    UErrorCode error = U_BUFFER_OVERFLOW_ERROR;
    int32_t length = static_cast<int32_t>(text.size());
    while (error == U_BUFFER_OVERFLOW_ERROR) {
        out->resize(static_cast<std::size_t>(length));
        error = U_ZERO_ERROR;
        charset.replaced = 0;
        length = ucnv_toUChars(charset.converter, out->data(), length, text.data(),
                               static_cast<int32_t>(text.size()), &error);
    }
    if (U_FAILURE(error)) return false;
    out->resize(static_cast<std::size_t>(length));
    return true;
}

/// Whether the control character `byte` stands for one control character and comes back from it;
/// some sets exchange a few of them.
bool is_plain_control(UConverter* converter, char byte) {
    UChar decoded[4];
    UErrorCode error = U_ZERO_ERROR;
    if (ucnv_toUChars(converter, decoded, 4, &byte, 1, &error) != 1) return false;
    if (decoded[0] >= 0x20 && decoded[0] != 0x7F) return false;
    char encoded[8];
    const int32_t length = ucnv_fromUChars(converter, encoded, 8, decoded, 1, &error);
    return U_SUCCESS(error) && length == 1 && encoded[0] == byte;
}

/// Whether `byte` stands for the ASCII character of its value, in both directions.
bool is_ascii_in(UConverter* converter, char byte) {
    const UChar character = static_cast<unsigned char>(byte);
    UChar decoded[4];
    UErrorCode error = U_ZERO_ERROR;
    const int32_t count = ucnv_toUChars(converter, decoded, 4, &byte, 1, &error);
    if (U_FAILURE(error) || count != 1 || decoded[0] != character) return false;
    char encoded[8];
    const int32_t length = ucnv_fromUChars(converter, encoded, 8, &character, 1, &error);
    return U_SUCCESS(error) && length == 1 && encoded[0] == byte;
}

bool is_ascii_transparent(UConverter* converter) {
    for (char byte = 1; byte < 0x20; ++byte)
        if (!is_plain_control(converter, byte)) return false;
    for (char byte = 0x20; byte < 0x7F; ++byte)
        if (!is_ascii_in(converter, byte)) return false;
    return is_plain_control(converter, 0x7F) && is_ascii_in(converter, 0);
}

/// The registered name of a set, as mail and the web write it where they have one ("ISO-8859-1",
/// not "ISO_8859-1:1987"). Null for a set that has none.
const char* registered_name(const char* set) {
    UErrorCode error = U_ZERO_ERROR;
    const char* mime = ucnv_getStandardName(set, "MIME", &error);
    if (mime != nullptr && ucnv_getCanonicalName(mime, "IANA", &error) != nullptr) return mime;
    error = U_ZERO_ERROR;
    return ucnv_getStandardName(set, "IANA", &error);
}

std::vector<std::string> find_names() {
    std::vector<std::string> names;
    for (int32_t i = 0; i < ucnv_countAvailable(); ++i) {
        const char* name = registered_name(ucnv_getAvailableName(i));
        if (name != nullptr && charset_open(name) != nullptr) names.emplace_back(name);
    }
    const auto before = [](const std::string& a, const std::string& b) {
        return strcasecmp(a.c_str(), b.c_str()) < 0;
    };
    std::sort(names.begin(), names.end(), before);
    names.erase(std::unique(names.begin(), names.end()), names.end());
    return names;
}

bool is_continuation(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

bool is_utf8(std::string_view text) {
    while (!text.empty()) {
        const std::size_t length = utf8_sequence_length(text);
        if (length == 0) return false;
        text.remove_prefix(length);
    }
    return true;
}

}  // namespace

void CharsetCloser::operator()(Charset* charset) const {
    delete charset;
}

CharsetPtr charset_open(const char* name) {
    // An empty name would open the set of the process's locale.
    if (*name == '\0') return nullptr;
    UErrorCode error = U_ZERO_ERROR;
    UConverter* converter = ucnv_open(name, &error);
    if (U_FAILURE(error)) return nullptr;
    CharsetPtr charset(new Charset(converter));
    ucnv_setToUCallBack(converter, put_replacement, charset.get(), nullptr, nullptr, &error);
    ucnv_setFromUCallBack(converter, UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &error);
    if (U_FAILURE(error) || !is_ascii_transparent(converter)) return nullptr;
    return charset;
}

void charset_set_replacement(Charset& charset, char replacement) {
    const std::lock_guard lock(charset.mutex);
    charset.replacement = replacement;
}

CharsetResult charset_to_utf8(const Charset& charset, std::string_view text, char* out,
                              std::size_t capacity) {
    const std::lock_guard lock(charset.mutex);
    std::u16string wide;
    if (!decode(charset, text, &wide)) return {CharsetStatus::Failed, 0};
    std::string utf8(wide.size() * 3, '\0');  // no UTF-16 unit takes more
    UErrorCode error = U_ZERO_ERROR;
    int32_t length = 0;
    u_strToUTF8(utf8.data(), static_cast<int32_t>(utf8.size()), &length, wide.data(),
                static_cast<int32_t>(wide.size()), &error);
    if (U_FAILURE(error)) return {CharsetStatus::Failed, 0};
    utf8.resize(static_cast<std::size_t>(length));

    std::size_t written = std::min(utf8.size(), capacity);
    const bool cut = written < utf8.size();
    while (cut && written > 0 && is_continuation(utf8[written]))
        --written;
    std::copy_n(utf8.data(), written, out);
    const bool whole = charset.replaced == 0 && !cut;
    return {whole ? CharsetStatus::Ok : CharsetStatus::Replaced, written};
}

CharsetResult charset_from_utf8(const Charset& charset, std::string_view text, char* out,
                                std::size_t capacity) {
    constexpr CharsetResult failed{CharsetStatus::Failed, 0};
    if (!is_utf8(text)) return failed;
    std::u16string wide(text.size(), u'\0');
    UErrorCode error = U_ZERO_ERROR;
    int32_t length = 0;
    u_strFromUTF8(wide.data(), static_cast<int32_t>(wide.size()), &length, text.data(),
                  static_cast<int32_t>(text.size()), &error);
    if (U_FAILURE(error)) return failed;
    wide.resize(static_cast<std::size_t>(length));

    const std::lock_guard lock(charset.mutex);
    const int32_t written = ucnv_fromUChars(charset.converter, out, static_cast<int32_t>(capacity),
                                            wide.data(), static_cast<int32_t>(wide.size()), &error);
    if (U_FAILURE(error)) return failed;
    // Characters without a shape are dropped and some are given a look-alike: a name that does not
    // come back as it was is another name.
    const auto size = static_cast<std::size_t>(written);
    std::u16string back;
    if (!decode(charset, {out, size}, &back) || back != wide) return failed;
    return {CharsetStatus::Ok, size};
}

std::vector<std::string> charset_names() {
    // Each set has to be opened to be judged; once is enough.
    static const std::vector<std::string> names = find_names();
    return names;
}

std::size_t utf8_sequence_length(std::string_view text) {
    if (text.empty()) return 0;
    const auto first = static_cast<unsigned char>(text[0]);
    if (first < 0x80) return first == 0 ? 0 : 1;
    if (first < 0xC2 || first > 0xF4) return 0;
    const std::size_t length = first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
    if (text.size() < length) return 0;
    for (std::size_t i = 1; i < length; ++i)
        if (!is_continuation(text[i])) return 0;
    const auto second = static_cast<unsigned char>(text[1]);
    if (first == 0xE0 && second < 0xA0) return 0;  // overlong
    if (first == 0xED && second > 0x9F) return 0;  // a surrogate
    if (first == 0xF0 && second < 0x90) return 0;  // overlong
    if (first == 0xF4 && second > 0x8F) return 0;  // beyond U+10FFFF
    return length;
}

}  // namespace dorn
