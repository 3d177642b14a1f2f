#include "fileops/engine/path_list.h"

#include <cstdlib>

namespace dorn {

namespace {

constexpr int32_t kStep = 1024;  // slots by which the array grows

bool grow(PathList* list) {
    const int32_t capacity = list->count + kStep;
    void* items =
        std::realloc(list->items, static_cast<std::size_t>(capacity) * sizeof *list->items);
    if (items == nullptr) return false;
    list->items = static_cast<void**>(items);
    list->capacity = capacity;
    return true;
}

}  // namespace

PathList* alloc_start() {
    auto* list = static_cast<PathList*>(std::calloc(1, sizeof(PathList)));
    if (list == nullptr) return nullptr;
    list->items = static_cast<void**>(std::calloc(kStep, sizeof *list->items));
    if (list->items == nullptr) {
        std::free(list);
        return nullptr;
    }
    list->capacity = kStep;
    return list;
}

void* alloc_add(PathList* list, void* block) {
    if (list == nullptr || block == nullptr) return nullptr;
    if (list->count == list->capacity && !grow(list)) return nullptr;
    list->items[list->count++] = block;
    return block;
}

void* alloc_realloc(PathList* list, void* block, std::size_t size) {
    if (list == nullptr || block == nullptr) return nullptr;
    for (int32_t i = 0; i < list->count; ++i) {
        if (list->items[i] != block) continue;
        void* resized = std::realloc(block, size);
        if (resized != nullptr) list->items[i] = resized;
        return resized;
    }
    return alloc_add(list, block);
}

void alloc_free(PathList* list) {
    if (list == nullptr) return;
    for (int32_t i = 0; i < list->count; ++i)
        std::free(list->items[i]);
    std::free(list->items);
    std::free(list);
}

}  // namespace dorn
