#include "dialogs/preference_bits.h"

#include "config/config.h"

#include <vector>

namespace dorn {

namespace {

// The choices of an exclusive group in the order in which they count; bits 0: none of the group's.
struct Choice {
    QAbstractButton* toggle;
    uint32_t bit;
};
using Group = std::vector<Choice>;

// The first choice of each group with a choice without bits is what a record without bits means;
// else the layout has a default.
std::vector<Group> groups(const Ui::ConfigDlg& ui) {
    return {
        {{ui.overwrite, kOverwriteNoPrompt}, {ui.overwrite_prompt, 0}},
        {{ui.sym_prompt, kLinksPrompt},
         {ui.sym_symlinks, kLinksAsLinks},
         {ui.sym_files, kLinksAsFiles}},
        {{ui.rm1_prompt, kDeleteOnePrompt},
         {ui.rm1_prompt_nowr, kDeleteOneReadOnly},
         {ui.rm1_no_prompt, kDeleteOneNoPrompt}},
        {{ui.rm_prompt, kDeleteManyPrompt}, {ui.rm_no_prompt, kDeleteManyNoPrompt}},
        {{ui.rm_i_prompt, kDeleteEachPrompt},
         {ui.rm_i_prompt_nowr, kDeleteEachReadOnly},
         {ui.rm_i_no_prompt, kDeleteEachNoPrompt}},
        {{ui.cenc_utf8_alternate, kEncodingTryUtf8},
         {ui.cenc_alternate, kEncodingAlternate},
         {ui.cenc_cutf8, 0}},
        {{ui.change_owner_dialog_assume_ignore, kOwnerErrorIgnore},
         {ui.change_owner_error_show_always, 0}},
    };
}

}  // namespace

void preference_bits_show(const Ui::ConfigDlg& layout, uint32_t flags) {
    layout.cdot->setChecked((flags & kHideDotFiles) != 0);
    for (const Group& group : groups(layout)) {
        for (const Choice& choice : group) {
            if (choice.bit != 0 && (flags & choice.bit) == 0) continue;
            choice.toggle->setChecked(true);
            break;
        }
    }
}

uint32_t preference_bits_read(const Ui::ConfigDlg& layout, uint32_t flags) {
    flags = layout.cdot->isChecked() ? flags | kHideDotFiles : flags & ~kHideDotFiles;
    for (const Group& group : groups(layout)) {
        for (const Choice& choice : group)
            flags &= ~choice.bit;
        for (const Choice& choice : group)
            if (choice.toggle->isChecked()) flags |= choice.bit;
    }
    return flags;
}

}  // namespace dorn
