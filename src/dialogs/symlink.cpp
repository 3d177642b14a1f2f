#include "dialogs/symlink.h"

#include "dialogs/dialog_window.h"
#include "dialogs/shown_directory.h"
#include "dialogs/typed_name.h"
#include "dirmodel/dir_entry.h"
#include "dirmodel/name_translation.h"
#include "dirmodel/path_text.h"
#include "filelist/filelist.h"
#include "filelist/navigation.h"
#include "ui_symlink_dlg.h"

#include <QPointer>

#include <cerrno>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

namespace dorn {

namespace {

constexpr int kFieldCharacters = 40;  // that fit the field at first

QPointer<QDialog> sDialog;
std::string sTarget;  // the path that the link is to hold, bytes; empty: there is no entry

enum class LinkName { Free, Link, Other };

LinkName look_at(int directory, const char* name) {
    struct stat status {};
    if (fstatat(directory, name, &status, AT_SYMLINK_NOFOLLOW) != 0) return LinkName::Free;
    return S_ISLNK(status.st_mode) ? LinkName::Link : LinkName::Other;
}

// The name under which a link is made that is then put in the place of an old one.
std::string beside(const std::string& name) {
    const std::size_t slash = name.rfind('/');
    const std::string folder = slash == std::string::npos ? "" : name.substr(0, slash + 1);
    return folder + ".dorn-link-" + std::to_string(getpid());
}

// 0, or the errno of what failed. An old link stays until the new one is there to replace it.
int make_link(int directory, const std::string& target, const std::string& name, bool replace) {
    if (target.size() > kLinkSize) return ENAMETOOLONG;
    const std::string made = replace ? beside(name) : name;
    if (symlinkat(target.c_str(), directory, made.c_str()) != 0) return errno;
    if (!replace || renameat(directory, made.c_str(), directory, name.c_str()) == 0) return 0;
    const int error = errno;
    unlinkat(directory, made.c_str(), 0);
    return error;
}

void notice(const char* title, const std::string& message) {
    ui_alert(handle(sDialog), title, message.c_str(), "@#Close");
}

bool may_overwrite() {
    return ui_alert(handle(sDialog), "Symlink Exists",
                    "The destination symlink exists.\nDo you want to overwrite it ?",
                    "@#&Cancel|&Ok") == 2;
}

// Whether a link of that name may be made, the user having been told or asked; `*replace` when one
// is there.
bool name_is_usable(const std::shared_ptr<ShownDirectory>& directory, const std::string& name,
                    const std::string& typed, bool* replace) {
    const LinkName found = dialog_bounded<LinkName>(sDialog, [directory, name] {
                               return look_at(directory->fd(), name.c_str());
                           }).value_or(LinkName::Free);
    if (!dialog_is_open(sDialog)) return false;
    if (found == LinkName::Other)
        notice("Symlink Error", "'" + typed + "' exists and is not a symlink.\n");
    *replace = found == LinkName::Link;
    return found == LinkName::Free || (*replace && may_overwrite() && dialog_is_open(sDialog));
}

void make_typed(const std::string& name, const std::string& typed) {
    auto directory = std::make_shared<ShownDirectory>();
    bool replace = false;
    if (!name_is_usable(directory, name, typed, &replace)) return;
    const int error = dialog_bounded<int>(sDialog, [directory, name, replace, target = sTarget] {
                          return make_link(directory->fd(), target, name, replace);
                      }).value_or(ETIMEDOUT);
    if (!dialog_is_open(sDialog)) return;
    if (error == 0) {
        sDialog->accept();
        fl_refresh();
        return;
    }
    notice("Symlink Error",
           typed + ": unable to create symlink\nError: " + std::strerror(error) + "\n");
}

void fm_create_symlink_cb(QLineEdit* field) {
    if (sTarget.empty()) return;
    const std::string typed = typed_text(field->text());
    const char* encoded = typed.empty() ? nullptr : fname_encode(typed.c_str());
    if (encoded == nullptr)
        notice("Input Error", "Symlink destination name must be entered!");
    else
        make_typed(encoded, typed);
    if (dialog_is_open(sDialog)) wfocus(handle(field));
}

int32_t source_entry() {
    for (int32_t i = 0; i < gDir->count; ++i) {
        if ((gDir->entries[i]->flags & kEntrySelected) != 0) return i;
    }
    return gDir->count > 0 ? 0 : -2;
}

void symlink_dlg_setup_f(QLabel* source) {
    sTarget.clear();
    const int32_t index = gDir == nullptr ? -2 : source_entry();
    if (index < 0) return;
    sTarget = fl_get_fullpath(index);
    wprintf(handle(source), "%s", fname_decode(gDir->entries[index]->name, nullptr));
}

}  // namespace

int fm_symlink() {
    if (dialog_to_front(sDialog)) return 0;
    sDialog = dialog_make();
    Ui::SymlinkDlg layout;
    layout.setupUi(sDialog);
    symlink_dlg_setup_f(layout.symlink_src_lbl);
    layout.symlink_proclink_tgl->hide();  // this system has no such tree
    QLineEdit* field = layout.symlink_dst_txt;
    field->setMinimumWidth(kFieldCharacters * sDialog->fontMetrics().averageCharWidth());
    QObject::connect(layout.symlink_ok_btn, &QPushButton::clicked,
                     [field] { fm_create_symlink_cb(field); });
    QObject::connect(layout.symlink_cancel_btn, &QPushButton::clicked, sDialog, &QDialog::reject);
    dialog_block_base(sDialog);
    dialog_show(sDialog, field);
    return 0;
}

}  // namespace dorn
