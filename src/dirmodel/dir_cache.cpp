#include "dirmodel/dir_entry.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <sys/mman.h>

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define DORN_LEAK_CHECK
#endif
#elif defined(__SANITIZE_ADDRESS__)
#define DORN_LEAK_CHECK
#endif
#ifdef DORN_LEAK_CHECK
#include <sanitizer/lsan_interface.h>
#endif

namespace dorn {

DirCache* gDir = nullptr;

namespace {

// In records: each slab has twice as many as the one before, up to the largest.
constexpr std::size_t kFirstSlab = 64;
constexpr std::size_t kLargestSlab = 8192;
constexpr std::size_t kLinkStep = 32;  // bytes

// A leak checker looks for pointers in the heap only, unless told; slabs hold those to link texts.
void show_to_leak_check([[maybe_unused]] void* slab, [[maybe_unused]] std::size_t bytes) {
#ifdef DORN_LEAK_CHECK
    __lsan_register_root_region(slab, bytes);
#endif
}

void hide_from_leak_check([[maybe_unused]] void* slab, [[maybe_unused]] std::size_t bytes) {
#ifdef DORN_LEAK_CHECK
    __lsan_unregister_root_region(slab, bytes);
#endif
}

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

EntrySlabs::~EntrySlabs() {
    for (const Slab& slab : slabs_) {
        hide_from_leak_check(slab.records, slab.size * sizeof(DirEntry));
        munmap(slab.records, slab.size * sizeof(DirEntry));
    }
}

// Slabs are mapped, not allocated: the heap would put them between the blocks that grow with the
// directory and leave holes of a quarter of their size.
DirEntry* EntrySlabs::take() {
    if (slabs_.empty() || used_ == slabs_.back().size) {
        const std::size_t size =
            slabs_.empty() ? kFirstSlab : std::min(slabs_.back().size * 2, kLargestSlab);
        void* records = mmap(nullptr, size * sizeof(DirEntry), PROT_READ | PROT_WRITE,
                             MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (records == MAP_FAILED) std::_Exit(1);
        show_to_leak_check(records, size * sizeof(DirEntry));
        slabs_.push_back({static_cast<DirEntry*>(records), size});
        used_ = 0;
    }
    return &slabs_.back().records[used_++];
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
