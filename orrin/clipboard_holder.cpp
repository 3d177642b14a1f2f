// Keeps the clipboard of an X server for a program that has ended: clipboard_holder WINDOW
//
// Standard input gives, for each type, its name and its bytes, each behind its length (four bytes,
// the lowest first). Once all is read the clipboard is taken from WINDOW, unless another window has
// it by then, and one byte goes to standard output. The process serves the clipboard until another
// program takes it or the display goes away.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unistd.h>
#include <vector>
#include <xcb/xcb.h>

namespace {

constexpr const char* kUsage =
    "usage: clipboard_holder WINDOW\n"
    "Keeps the clipboard that the X window of that number has, with the data that standard input\n"
    "brings, until another program takes it. For dorn's own use.\n";

constexpr std::size_t kPiece = std::size_t{64} << 10;  // bytes; more is sent piece by piece
constexpr unsigned kLastPieces = 10;                   // seconds to fetch them in

struct Item {
    xcb_atom_t type;
    std::shared_ptr<const std::string> bytes;
};

/// Bytes that another program takes piece by piece.
struct Sending {
    xcb_window_t window;
    xcb_atom_t property;
    xcb_atom_t type;
    std::shared_ptr<const std::string> bytes;
    std::size_t sent;
};

struct Free {
    void operator()(void* block) const {
        std::free(block);
    }
};
template <class T>
std::unique_ptr<T, Free> owned(T* reply) {
    return std::unique_ptr<T, Free>(reply);
}

std::string read_all(int descriptor) {
    std::string bytes;
    std::vector<char> piece(kPiece);
    for (ssize_t size = 0; (size = read(descriptor, piece.data(), piece.size())) > 0;)
        bytes.append(piece.data(), static_cast<std::size_t>(size));
    return bytes;
}

std::optional<std::string> take_text(std::string_view* bytes) {
    if (bytes->size() < 4) return std::nullopt;
    std::size_t size = 0;
    for (std::size_t i = 0; i < 4; ++i)
        size |= static_cast<std::size_t>(static_cast<unsigned char>((*bytes)[i])) << (8 * i);
    bytes->remove_prefix(4);
    if (size > bytes->size()) return std::nullopt;
    std::string text(bytes->substr(0, size));
    bytes->remove_prefix(size);
    return text;
}

class Holder {
  public:
    Holder() : x_(xcb_connect(nullptr, nullptr)) {}
    ~Holder() {
        xcb_disconnect(x_);
    }
    Holder(const Holder&) = delete;
    Holder& operator=(const Holder&) = delete;

    bool connected() const {
        return xcb_connection_has_error(x_) == 0;
    }

    /// False when the message is cut off or holds nothing.
    bool set_content(std::string_view message) {
        while (!message.empty()) {
            const std::optional<std::string> type = take_text(&message);
            std::optional<std::string> bytes = take_text(&message);
            if (!type || !bytes) return false;
            add(*type, std::make_shared<const std::string>(std::move(*bytes)));
        }
        return !items_.empty();
    }

    /// Makes the clipboard ours while nobody can come in between; false when `from` has lost it.
    bool take(xcb_window_t from) {
        make_window();
        const xcb_atom_t clipboard = atom("CLIPBOARD");
        time_ = server_time();
        xcb_grab_server(x_);
        const bool still = owner_of(clipboard) == from;
        if (still) xcb_set_selection_owner(x_, window_, clipboard, time_);
        const bool taken = still && owner_of(clipboard) == window_;
        xcb_ungrab_server(x_);
        xcb_flush(x_);
        return taken;
    }

    void serve() {
        while (!lost_ || !sendings_.empty()) {
            xcb_flush(x_);
            const auto event = owned(xcb_wait_for_event(x_));
            if (!event) return;
            handle(event.get());
        }
    }

  private:
    xcb_atom_t atom(const std::string& name) {
        const auto cookie = xcb_intern_atom(x_, 0, static_cast<uint16_t>(name.size()), name.data());
        const auto reply = owned(xcb_intern_atom_reply(x_, cookie, nullptr));
        return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
    }

    xcb_window_t owner_of(xcb_atom_t selection) {
        const auto cookie = xcb_get_selection_owner(x_, selection);
        const auto reply = owned(xcb_get_selection_owner_reply(x_, cookie, nullptr));
        return reply ? reply->owner : xcb_window_t{XCB_WINDOW_NONE};
    }

    // Text goes by several names.
    void add(const std::string& type, const std::shared_ptr<const std::string>& bytes) {
        items_.push_back({atom(type), bytes});
        if (type != "text/plain") return;
        for (const char* other : {"text/plain;charset=utf-8", "UTF8_STRING", "STRING", "TEXT"})
            items_.push_back({atom(other), bytes});
    }

    void make_window() {
        const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(x_)).data;
        const uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
        window_ = xcb_generate_id(x_);
        xcb_create_window(x_, XCB_COPY_FROM_PARENT, window_, screen->root, 0, 0, 1, 1, 0,
                          XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK,
                          &events);
        targets_ = atom("TARGETS");
        timestamp_ = atom("TIMESTAMP");
        multiple_ = atom("MULTIPLE");
        incremental_ = atom("INCR");
    }

    xcb_timestamp_t server_time() {
        xcb_change_property(x_, XCB_PROP_MODE_APPEND, window_, atom("DORN_TIME"), XCB_ATOM_STRING,
                            8, 0, nullptr);
        xcb_flush(x_);
        while (const auto event = owned(xcb_wait_for_event(x_))) {
            if ((event->response_type & 0x7F) == XCB_PROPERTY_NOTIFY)
                return reinterpret_cast<const xcb_property_notify_event_t*>(event.get())->time;
        }
        return XCB_CURRENT_TIME;
    }

    void handle(const xcb_generic_event_t* event) {
        switch (event->response_type & 0x7F) {
            case XCB_SELECTION_REQUEST:
                answer(*reinterpret_cast<const xcb_selection_request_event_t*>(event));
                break;
            case XCB_SELECTION_CLEAR:
                lost_ = true;
                alarm(kLastPieces);
                break;
            case XCB_PROPERTY_NOTIFY: {
                const auto* change = reinterpret_cast<const xcb_property_notify_event_t*>(event);
                if (change->state == XCB_PROPERTY_DELETE) go_on(change->window, change->atom);
                break;
            }
            case XCB_DESTROY_NOTIFY: {
                const auto* gone = reinterpret_cast<const xcb_destroy_notify_event_t*>(event);
                sendings_.remove_if([gone](const Sending& s) { return s.window == gone->window; });
                break;
            }
            default:  // errors, too: a requestor's window may be gone
                break;
        }
    }

    void answer(const xcb_selection_request_event_t& request) {
        const xcb_atom_t property =
            request.property == XCB_ATOM_NONE ? request.target : request.property;
        xcb_selection_notify_event_t notice{};
        notice.response_type = XCB_SELECTION_NOTIFY;
        notice.time = request.time;
        notice.requestor = request.requestor;
        notice.selection = request.selection;
        notice.target = request.target;
        const bool done = request.target == multiple_
                              ? put_several(request)
                              : put(request.requestor, request.target, property);
        notice.property = done ? property : xcb_atom_t{XCB_ATOM_NONE};
        // The library copies 32 bytes, the size of every event on the wire.
        char wire[32]{};
        std::memcpy(wire, &notice, sizeof notice);
        xcb_send_event(x_, 0, request.requestor, XCB_EVENT_MASK_NO_EVENT, wire);
    }

    bool put(xcb_window_t window, xcb_atom_t target, xcb_atom_t property) {
        if (target == targets_) {
            std::vector<xcb_atom_t> types{targets_, timestamp_, multiple_};
            for (const Item& item : items_)
                types.push_back(item.type);
            set(window, property, XCB_ATOM_ATOM, types.data(), types.size());
            return true;
        }
        if (target == timestamp_) {
            set(window, property, XCB_ATOM_INTEGER, &time_, 1);
            return true;
        }
        for (const Item& item : items_) {
            if (item.type != target) continue;
            put_item(window, property, item);
            return true;
        }
        return false;
    }

    // The property holds pairs of a target and the property to put it on, which becomes none for
    // what we don't have.
    bool put_several(const xcb_selection_request_event_t& request) {
        constexpr uint32_t most = 512;  // words
        const auto reply = owned(
            xcb_get_property_reply(x_,
                                   xcb_get_property(x_, 0, request.requestor, request.property,
                                                    XCB_GET_PROPERTY_TYPE_ANY, 0, most),
                                   nullptr));
        if (!reply || reply->format != 32) return false;
        const auto* words = static_cast<const uint32_t*>(xcb_get_property_value(reply.get()));
        std::vector<uint32_t> pairs(words, words + std::size_t{reply->value_len} / 2 * 2);
        for (std::size_t i = 0; i < pairs.size(); i += 2) {
            if (pairs[i + 1] != XCB_ATOM_NONE && !put(request.requestor, pairs[i], pairs[i + 1]))
                pairs[i + 1] = XCB_ATOM_NONE;
        }
        set(request.requestor, request.property, reply->type, pairs.data(), pairs.size());
        return true;
    }

    void set(xcb_window_t window, xcb_atom_t property, xcb_atom_t type, const uint32_t* words,
             std::size_t count) {
        xcb_change_property(x_, XCB_PROP_MODE_REPLACE, window, property, type, 32,
                            static_cast<uint32_t>(count), words);
    }

    void set_bytes(xcb_window_t window, xcb_atom_t property, xcb_atom_t type,
                   std::string_view bytes) {
        xcb_change_property(x_, XCB_PROP_MODE_REPLACE, window, property, type, 8,
                            static_cast<uint32_t>(bytes.size()), bytes.data());
    }

    void put_item(xcb_window_t window, xcb_atom_t property, const Item& item) {
        if (item.bytes->size() <= kPiece)
            return set_bytes(window, property, item.type, *item.bytes);
        const uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY;
        xcb_change_window_attributes(x_, window, XCB_CW_EVENT_MASK, &events);
        sendings_.remove_if(
            [&](const Sending& s) { return s.window == window && s.property == property; });
        sendings_.push_back({window, property, item.type, item.bytes, 0});
        const auto size = static_cast<uint32_t>(item.bytes->size());
        set(window, property, incremental_, &size, 1);
    }

    // The reader has taken what was there: the next piece, at last an empty one.
    void go_on(xcb_window_t window, xcb_atom_t property) {
        for (auto at = sendings_.begin(); at != sendings_.end(); ++at) {
            if (at->window != window || at->property != property) continue;
            const std::string_view piece = std::string_view(*at->bytes).substr(at->sent, kPiece);
            set_bytes(window, property, at->type, piece);
            at->sent += piece.size();
            if (piece.empty()) sendings_.erase(at);
            return;
        }
    }

    xcb_connection_t* x_;
    xcb_window_t window_ = XCB_WINDOW_NONE;
    xcb_atom_t targets_ = XCB_ATOM_NONE;
    xcb_atom_t timestamp_ = XCB_ATOM_NONE;
    xcb_atom_t multiple_ = XCB_ATOM_NONE;
    xcb_atom_t incremental_ = XCB_ATOM_NONE;
    xcb_timestamp_t time_ = XCB_CURRENT_TIME;
    bool lost_ = false;
    std::vector<Item> items_;
    std::list<Sending> sendings_;
};

// Nothing of the place and the session that the process was started from is held on to.
void detach() {
    setsid();
    if (chdir("/") != 0) std::perror("clipboard_holder: /");
    if (std::freopen("/dev/null", "r", stdin) == nullptr ||
        std::freopen("/dev/null", "w", stdout) == nullptr ||
        std::freopen("/dev/null", "w", stderr) == nullptr)
        std::perror("clipboard_holder: /dev/null");
}

}  // namespace

int main(int argc, char** argv) {
    char* end = nullptr;
    const unsigned long from = argc == 2 ? std::strtoul(argv[1], &end, 10) : 0;
    if (from == 0 || *end != '\0') {
        const bool asked = argc == 2 && std::strcmp(argv[1], "--help") == 0;
        std::fputs(kUsage, asked ? stdout : stderr);
        return asked ? 0 : 2;
    }
    Holder holder;
    if (!holder.connected() || !holder.set_content(read_all(STDIN_FILENO))) return 1;
    if (!holder.take(static_cast<xcb_window_t>(from))) return 1;
    if (write(STDOUT_FILENO, "k", 1) != 1) std::perror("clipboard_holder");  // nobody waits
    detach();
    holder.serve();
    return 0;
}
