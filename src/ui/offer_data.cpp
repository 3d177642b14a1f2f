#include "ui/offer_data.h"

#include <QMimeData>

namespace dorn {

namespace {

class OfferData final : public QMimeData {
  public:
    explicit OfferData(std::shared_ptr<const ClipboardOffer> offer) : offer_(std::move(offer)) {}

    // A type without data is not named: its reader could not tell it from data.
    QStringList formats() const override {
        QStringList types;
        for (const std::string& type : offer_->types) {
            if (offer_->has(type.c_str())) types.append(QString::fromStdString(type));
        }
        return types;
    }

    bool hasFormat(const QString& type) const override {
        return formats().contains(type);
    }

  protected:
    QVariant retrieveData(const QString& type, QMetaType) const override {
        return QByteArray::fromStdString(offer_->pack(type.toLatin1().constData()));
    }

  private:
    std::shared_ptr<const ClipboardOffer> offer_;
};

}  // namespace

QMimeData* ui_offer_data(std::shared_ptr<const ClipboardOffer> offer) {
    return new OfferData(std::move(offer));
}

}  // namespace dorn
