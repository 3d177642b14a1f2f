#include "fileops/engine/transfer.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <limits>
#include <optional>
#include <string>
#include <strings.h>
#include <unistd.h>
#include <unordered_map>

namespace dorn {

bool one_dir_packed = false;

namespace {

constexpr std::size_t kTagSize = 8;     // bytes, filled up with NUL
constexpr std::size_t kNumberSize = 4;  // bytes, the lowest first

bool is_type(const char* type, const char* other) {
    return std::strcmp(type, other) == 0;
}

bool is_empty_list(const FileTransfer& transfer) {
    return std::ranges::all_of(transfer.names, [](const auto& name) { return name.empty(); });
}

// --- our own packed form ---

void put_number(std::string* out, std::size_t number) {
    for (std::size_t shift = 0; shift < 8 * kNumberSize; shift += 8)
        out->push_back(static_cast<char>((number >> shift) & 0xFF));
}

void put_text(std::string* out, const std::string& text) {
    put_number(out, text.size());
    out->append(text);
}

// The one list that has names; null when none or several have.
const FileTransfer* only_list(const TransferLists& transfer) {
    const FileTransfer* only = nullptr;
    for (const FileTransfer& list : transfer.lists) {
        if (is_empty_list(list)) continue;
        if (only != nullptr) return nullptr;
        only = &list;
    }
    return only;
}

std::string pack_own(const FileTransfer& transfer, bool cut) {
    std::string body;
    put_number(&body, transfer.names.size());
    put_text(&body, transfer.directory);
    for (const std::string& name : transfer.names)
        put_text(&body, name);
    if (body.size() > std::numeric_limits<int32_t>::max()) return {};
    std::string out(cut ? kTagCut : kTagCopied);
    out.resize(kTagSize, '\0');
    put_text(&out, body);
    return out;
}

// Takes pieces off the front of the bytes; nothing where fewer are left.
std::optional<std::size_t> take_number(std::string_view* bytes) {
    if (bytes->size() < kNumberSize) return std::nullopt;
    std::size_t number = 0;
    for (std::size_t i = 0; i < kNumberSize; ++i)
        number |= static_cast<std::size_t>(static_cast<unsigned char>((*bytes)[i])) << (8 * i);
    bytes->remove_prefix(kNumberSize);
    return number;
}

std::optional<std::string_view> take_text(std::string_view* bytes) {
    const std::optional<std::size_t> size = take_number(bytes);
    if (!size || *size > bytes->size()) return std::nullopt;
    const std::string_view text = bytes->substr(0, *size);
    bytes->remove_prefix(*size);
    return text;
}

bool is_directory_path(std::string_view path) {
    return path.starts_with('/') && path.find('\0') == std::string_view::npos;
}

bool is_base_name(std::string_view name) {
    return !name.empty() && name != "." && name != ".." &&
           name.find_first_of(std::string_view("/\0", 2)) == std::string_view::npos;
}

std::optional<FileTransfer> unpack_fields(std::string_view body) {
    const std::optional<std::size_t> count = take_number(&body);
    const std::optional<std::string_view> directory = take_text(&body);
    if (!count || !directory || !is_directory_path(*directory)) return std::nullopt;
    if (*count == 0 || *count > body.size() / kNumberSize) return std::nullopt;
    FileTransfer transfer{std::string(*directory), {}};
    transfer.names.reserve(*count);
    for (std::size_t i = 0; i < *count; ++i) {
        const std::optional<std::string_view> name = take_text(&body);
        if (!name || !(name->empty() || is_base_name(*name))) return std::nullopt;
        transfer.names.emplace_back(*name);
    }
    if (!body.empty() || is_empty_list(transfer)) return std::nullopt;
    return transfer;
}

TransferLists unpack_own(std::string_view bytes) {
    if (bytes.size() < kTagSize) return {};
    std::string_view tag = bytes.substr(0, kTagSize);
    tag = tag.substr(0, tag.find('\0'));
    if (tag != kTagCopied && tag != kTagCut) return {};
    bytes.remove_prefix(kTagSize);
    const std::optional<std::string_view> body = take_text(&bytes);
    if (!body || !bytes.empty()) return {};
    std::optional<FileTransfer> transfer = unpack_fields(*body);
    if (!transfer) return {};
    TransferLists arrived;
    arrived.cut = tag == kTagCut;
    arrived.lists.push_back(std::move(*transfer));
    return arrived;
}

// --- paths as URIs, byte by byte ---

bool stands_for_itself(char byte) {
    return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') ||
           (byte >= '0' && byte <= '9') ||
           (byte != '\0' && std::strchr("/-._~!$&'()*+,:=@", byte) != nullptr);
}

void put_encoded(std::string* out, std::string_view bytes) {
    constexpr const char* digits = "0123456789ABCDEF";
    for (const char byte : bytes) {
        if (stands_for_itself(byte)) {
            out->push_back(byte);
            continue;
        }
        const auto value = static_cast<unsigned char>(byte);
        out->push_back('%');
        out->push_back(digits[value >> 4]);
        out->push_back(digits[value & 0xF]);
    }
}

int hex_value(char digit) {
    if (digit >= '0' && digit <= '9') return digit - '0';
    if (digit >= 'A' && digit <= 'F') return digit - 'A' + 10;
    if (digit >= 'a' && digit <= 'f') return digit - 'a' + 10;
    return -1;
}

// The bytes behind the text; none when an escape is broken or hides a NUL or a slash.
std::optional<std::string> decoded(std::string_view text) {
    std::string bytes;
    bytes.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            bytes.push_back(text[i]);
            continue;
        }
        const int high = i + 2 < text.size() ? hex_value(text[i + 1]) : -1;
        const int low = i + 2 < text.size() ? hex_value(text[i + 2]) : -1;
        if (high < 0 || low < 0) return std::nullopt;
        const char byte = static_cast<char>(high * 16 + low);
        if (byte == '\0' || byte == '/') return std::nullopt;
        bytes.push_back(byte);
        i += 2;
    }
    return bytes;
}

bool is_this_host(std::string_view host) {
    if (host.empty()) return true;
    char own[256] = "";
    gethostname(own, sizeof own - 1);
    const std::string asked(host);
    return strcasecmp(asked.c_str(), "localhost") == 0 || strcasecmp(asked.c_str(), own) == 0;
}

}  // namespace

std::optional<std::string> transfer_path_of_uri(std::string_view uri) {
    constexpr std::string_view scheme = "file:";
    if (uri.size() < scheme.size() || strncasecmp(uri.data(), scheme.data(), scheme.size()) != 0)
        return std::nullopt;
    uri.remove_prefix(scheme.size());
    if (uri.starts_with("//")) {
        uri.remove_prefix(2);
        const std::size_t slash = uri.find('/');
        if (slash == std::string_view::npos || !is_this_host(uri.substr(0, slash)))
            return std::nullopt;
        uri.remove_prefix(slash);
    }
    if (!uri.starts_with('/')) return std::nullopt;
    std::optional<std::string> path = decoded(uri);
    if (!path) return std::nullopt;
    const auto doubled = std::unique(path->begin(), path->end(),
                                     [](char a, char b) { return a == '/' && b == '/'; });
    path->erase(doubled, path->end());
    if (path->size() > 1 && path->ends_with('/')) path->pop_back();
    return path;
}

namespace {

// --- the forms of other programs ---

// Puts paths into one list a directory, in the order in which the directories come.
class Grouping {
  public:
    explicit Grouping(TransferLists* arrived) : arrived_(arrived) {}

    void add(std::string_view uri) {
        const std::optional<std::string> path = transfer_path_of_uri(uri);
        const std::size_t slash = path ? path->rfind('/') : std::string::npos;
        if (!path || !is_base_name(std::string_view(*path).substr(slash + 1))) {
            ++arrived_->foreign;
            if (arrived_->left_out.size() < kLeftOutNamed)
                arrived_->left_out.emplace_back(uri.substr(0, kLeftOutBytes));
            return;
        }
        std::string directory = path->substr(0, std::max<std::size_t>(slash, 1));
        const auto [at, is_first] = index_.try_emplace(directory, arrived_->lists.size());
        if (is_first) arrived_->lists.push_back({std::move(directory), {}});
        arrived_->lists[at->second].names.push_back(path->substr(slash + 1));
    }

  private:
    TransferLists* arrived_;
    std::unordered_map<std::string, std::size_t> index_;
};

// Takes a line off the front, without its LF or CRLF.
std::string_view take_line(std::string_view* text) {
    const std::size_t end = text->find('\n');
    std::string_view line = text->substr(0, end);
    text->remove_prefix(end == std::string_view::npos ? text->size() : end + 1);
    if (line.ends_with('\r')) line.remove_suffix(1);
    return line;
}

void unpack_uris(std::string_view text, TransferLists* arrived) {
    Grouping grouping(arrived);
    while (!text.empty()) {
        const std::string_view line = take_line(&text);
        if (!line.empty() && !line.starts_with('#')) grouping.add(line);
    }
}

TransferLists unpack_copied_files(std::string_view text) {
    TransferLists arrived;
    const std::string_view verb = take_line(&text);
    if (verb != "copy" && verb != "cut") return arrived;
    arrived.cut = verb == "cut";
    unpack_uris(text, &arrived);
    return arrived;
}

// The paths of all names, `put` one after the other with `between` between them.
template <class Put>
std::string joined_paths(const TransferLists& transfer, std::string out, const char* between,
                         Put put) {
    bool is_first = true;
    for (const FileTransfer& list : transfer.lists) {
        std::string directory = list.directory;
        if (!directory.ends_with('/')) directory += '/';
        for (const std::string& name : list.names) {
            if (name.empty()) continue;
            if (!is_first) out += between;
            is_first = false;
            put(&out, directory + name);
        }
    }
    return out;
}

void put_uri(std::string* out, std::string_view path) {
    out->append("file://");
    put_encoded(out, path);
}

void put_path(std::string* out, std::string_view path) {
    out->append(path);
}

}  // namespace

std::span<const char* const> transfer_types() {
    static constexpr auto types = std::to_array<const char*>(
        {kTypeTransfiles, kTypeGnomeFiles, kTypeMateFiles, kTypeUriList, kTypeKdeCut, kTypeText});
    return types;
}

bool transfer_packs(const TransferLists& transfer, const char* type) {
    if (is_type(type, kTypeTransfiles)) return only_list(transfer) != nullptr;
    if (is_type(type, kTypeKdeCut) && !transfer.cut) return false;
    const bool is_known = std::ranges::any_of(
        transfer_types(), [type](const char* known) { return is_type(type, known); });
    return is_known && !std::ranges::all_of(transfer.lists, is_empty_list);
}

std::string transfer_pack(const TransferLists& transfer, const char* type) {
    if (!transfer_packs(transfer, type)) return {};
    if (is_type(type, kTypeTransfiles)) return pack_own(*only_list(transfer), transfer.cut);
    if (is_type(type, kTypeKdeCut)) return "1";
    if (is_type(type, kTypeText)) return joined_paths(transfer, "", "\n", put_path);
    if (is_type(type, kTypeUriList)) return joined_paths(transfer, "", "\r\n", put_uri) + "\r\n";
    return joined_paths(transfer, transfer.cut ? "cut\n" : "copy\n", "\n", put_uri);
}

std::shared_ptr<const ClipboardOffer> transfer_offer(
    const std::shared_ptr<const TransferLists>& transfer) {
    auto offer = std::make_shared<ClipboardOffer>();
    offer->types.assign(transfer_types().begin(), transfer_types().end());
    offer->has = [transfer](const char* type) { return transfer_packs(*transfer, type); };
    offer->pack = [transfer](const char* type) { return transfer_pack(*transfer, type); };
    return offer;
}

TransferLists transfer_unpack(std::string_view bytes, const char* type, std::string_view kde_cut) {
    if (is_type(type, kTypeTransfiles)) return unpack_own(bytes);
    bytes = bytes.substr(0, bytes.find('\0'));
    if (is_type(type, kTypeGnomeFiles) || is_type(type, kTypeMateFiles))
        return unpack_copied_files(bytes);
    TransferLists arrived;
    if (is_type(type, kTypeUriList)) {
        arrived.cut = kde_cut.starts_with('1');
        unpack_uris(bytes, &arrived);
    }
    return arrived;
}

}  // namespace dorn
