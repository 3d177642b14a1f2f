#include "filelist/typeahead.h"

#include "assoc/engine/command.h"
#include "filelist/navigation.h"
#include "filelist/pane.h"
#include "filelist/selection.h"
#include "ui/dialogs.h"

#include <string>

namespace dorn {

namespace {

constexpr std::size_t kTextLimit = 1023;  // bytes of typed text

constexpr uint32_t kFirstSymbol = 32;
constexpr uint32_t kLastSymbol = 122;

char sState = 0;          // 0: idle, '/' and '?': search, ':': a command
std::string sBuffer;      // the typed text
std::string sLastSearch;  // the last search confirmed with Enter

uint32_t search_flags() {
    return sState == '?' ? kFindPrefix | kFindBackward : kFindPrefix;
}

void search_for(const std::string& text) {
    const SelectionBatch batch;
    fl_unselect_all();
    fl_select_index(fl_goto(text.c_str(), 0, search_flags()));
}

int text_changed() {
    if (sState == '/' || sState == '?') search_for(sBuffer);
    return 1;
}

int confirm() {
    if (sState == 0) return 0;
    if (sState == ':') {
        const std::string command = std::move(sBuffer);
        interp_reset();
        misc_run(0, 1, command.c_str());
        return -1;
    }
    if (!sBuffer.empty()) sLastSearch = sBuffer;
    const bool opens = sState == '/';
    search_for(sLastSearch);
    interp_reset();
    if (opens) fl_open(gDir->current);
    return -1;
}

int take_back() {
    if (sBuffer.empty()) {
        const int used = sState == 0 ? 0 : -1;
        interp_reset();
        return used;
    }
    sBuffer.pop_back();
    return text_changed();
}

int append(uint32_t sym) {
    if (sym < kFirstSymbol || sym > kLastSymbol) return 0;
    if (sym == ' ' && sState == 0) return 0;
    if (sym == ' ' && sBuffer.empty()) return 1;
    if (sState == 0) sState = '/';
    if (sBuffer.size() < kTextLimit) sBuffer += static_cast<char>(sym);
    return text_changed();
}

}  // namespace

int interp_key(const KeyEvent& key) {
    constexpr uint32_t wanted = kKeyDown | kKeySymValid | kKeyCapValid;
    if ((key.flags & wanted) != wanted) return 0;
    if (key.sym == kKeyEscape) {
        const int used = sState == 0 ? 0 : -1;
        interp_reset();
        return used;
    }
    if (key.sym == kKeyEnter) return confirm();
    const bool opens = key.cap == ':' || key.cap == '/' || key.cap == '?';
    if (sState == 0 && opens) {
        sState = static_cast<char>(key.cap);
        sBuffer.clear();
        return 1;
    }
    if (key.sym == kKeyBackspace) return take_back();
    return append(key.sym);
}

void interp_echo() {
    if (sState == 0)
        wprintf(w_instance("status1"), "%s", "");
    else
        wprintf(w_instance("status1"), "%c%s", sState, sBuffer.c_str());
}

void interp_reset() {
    sState = 0;
    sBuffer.clear();
}

bool interp_active() {
    return sState != 0;
}

}  // namespace dorn
