#include "dialogs/new_item.h"

#include "dialogs/dialog_window.h"
#include "dialogs/shown_directory.h"
#include "dialogs/typed_name.h"
#include "dirmodel/name_translation.h"
#include "filelist/filelist.h"
#include "filelist/navigation.h"
#include "filelist/selection.h"
#include "ui_new_dlg.h"

#include <QPointer>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace dorn {

int32_t gNew_op = 0;

namespace {

constexpr std::size_t kLongestName = 254;  // bytes
constexpr mode_t kFileMode = 0664;
constexpr mode_t kFolderMode = 0755;
constexpr int kFieldCharacters = 40;  // that fit the field at first

QPointer<QDialog> sDialog;

enum class Made { Yes, Exists, Failed };

bool make_file(int directory, const char* name) {
    const int fd = openat(directory, name, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kFileMode);
    return fd >= 0 && close(fd) == 0;
}

// One call makes the entry or finds the name taken, so that nothing of another program's that
// appears meanwhile is emptied.
Made make_item(int directory, const std::string& name, bool is_file) {
    const bool made = is_file ? make_file(directory, name.c_str())
                              : mkdirat(directory, name.c_str(), kFolderMode) == 0;
    if (made) return Made::Yes;
    if (errno == EEXIST || faccessat(directory, name.c_str(), F_OK, 0) == 0) return Made::Exists;
    return Made::Failed;
}

void show_made(const std::string& name) {
    fl_refresh();
    status_bar_update();
    misc_give_focus(w_instance("filelist"));
    const int32_t index = fl_find_name(name.c_str());
    if (index >= 0) fl_select_index(fl_goto_index(index));
}

// Leaves the dialog open, its field ready for another try.
void back_to_field(QLineEdit* field) {
    if (!dialog_is_open(sDialog)) return;
    field->selectAll();
    wfocus(handle(field));
}

// 0 when the dialog is done with, -1 after telling the user why not.
int make_typed(const std::string& typed, bool is_file) {
    const char* encoded = fname_encode(typed.c_str());
    if (encoded == nullptr) {
        report_untranslatable(typed);
        return -1;
    }
    const std::string name = encoded;
    if (name.size() > kLongestName) return wreport(handle(sDialog), "Error", "Name too long!"), -1;
    auto directory = std::make_shared<ShownDirectory>();
    const Made made = dialog_bounded<Made>(sDialog, [directory, name, is_file] {
                          return make_item(directory->fd(), name, is_file);
                      }).value_or(Made::Failed);
    if (!dialog_is_open(sDialog)) return -1;
    Widget* parent = handle(sDialog);
    if (made == Made::Exists)
        return wreport(parent, "Error", "File or directory '%s' already exists", typed.c_str()), -1;
    if (made == Made::Failed && !is_file)
        return wreport(parent, "Error", "Unable to create directory '%s'", typed.c_str()), -1;
    if (made == Made::Failed)
        wreport(parent, "Error", "Unable to create file '%s'\n", typed.c_str());
    if (sDialog) sDialog->accept();
    show_made(name);
    return 0;
}

void new_create(QLineEdit* field) {
    const std::string typed = typed_text(field->text());
    if (typed.empty()) return;
    if (make_typed(typed, gNew_op == 1) == -1) back_to_field(field);
}

int new_setup() {
    if (dialog_to_front(sDialog)) return 0;
    const bool is_file = gNew_op == 1;
    sDialog = dialog_make();
    Ui::NewDlg layout;
    layout.setupUi(sDialog);
    wprintf(handle(sDialog), "%s", is_file ? "Create New File" : "Create New Folder");
    wprintf(handle(layout.new_label), "%s", is_file ? "File Name" : "Folder Name");
    QLineEdit* field = layout.new_name;
    field->setAccessibleName(layout.new_label->text());
    field->setMinimumWidth(kFieldCharacters * sDialog->fontMetrics().averageCharWidth());
    QObject::connect(layout.new_create, &QPushButton::clicked, [field] { new_create(field); });
    QObject::connect(layout.new_cancel, &QPushButton::clicked, sDialog, &QDialog::reject);
    dialog_block_base(sDialog);
    dialog_show(sDialog, field);
    return 0;
}

int open_for(int32_t operation) {
    gNew_op = operation;
    return new_setup();
}

}  // namespace

int fm_new_file() {
    return open_for(1);
}

int fm_new_folder() {
    return open_for(0);
}

int new_file_setup() {
    return open_for(1);
}

int new_dir_setup() {
    return open_for(-2);
}

}  // namespace dorn
