#include "ui/clipboard.h"

#include "ui/background.h"
#include "ui/clipboard_holder.h"
#include "ui/offer_data.h"
#include "ui/qt_widget.h"
#include "ui/x_selection.h"

#include <QApplication>
#include <QClipboard>
#include <QMimeData>
#include <QPointer>

#include <xcb/xcb.h>

namespace dorn {

namespace {

std::vector<ClipboardTypes> sWanted;
ClipboardMaker sMake_f = nullptr;
void (*sChanged_f)() = nullptr;
ClipboardContent sContent;

std::shared_ptr<const ClipboardOffer> sOffer;  // the last that was put there
QPointer<QMimeData> sOfferData;                // it, as the clipboard has it

uint64_t sReading = 0;     // number of the last reading begun; earlier ones are out of date
bool sUnanswered = false;  // the owner was silent: it is asked again when the user comes back

bool is_x11() {
    return QGuiApplication::platformName() == QLatin1String("xcb");
}

void set_content(ClipboardContent content) {
    sContent = std::move(content);
    if (sChanged_f != nullptr) sChanged_f();
}

// Where reading asks no other program, or the window system lets nobody but the toolkit read.
ClipboardItems read_through_toolkit() {
    ClipboardItems items;
    const QMimeData* data = QGuiApplication::clipboard()->mimeData();
    if (data == nullptr) return items;  // there are platforms without
    const QStringList formats = data->formats();
    for (const ClipboardTypes& group : sWanted) {
        for (const std::string& type : group) {
            const QString format = QString::fromStdString(type);
            const QByteArray bytes = formats.contains(format) ? data->data(format) : QByteArray();
            if (bytes.isEmpty() && items.empty()) break;
            items.emplace(type, bytes.toStdString());
        }
        if (!items.empty()) break;
    }
    return items;
}

void start_reading() {
    const uint64_t number = ++sReading;
    struct Read {
        bool answered = false;
        std::shared_ptr<void> made;
    };
    auto read = std::make_shared<Read>();
    sContent.own.reset();
    sContent.known = false;
    ui_async(
        nullptr,
        [read, wanted = sWanted, make = sMake_f] {
            const SelectionRead selection = x_selection_read(wanted);
            *read = {selection.answered, make(selection.items)};
        },
        [read, number] {
            if (number != sReading) return;
            sUnanswered = !read->answered;
            set_content({nullptr, read->made, true});
        });
}

void content_changed() {
    ++sReading;
    sUnanswered = false;
    if (sOffer != nullptr && clipboard_holds(sOffer.get()))
        set_content({sOffer, nullptr, true});
    else if (is_x11())
        start_reading();
    else
        set_content({nullptr, sMake_f(read_through_toolkit()), true});
}

}  // namespace

void clipboard_setup(std::vector<ClipboardTypes> wanted, ClipboardMaker make, void (*changed)()) {
    sWanted = std::move(wanted);
    sMake_f = make;
    sChanged_f = changed;
    QClipboard* clipboard = QGuiApplication::clipboard();
    QObject::connect(clipboard, &QClipboard::dataChanged, clipboard, content_changed);
    QObject::connect(qApp, &QGuiApplication::applicationStateChanged, clipboard,
                     [](Qt::ApplicationState state) {
                         const bool unread = sUnanswered || !sContent.known;
                         if (state == Qt::ApplicationActive && unread) content_changed();
                     });
    content_changed();
}

const ClipboardContent& clipboard_content() {
    return sContent;
}

bool clipboard_holds(const ClipboardOffer* offer) {
    return offer != nullptr && offer == sOffer.get() && sOfferData != nullptr &&
           QGuiApplication::clipboard()->mimeData() == sOfferData;
}

void clipboard_put(std::shared_ptr<const ClipboardOffer> offer) {
    sOffer = std::move(offer);
    sOfferData = ui_offer_data(sOffer);
    QGuiApplication::clipboard()->setMimeData(sOfferData);
}

void clipboard_clear() {
    sOffer.reset();
    QGuiApplication::clipboard()->clear();
}

void clipboard_outlive() {
    for (QWidget* window : QApplication::topLevelWidgets())
        window->hide();
    if (!is_x11()) return;
    if (const auto* x11 = qApp->nativeInterface<QNativeInterface::QX11Application>())
        xcb_flush(x11->connection());  // the event loop that would do it has ended
    if (!clipboard_holds(sOffer.get())) return;
    const SelectionOwners owners = x_selection_owners();
    if (owners.manager) return;
    clipboard_start_holder(*sOffer, owners.clipboard);
}

}  // namespace dorn
