#include "fileops/engine/listed_files.h"

namespace dorn {

ListedFiles::ListedFiles(TransferLists lists) : lists_(std::move(lists)) {
    for (FileTransfer& list : lists_.lists) {
        Names* names = lists_.cut ? &index_[list.directory] : nullptr;
        if (names != nullptr) names->reserve(list.names.size());
        for (std::string& name : list.names) {
            if (name.empty()) continue;
            // A name that comes twice is one file.
            if (names != nullptr && !names->emplace(name, &name).second)
                name.clear();
            else
                ++left_;
        }
    }
}

std::size_t ListedFiles::left() const {
    const std::lock_guard lock(mutex_);
    return left_;
}

bool ListedFiles::has(std::string_view directory, std::string_view name) const {
    const std::lock_guard lock(mutex_);
    const auto names = index_.find(directory);
    return names != index_.end() && names->second.contains(name);
}

bool ListedFiles::take_off(std::string_view directory, std::string_view name) {
    const std::lock_guard lock(mutex_);
    const auto names = index_.find(directory);
    if (names == index_.end()) return false;
    const auto found = names->second.find(name);
    if (found == names->second.end()) return false;
    std::string* listed = found->second;
    names->second.erase(found);
    listed->clear();
    --left_;
    return true;
}

TransferLists ListedFiles::copy() const {
    const std::lock_guard lock(mutex_);
    TransferLists copied = lists_;
    for (FileTransfer& list : copied.lists)
        std::erase(list.names, std::string());
    std::erase_if(copied.lists, [](const FileTransfer& list) { return list.names.empty(); });
    return copied;
}

bool ListedFiles::packs(const char* type) const {
    const std::lock_guard lock(mutex_);
    return transfer_packs(lists_, type);
}

std::string ListedFiles::pack(const char* type) const {
    const std::lock_guard lock(mutex_);
    return transfer_pack(lists_, type);
}

}  // namespace dorn
