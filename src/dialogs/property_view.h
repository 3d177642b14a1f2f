// What the Properties dialog shows. Private to dialogs/. Event-loop thread only.
#pragma once

#include "dirmodel/dir_entry.h"
#include "ui_property_dlg.h"

#include <cstdint>

namespace dorn {

/// Fill the dialog, which is clean, for one entry, or for all that are selected.
void x_prop_setup_one(const Ui::PropertyDlg& layout, const DirEntry& entry);
void x_prop_setup_multi(const Ui::PropertyDlg& layout);

/// Sets the eleven mode toggles from `mode`; reads them. The sticky bit has none.
void _show_mode(const Ui::PropertyDlg& layout, uint32_t mode);
uint32_t shown_mode(const Ui::PropertyDlg& layout);

/// Whether the entry's attributes are known: those of a link's target for a link.
inline bool has_attributes(const DirEntry& entry) {
    return (entry.flags & kEntryBroken) == 0;
}

}  // namespace dorn
