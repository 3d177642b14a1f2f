// Applies a change of properties while the Properties dialog shows that it works. Event-loop thread
// only.
#pragma once

#include "dialogs/property_change.h"

#include <functional>
#include <memory>

class QDialog;

namespace dorn {

/// Works through the targets on a spare thread and tells the user of each error; `typed_name` is
/// the new name as it was typed. When it takes longer than a moment the event loop is served and
/// `on_progress` called again and again. Closing the dialog ends it after the entry under way;
/// so does an entry that does not answer in time, as an error. With several targets the user can
/// end it at an error, too.
void prop_apply(QDialog* dialog, const std::shared_ptr<PropertyWork>& work,
                const std::string& typed_name, const std::function<void()>& on_progress);

}  // namespace dorn
