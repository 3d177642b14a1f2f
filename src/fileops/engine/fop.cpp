#include "fileops/engine/fop.h"

#include "config/config.h"
#include "platform/signals.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <new>

namespace dorn {

namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define DORN_INSTRUMENTED
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define DORN_INSTRUMENTED
#endif
#endif

#ifdef DORN_INSTRUMENTED
constexpr std::size_t kStackSize = 1 << 20;  // bytes; frames are several times as large
#else
constexpr std::size_t kStackSize = 65536;  // bytes
#endif

char* add_text(PathList* list, const char* text) {
    char* copy = strdup(text);
    if (copy == nullptr || alloc_add(list, copy) != nullptr) return copy;
    std::free(copy);
    return nullptr;
}

void* add_zeroed(PathList* list, std::size_t count, std::size_t size) {
    void* block = std::calloc(count, size);
    if (block == nullptr || alloc_add(list, block) != nullptr) return block;
    std::free(block);
    return nullptr;
}

FileOp* make_record(PathList* list) {
    void* place = add_zeroed(list, 1, sizeof(FileOp));
    if (place == nullptr) return nullptr;
    auto* op = new (place) FileOp{};
    op->allocations = list;
    return op;
}

// The group of the names that the user chose.
bool add_first_group(FileOp* op, const char* directory, const std::vector<std::string>& names) {
    PathList* list = op->allocations;
    op->groups = static_cast<Group**>(add_zeroed(list, 1, sizeof(Group*)));
    if (op->groups == nullptr) return false;
    auto* group = static_cast<Group*>(add_zeroed(list, 1, sizeof(Group)));
    if (group == nullptr) return false;
    op->groups[0] = group;
    op->group_count = 1;
    group->parent = -1;
    group->directory = add_text(list, directory);
    group->names = static_cast<char**>(add_zeroed(list, names.size(), sizeof(char*)));
    if (group->directory == nullptr || group->names == nullptr) return false;
    for (const std::string& name : names) {
        char* copy = add_text(list, name.c_str());
        if (copy == nullptr) return false;
        group->names[group->count++] = copy;
    }
    op->total_files = group->count;
    op->prefix_length = static_cast<int32_t>(std::strlen(directory));
    return true;
}

// 0, or the error number.
int start_thread(FileOp* op) {
    pthread_attr_t attributes;
    if (const int error = pthread_attr_init(&attributes); error != 0) return error;
    pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
    int error = pthread_attr_setstacksize(&attributes, kStackSize);
    const SignalsBlocked blocked;
    if (error == 0) error = pthread_create(&op->thread, &attributes, fop_thread, op);
    pthread_attr_destroy(&attributes);
    return error;
}

FileOp* fail(FileOp* op, int error) {
    free_op(op);
    errno = error;
    return nullptr;
}

}  // namespace

uint32_t fop_request_flags(int32_t kind, int32_t count, bool one_dir, uint32_t config_flags) {
    const auto is_set = [&](uint32_t bit) { return (config_flags & bit) != 0; };
    uint32_t flags = 0;
    if (is_set(kOverwriteNoPrompt)) flags |= kFopOverwriteAll;
    if (is_set(kLinksAsLinks)) flags |= kFopLinksAsLinks;
    if (is_set(kLinksAsFiles)) flags |= kFopLinksAsFiles;
    if (kind != kFopDelete) return flags;
    if (count == 1 && !one_dir) {
        if (is_set(kDeleteOneNoPrompt)) flags |= kFopDeleteAll;
    } else if (is_set(kDeleteEachPrompt)) {
        flags |= kFopAskEach;
    } else if (is_set(kDeleteEachNoPrompt)) {
        flags |= kFopDeleteAll;
    }
    return flags;
}

FileOp* fop(int32_t kind, const char* directory, const std::vector<std::string>& names,
            const char* destination, uint32_t flags, const SlotDisplay* display,
            int (*on_item_done)(const char* directory, const char* name)) {
    if (names.empty() || directory == nullptr || destination == nullptr) {
        errno = EINVAL;
        return nullptr;
    }
    PathList* list = alloc_start();
    FileOp* op = list == nullptr ? nullptr : make_record(list);
    if (op == nullptr) {
        alloc_free(list);
        errno = ENOMEM;
        return nullptr;
    }
    op->kind = kind;
    op->flags = flags;
    op->on_item_done = on_item_done;
    op->buffer_size = static_cast<int32_t>((flags & kFopBufferSize) << 8);
    if (op->buffer_size == 0) op->buffer_size = kFopDefaultBuffer;
    op->buffer = static_cast<char*>(add_zeroed(list, static_cast<std::size_t>(op->buffer_size), 1));
    op->destination = add_text(list, destination);
    try {
        op->display = display == nullptr ? new SlotDisplay : new SlotDisplay(*display);
    } catch (const std::bad_alloc&) {
        return fail(op, ENOMEM);
    }
    if (op->buffer == nullptr || op->destination == nullptr ||
        !add_first_group(op, directory, names))
        return fail(op, ENOMEM);
    if (const int error = start_thread(op); error != 0) return fail(op, error);
    return op;
}

void free_op(FileOp* op) {
    delete op->display;
    PathList* list = op->allocations;
    op->~FileOp();
    alloc_free(list);
}

}  // namespace dorn
