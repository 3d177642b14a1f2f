#include "fileops/transfer_mime.h"

#include <QMimeData>

#include <array>

namespace dorn {

namespace {

constexpr auto kWritten = std::to_array<const char*>(
    {kTypeTransfiles, kTypeGnomeFiles, kTypeMateFiles, kTypeUriList, kTypeKdeCut, kTypeText});
constexpr auto kRead =
    std::to_array<const char*>({kTypeTransfiles, kTypeGnomeFiles, kTypeMateFiles, kTypeUriList});

// Packs when asked: three texts of a list of 100 000 names are ten megabytes, and a cut list
// shrinks with every file that is moved.
class PackedOnDemand final : public QMimeData {
  public:
    PackedOnDemand(std::shared_ptr<const FileTransfer> transfer, bool cut)
        : transfer_(std::move(transfer)), cut_(cut) {}

    // A type without data is not named: its reader could not tell it from a list.
    QStringList formats() const override {
        QStringList types;
        for (const char* type : kWritten) {
            if (has(type)) types.append(QLatin1String(type));
        }
        return types;
    }

    bool hasFormat(const QString& type) const override {
        return formats().contains(type);
    }

  protected:
    QVariant retrieveData(const QString& type, QMetaType) const override {
        const std::string bytes = transfer_pack(*transfer_, cut_, type.toLatin1().constData());
        return QByteArray(bytes.data(), static_cast<qsizetype>(bytes.size()));
    }

  private:
    bool has(const char* type) const {
        for (const std::string& name : transfer_->names) {
            if (!name.empty()) return cut_ || type != kTypeKdeCut;
        }
        return false;
    }

    std::shared_ptr<const FileTransfer> transfer_;
    bool cut_;
};

TransferLists read_as(const QMimeData* data, const char* type) {
    const QByteArray bytes = data->data(QLatin1String(type));
    QByteArray kde_cut;
    if (type == kTypeUriList) kde_cut = data->data(QLatin1String(kTypeKdeCut));
    return transfer_unpack({bytes.constData(), static_cast<std::size_t>(bytes.size())}, type,
                           {kde_cut.constData(), static_cast<std::size_t>(kde_cut.size())});
}

}  // namespace

QMimeData* transfer_mime_data(std::shared_ptr<const FileTransfer> transfer, bool cut) {
    return new PackedOnDemand(std::move(transfer), cut);
}

bool transfer_mime_offered(const QMimeData* data) {
    if (data == nullptr) return false;
    const QStringList formats = data->formats();
    return std::ranges::any_of(
        kRead, [&](const char* type) { return formats.contains(QLatin1String(type)); });
}

TransferLists transfer_from_mime(const QMimeData* data, bool* own) {
    TransferLists arrived;
    if (own != nullptr) *own = false;
    if (data == nullptr) return arrived;
    const QStringList formats = data->formats();
    for (const char* type : kWritten) {
        if (!formats.contains(QLatin1String(type))) continue;
        TransferLists found = read_as(data, type);
        if (own != nullptr) *own = type == kTypeTransfiles && !found.lists.empty();
        if (!found.lists.empty()) return found;
        if (found.foreign > arrived.foreign) arrived = std::move(found);
    }
    return arrived;
}

}  // namespace dorn
