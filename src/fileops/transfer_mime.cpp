#include "fileops/transfer_mime.h"

#include "ui/offer_data.h"

#include <QElapsedTimer>
#include <QMimeData>

#include <algorithm>

namespace dorn {

namespace {

constexpr qint64 kSilenceMs = 3000;  // after which whom we ask hangs

std::string_view view_of(const QByteArray& bytes) {
    return {bytes.constData(), static_cast<std::size_t>(bytes.size())};
}

TransferLists read_as(const QMimeData* data, const char* type) {
    const QByteArray bytes = data->data(QLatin1String(type));
    QByteArray kde_cut;
    if (type == kTypeUriList && !bytes.isEmpty()) kde_cut = data->data(QLatin1String(kTypeKdeCut));
    return transfer_unpack(view_of(bytes), type, view_of(kde_cut));
}

}  // namespace

QMimeData* transfer_mime_data(const FileTransfer& transfer, bool cut) {
    const TransferLists lists{cut, {transfer}, 0, {}};
    return ui_offer_data(transfer_offer(std::make_shared<const TransferLists>(lists)));
}

bool transfer_mime_offered(const QMimeData* data) {
    if (data == nullptr) return false;
    const QStringList formats = data->formats();
    return std::ranges::any_of(transfer_types().first(kListTypes), [&](const char* type) {
        return formats.contains(QLatin1String(type));
    });
}

TransferLists transfer_from_mime(const QMimeData* data) {
    TransferLists arrived;
    if (data == nullptr) return arrived;
    const QStringList formats = data->formats();
    QElapsedTimer asked;
    asked.start();
    for (const char* type : transfer_types().first(kListTypes)) {
        if (!formats.contains(QLatin1String(type))) continue;
        TransferLists found = read_as(data, type);
        if (!found.lists.empty()) return found;
        if (found.foreign > arrived.foreign) arrived = std::move(found);
        if (asked.elapsed() > kSilenceMs) break;
    }
    return arrived;
}

}  // namespace dorn
