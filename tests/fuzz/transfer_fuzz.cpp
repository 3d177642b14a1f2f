// Arbitrary bytes as a file list, the first byte choosing the type: what comes out are base names
// in absolute directories, and each list survives every type that can carry it.
#include "fileops/engine/transfer.h"

#include <cstdlib>

namespace {

using namespace dorn;

constexpr const char* kTypes[] = {kTypeTransfiles, kTypeGnomeFiles, kTypeMateFiles, kTypeUriList};

void check(bool holds) {
    if (!holds) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) return 0;
    const std::string_view bytes(reinterpret_cast<const char*>(data + 1), size - 1);
    const TransferLists arrived = transfer_unpack(bytes, kTypes[*data % 4], "1");
    for (const FileTransfer& list : arrived.lists) {
        check(list.directory.starts_with('/') && list.directory.find('\0') == std::string::npos);
        for (const std::string& name : list.names)
            check(name.find('/') == std::string::npos && name != "." && name != "..");
        const std::string packed = transfer_pack({arrived.cut, {list}, 0, {}}, kTypeTransfiles);
        const TransferLists again = transfer_unpack(packed, kTypeTransfiles);
        check(again.lists.size() == 1 && again.cut == arrived.cut);
        check(again.lists[0].directory == list.directory && again.lists[0].names == list.names);
    }
    return 0;
}
