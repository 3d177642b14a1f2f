// An offer as the toolkit's drag and clipboard data; for the Qt side only.
#pragma once

#include "ui/clipboard.h"

class QMimeData;

namespace dorn {

/// Data that packs when asked and names a type only while the offer has it. The caller owns it.
QMimeData* ui_offer_data(std::shared_ptr<const ClipboardOffer> offer);

}  // namespace dorn
