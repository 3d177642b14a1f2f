#include "support/headless_clipboard.h"

namespace dorn {

namespace {

ClipboardMaker sMake_f = nullptr;
void (*sChanged_f)() = nullptr;
ClipboardContent sContent;
ClipboardItems sItems;  // of another program
int sPuts = 0;

void set_content(std::shared_ptr<const ClipboardOffer> own, ClipboardItems items, bool known) {
    sItems = std::move(items);
    sContent.own = std::move(own);
    sContent.known = known;
    if (known) sContent.made = sMake_f(sItems);
    if (known && sChanged_f != nullptr) sChanged_f();
}

}  // namespace

namespace headless {

void clipboard_foreign(std::map<std::string, std::string> items, bool unread) {
    set_content(nullptr, std::move(items), !unread);
}

void clipboard_read() {
    set_content(nullptr, sItems, true);
}

std::string clipboard_bytes(const std::string& type) {
    if (sContent.own != nullptr)
        return sContent.own->has(type.c_str()) ? sContent.own->pack(type.c_str()) : "";
    const auto item = sItems.find(type);
    return item == sItems.end() ? "" : item->second;
}

int clipboard_puts() {
    return sPuts;
}

}  // namespace headless

void clipboard_setup(std::vector<ClipboardTypes>, ClipboardMaker make, void (*changed)()) {
    sMake_f = make;
    sChanged_f = changed;
}

const ClipboardContent& clipboard_content() {
    return sContent;
}

bool clipboard_holds(const ClipboardOffer* offer) {
    return offer != nullptr && sContent.own.get() == offer;
}

void clipboard_put(std::shared_ptr<const ClipboardOffer> offer) {
    ++sPuts;
    set_content(std::move(offer), {}, true);
}

void clipboard_clear() {
    ++sPuts;
    set_content(nullptr, {}, true);
}

}  // namespace dorn
