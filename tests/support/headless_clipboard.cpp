#include "support/headless_clipboard.h"

namespace dorn {

namespace {

void (*sChanged_f)() = nullptr;
ClipboardContent sContent;
int sPuts = 0;

void set_content(ClipboardContent content) {
    sContent = std::move(content);
    if (sContent.known && sChanged_f != nullptr) sChanged_f();
}

}  // namespace

namespace headless {

void clipboard_foreign(std::map<std::string, std::string> items, bool unread) {
    set_content({nullptr, std::move(items), !unread});
}

void clipboard_read() {
    set_content({nullptr, sContent.items, true});
}

std::string clipboard_bytes(const std::string& type) {
    if (sContent.own != nullptr)
        return sContent.own->has(type.c_str()) ? sContent.own->pack(type.c_str()) : "";
    const auto item = sContent.items.find(type);
    return item == sContent.items.end() ? "" : item->second;
}

int clipboard_puts() {
    return sPuts;
}

}  // namespace headless

void clipboard_setup(std::vector<ClipboardTypes>, void (*changed)()) {
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
    set_content({std::move(offer), {}, true});
}

void clipboard_clear() {
    ++sPuts;
    set_content({});
}

}  // namespace dorn
