#include "dialogs/property_apply.h"

#include "dialogs/dialog_window.h"
#include "dirmodel/name_translation.h"
#include "platform/spare_thread.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QPointer>

#include <algorithm>

namespace dorn {

namespace {

constexpr int kPatienceMs = 50;   // that pass before anything is shown
constexpr int kPeriodMs = 16;     // between two looks at the work
constexpr int kAnswerMs = 10000;  // for one entry

enum class RunEnd { Ended, Late, Closed };

RunEnd run(QDialog* dialog, const std::shared_ptr<PropertyWork>& work,
           const std::function<void()>& on_progress) {
    const QPointer<QDialog> open(dialog);
    const SpareCall call([work] { work->run(); });
    if (call.done(kPatienceMs)) return RunEnd::Ended;
    std::size_t seen = work->done;
    QElapsedTimer since;
    since.start();
    while (!call.done(kPeriodMs)) {
        on_progress();
        QCoreApplication::processEvents();
        if (!dialog_is_open(open)) return RunEnd::Closed;
        if (work->done != seen) {
            seen = work->done;
            since.start();
        } else if (since.elapsed() > kAnswerMs) {
            return RunEnd::Late;
        }
    }
    return RunEnd::Ended;
}

std::string message_with(const char* before, const std::string& name, const char* after) {
    return before + ("'" + name + "'") + after;
}

std::string error_text(PropertyError error, const PropertyWork& work, const PropertyTarget& target,
                       const std::string& typed_name) {
    const std::string& name = work.renamed ? work.change.name : target.name;
    const std::string shown = fname_decode(name.c_str(), nullptr);
    switch (error) {
        case PropertyError::NameExists:
            return message_with("File name ", typed_name, " already exists");
        case PropertyError::Rename:
            return message_with("Unable to rename ", typed_name, ".");
        case PropertyError::Owner:
            return message_with("Invalid owner_id ", work.change.owner, "");
        case PropertyError::Group:
            return message_with("Invalid group ", work.change.group, "");
        case PropertyError::Ownership:
            return message_with("Unable to change ownership of ", shown, "");
        default:
            return message_with("Unable to change permissions of ", shown, "");
    }
}

// Tells of an error; false when the user wants no more of it, which only several errors offer.
bool tell(QDialog* dialog, const std::string& message, bool may_end) {
    if (!may_end) return wreport(handle(dialog), "Error", "%s", message.c_str()) == 1;
    return ui_alert(handle(dialog), "Error", message.c_str(), "@&Continue|#a&Bort") == 1;
}

}  // namespace

void prop_apply(QDialog* dialog, const std::shared_ptr<PropertyWork>& work,
                const std::string& typed_name, const std::function<void()>& on_progress) {
    const QPointer<QDialog> open(dialog);
    int errors = 0;
    bool go_on = true;
    while (go_on && !work->at_end() && dialog_is_open(open)) {
        const RunEnd end = run(open, work, on_progress);
        const bool late = end == RunEnd::Late;
        const PropertyError error = late ? work->step.load() : work->error;
        go_on = end == RunEnd::Ended;
        if (end == RunEnd::Closed || error == PropertyError::None) continue;
        // A late one may have come to its end since.
        const std::size_t failed =
            late ? std::min(work->done.load(), work->targets.size() - 1) : work->done - 1;
        const bool may_end = go_on && !work->at_end() && ++errors > 1;
        if (!tell(open, error_text(error, *work, work->targets[failed], typed_name), may_end))
            go_on = false;
    }
    work->stop = true;
}

}  // namespace dorn
