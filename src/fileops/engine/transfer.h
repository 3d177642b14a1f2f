// Lists of files on their way: what cut, copy and drag pack and what paste, drop and delete take.
//
// Names and paths are bytes. The packed forms, ours and those of other programs, are described in
// docs/FORMATS.md.
#pragma once

#include <cstdint>
#include <memory>
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

/// The list as the bytes of one of the types above, "" when every name is empty.
std::string transfer_pack(const FileTransfer& transfer, bool cut, const char* type);

/// What lists arrived: one a source directory, in their order.
struct TransferLists {
    bool cut = false;
    std::vector<FileTransfer> lists;
    int foreign = 0;  // entries left out: no local files ("sftp:", ...), or without a name ("/")
    std::vector<std::string> left_out;  // the first few of these, for people to read
};

inline constexpr std::size_t kLeftOutNamed = 5;  // entries that left_out holds at most

/// Reads `bytes` of one of the types above; malformed bytes give no list. `kde_cut` is the data of
/// kTypeKdeCut, which says of a kTypeUriList whether it was cut. Of kTypeText only the form that
/// begins with a line "x-special/nautilus-clipboard" is a list.
TransferLists transfer_unpack(std::string_view bytes, const char* type,
                              std::string_view kde_cut = {});

}  // namespace dorn
