// The clipboard: what we put there and what is there, without ever waiting for another program.
//
// The content of another program's clipboard is read beside the event loop whenever it changes, and
// kept. On X11 that is done on a spare thread, so that an owner that hangs or dies costs nothing
// but its content. Of the content only the types that were asked for are read. There, too, what is
// kept is made of the bytes, which may be many. Event-loop thread.
//
//     clipboard_setup({{"our/type"}, {"text/uri-list", "their/extra"}}, made_of, content_changed);
//     clipboard_put(std::make_shared<ClipboardOffer>(...));
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace dorn {

/// What is offered, on the clipboard or by a drag. Bytes are made when another program asks.
struct ClipboardOffer {
    std::vector<std::string> types;  // that it may have, most telling first
    std::function<bool(const char* type)> has;
    std::function<std::string(const char* type)> pack;
};

using ClipboardItems = std::map<std::string, std::string>;  // bytes by type

/// What the clipboard holds as far as is known.
struct ClipboardContent {
    std::shared_ptr<const ClipboardOffer> own;  // ours; null when another program's
    std::shared_ptr<void> made;                 // what was made of another program's
    bool known = true;  // false: it has changed and is being read; the rest is as it was
};

/// Makes what is kept of another program's content. Any thread.
using ClipboardMaker = std::shared_ptr<void> (*)(const ClipboardItems& items);

/// Types that belong together, the first of them telling whether the others are read.
using ClipboardTypes = std::vector<std::string>;

/// Watches the clipboard from here on. Read are the types of the first group that has data.
/// `changed` is called whenever what is known of the content has changed.
void clipboard_setup(std::vector<ClipboardTypes> wanted, ClipboardMaker make, void (*changed)());

const ClipboardContent& clipboard_content();

/// Whether the clipboard holds that offer of ours at this moment. Asks the window system, no other
/// program.
bool clipboard_holds(const ClipboardOffer* offer);

/// Puts the offer on the clipboard; the one that is there is announced again, so that others read
/// it again. The window system refuses this when another program has taken the clipboard since the
/// last event that came here.
void clipboard_put(std::shared_ptr<const ClipboardOffer> offer);

/// Empties the clipboard.
void clipboard_clear();

/// To be called as the last thing before the event loop's end: hides the windows, and when the
/// clipboard holds an offer of ours that nobody else would keep, starts a process that does so
/// until another program takes the clipboard. Waits for that at most two seconds.
void clipboard_outlive();

}  // namespace dorn
