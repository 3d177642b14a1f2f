// Lists of files on their way: what cut, copy and drag pack and what paste, drop and delete take.
//
// Names and paths are bytes. The packed forms, ours and those of other programs, are described in
// docs/FORMATS.md.
#pragma once

#include "ui/clipboard.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace dorn {

struct FileTransfer {
    std::string directory;           // that the names are in
    std::vector<std::string> names;  // base names, without "/"; an empty one is done with
};

/// Whether the last list that was packed held exactly one entry, a directory.
extern bool one_dir_packed;

// The types under which a list travels, most telling first.
inline constexpr const char* kTypeTransfiles = "application/x-ortransfiles";
inline constexpr const char* kTypeGnomeFiles = "x-special/gnome-copied-files";
inline constexpr const char* kTypeMateFiles = "x-special/mate-copied-files";
inline constexpr const char* kTypeUriList = "text/uri-list";
inline constexpr const char* kTypeKdeCut = "application/x-kde-cutselection";
inline constexpr const char* kTypeText = "text/plain";

// Tags of our own packed form.
inline constexpr const char* kTagCopied = "files";
inline constexpr const char* kTagCut = "mvfiles";

/// What lists travel together: one a source directory, in their order.
struct TransferLists {
    bool cut = false;
    std::vector<FileTransfer> lists;
    int foreign = 0;  // entries left out: no local files ("sftp:", ...), or without a name ("/")
    std::vector<std::string> left_out = {};  // how the first few of these begin, for people
};

inline constexpr std::size_t kLeftOutNamed = 5;    // entries that left_out holds at most
inline constexpr std::size_t kLeftOutBytes = 200;  // of each

/// Every type that is written, in the order above. The first kListTypes of them are lists by
/// themselves and are read.
std::span<const char* const> transfer_types();
inline constexpr std::size_t kListTypes = 4;

/// The lists as the bytes of one of the types above; "" when every name is empty, when nothing is
/// cut (kTypeKdeCut), or when they are more than our own form holds: one directory.
std::string transfer_pack(const TransferLists& transfer, const char* type);

/// Whether transfer_pack gives any bytes.
bool transfer_packs(const TransferLists& transfer, const char* type);

/// The offer of these lists, for the clipboard or a drag.
std::shared_ptr<const ClipboardOffer> transfer_offer(
    const std::shared_ptr<const TransferLists>& transfer);

/// Reads `bytes` of one of the first kListTypes types; malformed bytes give no list. `kde_cut` is
/// the data of kTypeKdeCut, which says of a kTypeUriList whether it was cut.
TransferLists transfer_unpack(std::string_view bytes, const char* type,
                              std::string_view kde_cut = {});

/// The local path, byte for byte, that a "file:" URI names, with single slashes and none at its
/// end; nothing when it names something else or is broken.
std::optional<std::string> transfer_path_of_uri(std::string_view uri);

}  // namespace dorn
