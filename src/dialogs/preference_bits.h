// Which toggle of the Preferences dialog stands for which bits of Config::flags. Private to
// dialogs/. Event-loop thread only.
#pragma once

#include "ui_config_dlg.h"

#include <cstdint>

namespace dorn {

/// Set the toggles from the bits; a group none of whose bits is set keeps its default choice.
void preference_bits_show(const Ui::ConfigDlg& layout, uint32_t flags);

/// `flags` with the bits that the toggles stand for replaced by what they show.
uint32_t preference_bits_read(const Ui::ConfigDlg& layout, uint32_t flags);

}  // namespace dorn
