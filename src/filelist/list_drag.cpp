#include "filelist/list_drag.h"

#include "dirmodel/name_translation.h"
#include "filelist/list_model.h"
#include "filelist/pane.h"
#include "filelist/transfer.h"
#include "fileops/transfer_mime.h"
#include "ui/qt_widget.h"

#include <QDrag>
#include <QMimeData>
#include <QPainter>

#include <chrono>
#include <limits>
#include <memory>

namespace dorn {

int64_t dnd_start_timestamp = std::numeric_limits<int64_t>::min() / 2;

namespace {

constexpr int kIconSize = 16;
constexpr int kMargin = 5;
constexpr int kWidest = 220;              // pixels of the first name
constexpr QPoint kBesidePointer{12, 12};  // where the picture begins, clear of the target

std::shared_ptr<const FileTransfer> sDragged;

QIcon icon_of_first_selected() {
    for (const ListRow& row : gPane.rows) {
        if (row.index >= 0 && (gDir->entries[row.index]->flags & kEntrySelected) != 0)
            return gPane.model->icon(row.image);
    }
    return {};
}

// The first name, and how many there are when there are several.
QPixmap drag_picture(const QWidget& source, const FileTransfer& transfer) {
    const QFontMetrics metrics = source.fontMetrics();
    const QString name = metrics.elidedText(
        ui_text(fname_decode(transfer.names.front().c_str(), nullptr)), Qt::ElideMiddle, kWidest);
    const QString count = transfer.names.size() > 1
                              ? QStringLiteral("%L1 items").arg(transfer.names.size())
                              : QString();
    const int line = qMax(metrics.height(), kIconSize);
    const int left = kMargin + kIconSize + kMargin;
    const QSize size(
        left + qMax(metrics.horizontalAdvance(name), metrics.horizontalAdvance(count)) + kMargin,
        line * (count.isEmpty() ? 1 : 2) + 2 * kMargin);
    const qreal ratio = source.devicePixelRatioF();
    QPixmap picture(size * ratio);
    picture.setDevicePixelRatio(ratio);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    const QPalette& palette = source.palette();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(palette.color(QPalette::Highlight));
    painter.setBrush(palette.color(QPalette::Base));
    painter.drawRoundedRect(QRectF({0.5, 0.5}, QSizeF(size) - QSizeF(1, 1)), 3, 3);
    icon_of_first_selected().paint(&painter, kMargin, kMargin + (line - kIconSize) / 2, kIconSize,
                                   kIconSize);
    painter.setFont(source.font());
    painter.setPen(palette.color(QPalette::Text));
    painter.drawText(QRect(left, kMargin, size.width(), line), Qt::AlignVCenter, name);
    painter.drawText(QRect(left, kMargin + line, size.width(), line), Qt::AlignVCenter, count);
    return picture;
}

}  // namespace

int64_t dnd_clock() {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
}

const FileTransfer* fl_dragged() {
    return sDragged.get();
}

void fl_start_drag(QWidget* source) {
    std::shared_ptr<const FileTransfer> transfer = fl_pack_transf();
    if (!transfer || transfer->names.empty()) return;
    auto* drag = new QDrag(source);
    drag->setMimeData(transfer_mime_data(*transfer, false));
    drag->setPixmap(drag_picture(*source, *transfer));
    drag->setHotSpot(-kBesidePointer);
    sDragged = std::move(transfer);
    dnd_start_timestamp = dnd_clock();
    drag->exec(Qt::CopyAction | Qt::MoveAction | Qt::LinkAction, Qt::CopyAction);
    sDragged.reset();
}

}  // namespace dorn
