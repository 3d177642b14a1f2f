#include "destmenus/dest_item.h"

#include "config/config.h"
#include "destmenus/subdirectory_check.h"
#include "dirmodel/name_translation.h"
#include "filelist/filelist.h"
#include "ui/background.h"
#include "ui/dialogs.h"
#include "ui/qt_widget.h"

#include <QApplication>
#include <QTimer>

#include <algorithm>
#include <fcntl.h>

namespace dorn {

namespace {

void close_popups() {
    const QWidget* closed = nullptr;
    QWidget* popup = nullptr;
    while ((popup = QApplication::activePopupWidget()) != nullptr && popup != closed) {
        closed = popup;
        popup->close();
    }
}

std::optional<std::size_t> find_entry(const std::vector<DestEntry>& entries,
                                      const std::string& name) {
    const auto found = std::find_if(entries.begin(), entries.end(),
                                    [&name](const DestEntry& e) { return e.name == name; });
    if (found == entries.end()) return std::nullopt;
    return static_cast<std::size_t>(found - entries.begin());
}

}  // namespace

DestMenu::DestMenu(QWidget* parent, std::string path, uint32_t flags, DestAction action)
    : LongMenu(parent), path_(std::move(path)), flags_(flags), action_(action) {
    if (path_.empty()) return;
    placeholder_ = addAction(QStringLiteral("..."));
    placeholder_->setEnabled(false);
    QObject::connect(this, &QMenu::aboutToShow, this, [this] { dtm_menu_realized(); });
}

// Part of destroying an item's button: no thread outlives what it fills.
DestMenu::~DestMenu() {
    dtm_stop();
    dest_scan_end(scan_.get());
}

void DestMenu::dtm_stop() {
    if (scan_) scan_->stop = 1;
    for (const auto& [name, submenu] : submenus_)
        submenu->dtm_stop();
}

void DestMenu::dtm_clear() {
    dtm_stop();
    for (const auto& [name, submenu] : submenus_) {
        forget_submenu(submenu);
        delete submenu;
    }
    submenus_.clear();
    pending_.reset();
    entries_.clear();
    set_length(0);
}

DestMenu* DestMenu::above() const {
    return dynamic_cast<DestMenu*>(parentWidget());
}

std::string DestMenu::path_of(std::size_t index) const {
    const std::string& name = entries_[index].name;
    if (path_.empty()) return name;
    return path_.ends_with('/') ? path_ + name : path_ + '/' + name;
}

DestMenu* DestMenu::submenu_of(std::size_t index) {
    const DestEntry& entry = entries_[index];
    if (entry.kind == DestKind::Plain) return nullptr;
    DestMenu*& submenu = submenus_[entry.name];
    if (submenu != nullptr) return submenu;
    submenu = new DestMenu(this, path_of(index), flags_, action_);
    // Entries that came while it was open wait for its end.
    QObject::connect(submenu, &QMenu::aboutToHide, this,
                     [this] { QTimer::singleShot(0, this, [this] { show_pending(); }); });
    return submenu;
}

LongMenu::Row DestMenu::row(std::size_t index) const {
    const DestEntry& entry = entries_[index];
    const char* label =
        entry.label.empty() ? fname_decode(entry.name.c_str(), nullptr) : entry.label.c_str();
    QString text = ui_text(label);
    if (!text.endsWith(u'/')) text += u'/';
    return {text, entry.kind != DestKind::Plain, entry.kind == DestKind::Unknown};
}

QMenu* DestMenu::arm(std::size_t index) {
    return submenu_of(index);
}

// The action asks questions, so it runs when the menus are gone.
void DestMenu::activate(std::size_t index) {
    const std::string path = path_of(index);
    close_popups();
    dtm_run(action_, path);
}

void DestMenu::dtm_menu_realized() {
    if (scan_) return;
    scan_ = std::make_shared<DestScan>();
    scan_->path = path_;
    scan_->hide_dot = (flags_ & kHideDotFiles) != 0;
    scan_->on_names = [this](std::vector<std::string> names, bool whole) {
        take_names(std::move(names), whole);
    };
    scan_->on_checked = [this](std::size_t first, const std::vector<DestKind>& kinds) {
        take_kinds(first, kinds);
    };
    scan_->on_no_memory = [] { dtm_errinfo("Memory Allocation", "Not enough memory!"); };
    if (dest_scan_start(scan_) != 0)
        dtm_errinfo("Directory Scanning", "Unable to start scanning procedure!");
}

void DestMenu::take_names(std::vector<std::string> names, bool whole) {
    if (names.empty() && whole) {
        if (DestMenu* menu = above()) menu->dtm_destroy_submenu(this);
        return;
    }
    std::vector<DestEntry> entries;
    entries.reserve(names.size());
    for (std::string& name : names)
        entries.push_back({std::move(name)});
    pending_ = std::move(entries);
    if (!has_open_submenu()) show_pending();
}

void DestMenu::show_pending() {
    if (!pending_ || has_open_submenu()) return;
    std::vector<DestEntry> entries = std::move(*pending_);
    pending_.reset();
    show_entries(std::move(entries));
}

void DestMenu::show_entries(std::vector<DestEntry> entries) {
    std::optional<std::size_t> active = current();
    const std::string active_name = active ? entries_[*active].name : std::string();
    // What a scan of its own has told about an entry is not forgotten.
    for (const DestEntry& entry : entries_) {
        if (entry.kind == DestKind::Unknown) continue;
        if (const auto at = find_entry(entries, entry.name)) entries[*at].kind = entry.kind;
    }
    delete std::exchange(placeholder_, nullptr);
    if (active) active = find_entry(entries, active_name);
    entries_ = std::move(entries);
    set_length(entries_.size(), active);
}

// The directory has no subdirectories: its item is a plain one from here on.
void DestMenu::dtm_destroy_submenu(const DestMenu* submenu) {
    const auto found = std::find_if(submenus_.begin(), submenus_.end(),
                                    [submenu](const auto& item) { return item.second == submenu; });
    if (found == submenus_.end()) return;
    const std::string name = found->first;
    DestMenu* gone = found->second;
    submenus_.erase(found);
    for (std::vector<DestEntry>* entries : {&entries_, pending_ ? &*pending_ : nullptr}) {
        if (entries == nullptr) continue;
        if (const auto at = find_entry(*entries, name)) (*entries)[*at].kind = DestKind::Plain;
    }
    gone->hide();
    forget_submenu(gone);
    gone->deleteLater();
    refresh();
}

void DestMenu::take_kind(DestEntry* entry, DestKind kind) {
    if (kind == DestKind::Unknown) return;
    entry->kind = kind;
    const auto submenu = submenus_.find(entry->name);
    if (kind != DestKind::Plain || submenu == submenus_.end()) return;
    const DestScan* own = submenu->second->scan_.get();
    if (own == nullptr || own->finished != 0) dtm_destroy_submenu(submenu->second);
}

void DestMenu::take_kinds(std::size_t first, const std::vector<DestKind>& kinds) {
    std::vector<DestEntry>& entries = pending_ ? *pending_ : entries_;
    for (std::size_t i = 0; i < kinds.size() && first + i < entries.size(); ++i)
        take_kind(&entries[first + i], kinds[i]);
    const bool in_sight = first < first_shown() + shown() && first + kinds.size() > first_shown();
    if (!pending_ && in_sight) refresh();
}

void DestMenu::look_at_root(const std::string& path) {
    const auto kind = std::make_shared<DestKind>(DestKind::Unknown);
    ui_async(
        handle(this),
        [path, kind, hide_dot = (flags_ & kHideDotFiles) != 0] {
            *kind = dest_kind_here(AT_FDCWD, path.c_str(), hide_dot);
        },
        [this, path, kind] {
            const auto at = find_entry(entries_, path);
            if (!at) return;
            take_kind(&entries_[*at], *kind);
            refresh();
        });
}

void DestMenu::dtm_add_roots(std::vector<DestEntry> roots) {
    entries_ = std::move(roots);
    set_length(entries_.size());
    for (const DestEntry& root : entries_)
        look_at_root(root.name);
}

void dtm_run(DestAction action, const std::optional<std::string>& path) {
    fl_hold_refresh(true);
    QTimer::singleShot(0, qt(w_instance("base")), [action, path] {
        fl_hold_refresh(false);
        if (!ui_is_blocked(w_instance("base"))) action(path ? path->c_str() : nullptr);
    });
}

void dtm_errinfo(const char* title, const char* message) {
    QTimer::singleShot(0, qt(w_instance("base")), [title, message] {
        ui_alert(w_instance("base"), title, message, "@#&Close");
    });
}

}  // namespace dorn
