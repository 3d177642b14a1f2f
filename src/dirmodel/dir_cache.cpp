#include "dirmodel/dir_entry.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace dorn {

DirCache* gDir = nullptr;

namespace {

constexpr std::size_t kFirstSlab =
    64;  // records; each slab has twice as many as the one before ...
constexpr std::size_t kLargestSlab = 8192;  // ... up to this
constexpr std::size_t kLinkStep = 32;       // bytes

// Makes room for `length` bytes and the NUL; what was there before stays when there is none.
bool make_link_room(DirEntry* entry, std::size_t length) {
    if (length < entry->link_room) return true;
    const std::size_t rounded = (length + kLinkStep) / kLinkStep * kLinkStep;
    const std::size_t room = std::min(rounded, kLinkSize + 1);
    void* text = std::realloc(entry->link_text, room);
    if (text == nullptr) return false;
    entry->link_text = static_cast<char*>(text);
    entry->link_room = static_cast<uint32_t>(room);
    return true;
}

}  // namespace

void entry_set_link(DirEntry* entry, std::string_view text) {
    entry->flags |= kEntryLink;
    text = text.substr(0, kLinkSize);
    if (!make_link_room(entry, text.size())) {
        if (entry->link_text != nullptr) entry->link_text[0] = '\0';
        return;
    }
    text.copy(entry->link_text, text.size());
    entry->link_text[text.size()] = '\0';
}

void EntrySlabs::Free::operator()(DirEntry* slab) const {
    std::free(slab);
}

DirEntry* EntrySlabs::take() {
    if (used_ == size_) {
        size_ = size_ == 0 ? kFirstSlab : std::min(size_ * 2, kLargestSlab);
        used_ = 0;
        auto* slab = static_cast<DirEntry*>(std::calloc(size_, sizeof(DirEntry)));
        if (slab == nullptr) std::_Exit(1);
        slabs_.emplace_back(slab);
    }
    return &slabs_.back()[used_++];
}

void EntrySlabs::put_back(DirEntry* last) {
    *last = DirEntry{};
    --used_;
}

DirCache::~DirCache() {
    for (int32_t i = 0; i < count + spare; ++i)
        std::free(entries[i]->link_text);
    std::free(entries);
}

}  // namespace dorn
