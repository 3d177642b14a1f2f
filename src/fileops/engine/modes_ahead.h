// The modes of what a removal comes to next.
//
// An entry's mode tells whether the user is asked before it is removed. To look at it takes about a
// fifth of the time that a removal takes; in a large removal a thread of its own looks at a batch
// of entries while the worker removes the batch before it.
#pragma once

#include "fileops/engine/tree_dirs.h"

#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

namespace dorn {

class ModesAhead {
  public:
    /// Both have to outlive it. Without a thread to be had it knows no modes.
    ModesAhead(const FileOp* op, TreeDirs* sources);
    ModesAhead(const ModesAhead&) = delete;
    ModesAhead& operator=(const ModesAhead&) = delete;
    ~ModesAhead();

    /// The mode of the entry as it was some hundred removals ago; 0: not known. Asked for in the
    /// order of the removal: groups and their entries, the last first.
    mode_t of(int32_t group, int32_t index);

  private:
    // Entries `begin` to before `end` of a group.
    struct Batch {
        int32_t group = -1;
        int32_t begin = 0;
        int32_t end = 0;
        Fd directory;
        std::vector<mode_t> modes;

        bool holds(int32_t in_group, int32_t index) const {
            return in_group == group && index >= begin && index < end;
        }
    };

    void run();
    void look(Batch* batch) const;
    /// Has the thread look at what is removed before entry `end` of the group.
    void ask(int32_t group, int32_t end);
    /// Waits for what was asked for, which becomes the batch at hand.
    void take();

    const FileOp* op_;
    TreeDirs* sources_;
    Batch at_hand_;  // the worker's
    std::mutex mutex_;
    std::condition_variable changed_;
    Batch ahead_;  // the thread's while is_asked_, else the worker's
    bool is_asked_ = false;
    bool is_ended_ = false;
    std::thread thread_;
};

}  // namespace dorn
