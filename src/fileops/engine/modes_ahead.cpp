#include "fileops/engine/modes_ahead.h"

#include "platform/signals.h"

#include <algorithm>
#include <fcntl.h>
#include <system_error>

namespace dorn {

namespace {

constexpr int32_t kBatch = 256;

}  // namespace

ModesAhead::ModesAhead(const FileOp* op, TreeDirs* sources) : op_(op), sources_(sources) {
    const SignalsBlocked blocked;
    try {
        thread_ = std::thread([this] { run(); });
    } catch (const std::system_error&) {
        return;
    }
}

ModesAhead::~ModesAhead() {
    if (!thread_.joinable()) return;
    {
        const std::lock_guard lock(mutex_);
        is_ended_ = true;
    }
    changed_.notify_all();
    thread_.join();
}

void ModesAhead::run() {
    std::unique_lock lock(mutex_);
    for (;;) {
        changed_.wait(lock, [&] { return is_asked_ || is_ended_; });
        if (is_ended_) return;
        lock.unlock();
        look(&ahead_);
        lock.lock();
        is_asked_ = false;
        changed_.notify_all();
    }
}

void ModesAhead::look(Batch* batch) const {
    const Group* group = op_->groups[batch->group];
    for (int32_t i = batch->begin; i < batch->end; ++i) {
        struct stat status;
        const bool is_known =
            fstatat(batch->directory.get(), group->names[i], &status, AT_SYMLINK_NOFOLLOW) == 0;
        batch->modes.push_back(is_known ? status.st_mode : 0);
    }
}

void ModesAhead::ask(int32_t group, int32_t end) {
    while (end == 0 && group > 0)
        end = op_->groups[--group]->count;
    const int directory = end > 0 ? sources_->of_group(group) : -1;
    if (directory < 0) return;
    ahead_.directory = Fd(fcntl(directory, F_DUPFD_CLOEXEC, 0));
    if (!ahead_.directory) return;
    ahead_.modes.clear();
    ahead_.group = group;
    ahead_.begin = std::max(end - kBatch, 0);
    ahead_.end = end;
    const std::lock_guard lock(mutex_);
    is_asked_ = true;
    changed_.notify_all();
}

void ModesAhead::take() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [&] { return !is_asked_; });
    std::swap(at_hand_, ahead_);
    ahead_.group = -1;
}

mode_t ModesAhead::of(int32_t group, int32_t index) {
    if (!thread_.joinable()) return 0;
    if (!at_hand_.holds(group, index)) {
        take();
        if (!at_hand_.holds(group, index)) {
            ask(group, index + 1);
            take();
        }
        if (!at_hand_.holds(group, index)) return 0;
        ask(group, at_hand_.begin);
    }
    return at_hand_.modes[static_cast<std::size_t>(index - at_hand_.begin)];
}

}  // namespace dorn
