// Lists of files dropped on an item of the hotlist tree: into the item's directory, as on the file
// list (filelist/file_drop.h). An item that a drag rests on is expanded. Event-loop thread only.
#pragma once

#include "ui/timer.h"

#include <cstdint>
#include <string>

class QDropEvent;
class QPainter;
class QTreeWidget;

namespace dorn {

class TreeFileDrop {
  public:
    explicit TreeFileDrop(QTreeWidget* tree) : tree_(tree) {}

    void motion(QDropEvent* event);
    /// A drop goes to the item that was shown as its target, or nowhere.
    void drop(QDropEvent* event);
    void leave();
    /// Marks the target in the tree's viewport.
    void paint(QPainter* painter) const;

  private:
    static void expand_target(Timer* timer, void* self);

    QTreeWidget* tree_;
    int64_t target_ = 0;     // id of the item that a drop goes to; 0: none
    std::string directory_;  // its directory
    Timer rest_;
};

}  // namespace dorn
