// One directory of the Copy To and Move To menus, with the submenu of its subdirectories.
//
// Directories are bytes here; what is shown of them is made when it is shown. A submenu comes into
// being when its item is pointed at or opened, its scan starts when it is first shown, and what was
// found stays until the whole cascade is closed. Event-loop thread only.
#pragma once

#include "destmenus/dest_scan.h"
#include "destmenus/long_menu.h"

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace dorn {

/// What is done with the directory that was chosen; null asks for one.
using DestAction = void (*)(const char* path);

/// A directory as an item of a menu.
struct DestEntry {
    std::string name;     // bytes; a whole path where the menu has none itself
    std::string label{};  // display text; empty: the name's
    DestKind kind = DestKind::Unknown;
};

class DestMenu : public LongMenu {
  public:
    /// The submenu of the directory `path`. Without a path it is the top of a cascade, whose
    /// directories dtm_add_roots gives. `flags` has kHideDotFiles or not.
    DestMenu(QWidget* parent, std::string path, uint32_t flags, DestAction action);
    /// Stops the scans of the whole cascade below and waits for them.
    ~DestMenu() override;

    /// Puts the roots into the top of a cascade and has them looked at, each on a spare thread.
    void dtm_add_roots(std::vector<DestEntry> roots);

    /// Stops all scans below without waiting for them.
    void dtm_stop();
    /// Makes the menu as it was before anything was put in or scanned.
    void dtm_clear();

    const std::vector<DestEntry>& entries() const {
        return entries_;
    }
    /// The path of an entry: this one's, one slash, the name.
    std::string path_of(std::size_t index) const;
    /// The submenu of an entry, made at need; null for a plain one.
    DestMenu* submenu_of(std::size_t index);
    /// Whether the directory was read and all of its children were looked at.
    bool finished() const {
        return scan_ && scan_->finished != 0;
    }

  protected:
    Row row(std::size_t index) const override;
    QMenu* arm(std::size_t index) override;
    void activate(std::size_t index) override;

  private:
    void dtm_menu_realized();
    void dtm_destroy_submenu(const DestMenu* submenu);
    void take_names(std::vector<std::string> names, bool whole);
    void take_kinds(std::size_t first, const std::vector<DestKind>& kinds);
    void show_pending();
    void show_entries(std::vector<DestEntry> entries);
    void take_kind(DestEntry* entry, DestKind kind);
    void look_at_root(const std::string& path);
    DestMenu* above() const;

    std::string path_;
    uint32_t flags_;
    DestAction action_;
    QAction* placeholder_ = nullptr;  // "...", until the first names are there
    std::shared_ptr<DestScan> scan_;
    std::vector<DestEntry> entries_;
    // What has been read since, while an open submenu keeps the entries in their places.
    std::optional<std::vector<DestEntry>> pending_;
    std::map<std::string, DestMenu*> submenus_;  // by the entries' names
};

/// Runs `action` with the path (null for nothing) once the menus are closed, on the selection that
/// they were opened for.
void dtm_run(DestAction action, const std::optional<std::string>& path);

/// A notice with the one button "&Close", shown as soon as the event loop has its turn.
void dtm_errinfo(const char* title, const char* message);

}  // namespace dorn
