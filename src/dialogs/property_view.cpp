#include "dialogs/property_view.h"

#include "assoc/engine/file_type.h"
#include "dirmodel/dir_sort.h"
#include "dirmodel/entry_text.h"
#include "dirmodel/name_translation.h"
#include "ui/background.h"
#include "ui/dialogs.h"
#include "ui/qt_widget.h"

#include <array>
#include <cstring>
#include <ctime>
#include <memory>
#include <string>

namespace dorn {

namespace {

constexpr int kPictureSize = 32;       // pixels
constexpr int32_t kListedBytes = 252;  // of the list of names
constexpr uint32_t kExecuteByOwner = 0100;
constexpr uint32_t kEveryBit = 0xFFFFF;

struct ModeToggle {
    QCheckBox* toggle;
    uint32_t bit;
};

std::array<ModeToggle, 11> mode_toggles(const Ui::PropertyDlg& layout) {
    return {{{layout.pr_uread, 0400},
             {layout.pr_uwrite, 0200},
             {layout.pr_uexec, 0100},
             {layout.pr_gread, 040},
             {layout.pr_gwrite, 020},
             {layout.pr_gexec, 010},
             {layout.pr_oread, 04},
             {layout.pr_owrite, 02},
             {layout.pr_oexec, 01},
             {layout.pr_setuserid, 04000},
             {layout.pr_setgroupid, 02000}}};
}

std::string display_name(const DirEntry& entry) {
    return fname_decode(entry.name, nullptr);
}

void show(QWidget* widget, const std::string& text) {
    wprintf(handle(widget), "%s", text.c_str());
}

void x_block_label(QLabel* label, bool blocked) {
    label->setEnabled(!blocked);
}

QColor blend(const QColor& a, const QColor& b, double part_of_b) {
    const auto mix = [part_of_b](int from, int to) {
        return from + static_cast<int>(part_of_b * (to - from));
    };
    return {mix(a.red(), b.red()), mix(a.green(), b.green()), mix(a.blue(), b.blue())};
}

// Greyed, but to be read: a disabled text is usually paler.
void x_block_text(QLineEdit* field, bool blocked) {
    constexpr double kShade = 0.1;
    constexpr double kInk = 0.6;
    field->setEnabled(!blocked);
    if (!blocked) return;
    QPalette palette = field->palette();
    const QColor paper = palette.color(QPalette::Active, QPalette::Window);
    const QColor ink = palette.color(QPalette::Active, QPalette::WindowText);
    palette.setColor(QPalette::Disabled, QPalette::Base, blend(paper, ink, kShade));
    palette.setColor(QPalette::Disabled, QPalette::Text, blend(paper, ink, kInk));
    field->setPalette(palette);
}

// A negative id leaves its field as it is.
void x_setup_permission_fields(const Ui::PropertyDlg& layout, int32_t uid, int32_t gid) {
    char name[kIdNameSize];
    layout.pr_owner->setReadOnly(true);
    layout.pr_group->setReadOnly(true);
    if (uid >= 0) {
        dir_get_username(static_cast<uint32_t>(uid), name);
        show(layout.pr_owner, name);
    }
    if (gid >= 0) {
        dir_get_groupname(static_cast<uint32_t>(gid), name);
        show(layout.pr_group, name);
    }
}

void show_picture(QLabel* label, const char* name) {
    const QSize size(kPictureSize, kPictureSize);
    label->setPixmap(ui_icon(name).pixmap(size, label->devicePixelRatioF()));
}

// An entry that could not be examined carries an error text in the link's place.
bool is_link(const DirEntry& entry) {
    const bool unreadable = !has_attributes(entry) && entry.mode == 0;
    return (entry.flags & kEntryLink) != 0 && !unreadable && entry.link_text != nullptr;
}

const char* picture_of(const DirEntry& entry) {
    const bool link = is_link(entry);
    if (link && !has_attributes(entry)) return "image_broken_link";
    if (is_directory(entry)) return link ? "linked_folder" : "closed_folder";
    if ((entry.mode & kExecuteByOwner) != 0) return link ? "linked_exec" : "exec";
    return link ? "linked_file" : "file";
}

std::string date_text(uint32_t seconds) {
    std::array<char, 32> text{};
    const std::time_t time = seconds;
    std::tm when{};
    if (localtime_r(&time, &when) != nullptr)
        std::strftime(text.data(), text.size(), "%A %B %d, %Y", &when);
    return text.data();
}

// The word for the mode stands there until the program `file`, which may be slow, has spoken.
void show_type(QLabel* label, const DirEntry& entry) {
    if (const char* word = as_mode_word(entry.mode)) show(label, word);
    auto type = std::make_shared<std::string>();
    auto ask = [type, name = std::string(entry.name), mode = entry.mode] {
        as_get_filetype(name.c_str(), mode, type.get());
    };
    ui_async(handle(label), ask, [type, label] {
        const QString text = QString::fromStdString(*type).trimmed();
        if (!text.isEmpty()) show(label, text.toStdString());
    });
}

// Sums and common values of the selection.
struct Summary {
    int32_t files = 0;
    int32_t directories = 0;
    int64_t size = 0;  // of the files, in bytes
    int32_t uid = -1;  // -1: mixed
    int32_t gid = -1;
    uint32_t mode = kEveryBit;  // the bits that all have, where the attributes are known
    std::string names;
};

// Adds a name while the list is not full; false when it is.
bool add_name(std::string* names, int32_t* total, const std::string& name) {
    *total += static_cast<int32_t>(name.size()) + 2;
    if (*total > kListedBytes) return false;
    if (!names->empty()) *names += ", ";
    *names += name;
    return true;
}

Summary summarise() {
    Summary sum;
    bool first = true;
    bool room = true;
    int32_t total = 0;
    for (int32_t i = 0; i < gDir->count; ++i) {
        const DirEntry& entry = *gDir->entries[i];
        if ((entry.flags & kEntrySelected) == 0) continue;
        ++(is_directory(entry) ? sum.directories : sum.files);
        if (!is_directory(entry)) sum.size += entry.size;
        sum.uid = first || sum.uid == entry.uid ? entry.uid : -1;
        sum.gid = first || sum.gid == entry.gid ? entry.gid : -1;
        first = false;
        if (has_attributes(entry)) sum.mode &= entry.mode;
        room = room && add_name(&sum.names, &total, display_name(entry));
    }
    if (sum.mode == kEveryBit) sum.mode = 0;  // nothing is known of any
    return sum;
}

void show_counts(QLabel* label, const Summary& sum) {
    if (sum.files > 0 && sum.directories > 0)
        wprintf(handle(label), "(%d items: %d director%s, %d file%s)", sum.files + sum.directories,
                sum.directories, sum.directories == 1 ? "y" : "ies", sum.files,
                sum.files == 1 ? "" : "s");
    else if (sum.directories > 0)
        wprintf(handle(label), "(%d directories)", sum.directories);
    else
        wprintf(handle(label), "(%d files)", sum.files);
}

void show_location(const Ui::PropertyDlg& layout) {
    show(layout.pr_location, fname_decode(gDir->path.c_str(), nullptr));
}

}  // namespace

void _show_mode(const Ui::PropertyDlg& layout, uint32_t mode) {
    for (const ModeToggle& row : mode_toggles(layout))
        row.toggle->setChecked((mode & row.bit) != 0);
}

uint32_t shown_mode(const Ui::PropertyDlg& layout) {
    uint32_t mode = 0;
    for (const ModeToggle& row : mode_toggles(layout))
        mode |= row.toggle->isChecked() ? row.bit : 0;
    return mode;
}

void x_prop_setup_one(const Ui::PropertyDlg& layout, const DirEntry& entry) {
    show_picture(layout.pr_icon, picture_of(entry));
    layout.pr_comment->hide();
    show(layout.pr_name, display_name(entry));
    show_type(layout.pr_filetype, entry);
    show(layout.pr_size, cvt2c(static_cast<uint64_t>(entry.size)));
    show(layout.pr_modified, date_text(entry.mtime));
    show_location(layout);
    const bool link = is_link(entry);
    if (link) show(layout.pr_symbolic, fname_decode(entry.link_text, nullptr));
    x_block_label(layout.pr_symbolic_title, !link);
    x_block_label(layout.pr_symbolic, !link);
    x_setup_permission_fields(layout, entry.uid, entry.gid);
    _show_mode(layout, entry.mode);
}

void x_prop_setup_multi(const Ui::PropertyDlg& layout) {
    const Summary sum = summarise();
    show_picture(layout.pr_icon, sum.files > 0 ? "file" : "closed_folder");
    x_block_text(layout.pr_name, true);
    show(layout.pr_name, sum.names);
    layout.pr_name->setCursorPosition(0);
    show_counts(layout.pr_comment, sum);
    show_location(layout);
    for (QLabel* label :
         {layout.pr_filetype_title, layout.pr_modified_title, layout.pr_symbolic_title})
        x_block_label(label, true);
    if (sum.size > 0) {
        char text[32];
        es_generate_byte_string(text, sum.size);
        show(layout.pr_size, text);
    } else {
        x_block_label(layout.pr_size_title, true);
    }
    x_setup_permission_fields(layout, sum.uid, sum.gid);
    _show_mode(layout, sum.mode);
}

}  // namespace dorn
