#include "fileops/engine/file_clipboard.h"

#include "fileops/engine/cut_list.h"
#include "fileops/engine/listed_files.h"
#include "ui/lock.h"

#include <atomic>
#include <chrono>
#include <cstring>

namespace dorn {

namespace {

using Clock = std::chrono::steady_clock;

constexpr auto kTellInterval = std::chrono::seconds(1);

// Event-loop thread only.
void (*sChanged_f)() = nullptr;
std::shared_ptr<ListedFiles> sListed;          // on the clipboard as far as known; null: no list
std::shared_ptr<const ClipboardOffer> sOffer;  // of sListed, when it was put there by us

struct Entry {
    std::string directory;
    std::string name;
};

// Shared with the workers.
std::mutex sMutex;                        // guards what follows
std::shared_ptr<ListedFiles> _cut_files;  // sListed when that is a cut one
std::vector<Entry> sGone;                 // taken off since the others were told
Clock::time_point sTold;                  // when they were
std::atomic<bool> sAnyCut = false;        // whether there are _cut_files

std::shared_ptr<const ListedFiles> cut_files() {
    if (!sAnyCut) return nullptr;
    const std::lock_guard lock(sMutex);
    return _cut_files;
}

// Of what was taken off before, only what the list has counts on.
void set_listed(std::shared_ptr<ListedFiles> listed) {
    sListed = std::move(listed);
    const std::lock_guard lock(sMutex);
    std::erase_if(
        sGone, [](const Entry& entry) { return !sListed->take_off(entry.directory, entry.name); });
    _cut_files = sListed->cut() ? sListed : nullptr;
    sAnyCut = _cut_files != nullptr;
}

void forget_gone() {
    const std::lock_guard lock(sMutex);
    sGone.clear();
}

// Whether the others have not been told for a while, or nothing is left.
bool is_time_to_tell() {
    const Clock::time_point at = Clock::now();
    if (_cut_files->left() > 0 && at - sTold < kTellInterval) return false;
    sTold = at;
    return true;
}

bool are_others_told() {
    const std::lock_guard lock(sMutex);
    return sGone.empty();
}

void put_listed() {
    auto offer = std::make_shared<ClipboardOffer>();
    offer->types.assign(transfer_types().begin(), transfer_types().end());
    offer->has = [listed = sListed](const char* type) { return listed->packs(type); };
    offer->pack = [listed = sListed](const char* type) { return listed->pack(type); };
    sOffer = std::move(offer);
    clipboard_put(sOffer);
}

// Tells the others what was taken off the cut list: by announcing it again, or by taking it over
// from the program that it is of. A newer clipboard stays as it is.
void tell_others() {
    if (sListed == nullptr || !sListed->cut() || are_others_told()) return;
    if (!clipboard_content().known) return;
    if (sOffer != nullptr && !clipboard_holds(sOffer.get())) return;
    forget_gone();
    if (sListed->left() > 0) return put_listed();
    sOffer.reset();
    clipboard_clear();
}

TransferLists unpack_items(const ClipboardItems& items) {
    const auto kde_cut = items.find(kTypeKdeCut);
    for (const char* type : transfer_types().first(kListTypes)) {
        const auto item = items.find(type);
        if (item == items.end()) continue;
        return transfer_unpack(item->second, type, kde_cut == items.end() ? "" : kde_cut->second);
    }
    return {};
}

std::shared_ptr<void> make_listed(const ClipboardItems& items) {
    return std::make_shared<ListedFiles>(unpack_items(items));
}

void content_changed() {
    const ClipboardContent& content = clipboard_content();
    if (content.own != nullptr && content.own == sOffer) return;
    sOffer.reset();
    set_listed(content.made ? std::static_pointer_cast<ListedFiles>(content.made)
                            : std::make_shared<ListedFiles>(TransferLists{}));
    if (sChanged_f != nullptr) sChanged_f();
}

}  // namespace

void file_clipboard_setup(void (*changed)()) {
    sChanged_f = changed;
    clipboard_setup(
        {{kTypeTransfiles}, {kTypeGnomeFiles}, {kTypeMateFiles}, {kTypeUriList, kTypeKdeCut}},
        make_listed, content_changed);
}

void file_clipboard_put(FileTransfer list, bool cut) {
    forget_gone();
    set_listed(std::make_shared<ListedFiles>(TransferLists{cut, {std::move(list)}, 0, {}}));
    put_listed();
    if (sChanged_f != nullptr) sChanged_f();
}

TransferLists file_clipboard_lists() {
    return sListed == nullptr ? TransferLists{} : sListed->copy();
}

bool file_clipboard_has(const char* tag) {
    if (sListed == nullptr || (sListed->left() == 0 && sListed->foreign() == 0)) return false;
    return tag == nullptr || std::strcmp(tag, sListed->cut() ? kTagCut : kTagCopied) == 0;
}

bool file_clipboard_is_being_read() {
    return !clipboard_content().known;
}

void file_get_cut_files() {
    tell_others();
}

bool file_any_cut() {
    const std::shared_ptr<const ListedFiles> cut = cut_files();
    return cut != nullptr && cut->left() > 0;
}

bool file_is_cut(const char* directory, const char* name) {
    const std::shared_ptr<const ListedFiles> cut = cut_files();
    return cut != nullptr && cut->has(directory, name);
}

int file_uncut(const char* directory, const char* name) {
    if (!sAnyCut) return 0;
    bool tell = false;
    {
        const std::lock_guard lock(
            sMutex);  // until it is noted: the list may be replaced meanwhile
        if (_cut_files == nullptr || !_cut_files->take_off(directory, name)) return 0;
        sGone.push_back({directory, name});
        tell = is_time_to_tell();
    }
    if (tell) ui_handed(tell_others);
    return 1;
}

}  // namespace dorn
