#include "ui/x_selection.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <optional>
#include <poll.h>
#include <xcb/xcb.h>

namespace dorn {

namespace {

using Clock = std::chrono::steady_clock;

constexpr auto kSilence = std::chrono::seconds(3);   // of an owner, until it counts as hung
constexpr auto kPatience = std::chrono::seconds(9);  // for everything
constexpr std::size_t kMostBytes = std::size_t{128} << 20;
constexpr uint32_t kWholeProperty = 0x1FFFFFFF;  // in units of four bytes

struct Free {
    void operator()(void* block) const {
        std::free(block);
    }
};
template <class T>
std::unique_ptr<T, Free> owned(T* reply) {
    return std::unique_ptr<T, Free>(reply);
}

struct Disconnect {
    void operator()(xcb_connection_t* connection) const {
        xcb_disconnect(connection);
    }
};
using Connection = std::unique_ptr<xcb_connection_t, Disconnect>;

xcb_atom_t atom(xcb_connection_t* connection, const std::string& name) {
    const auto cookie =
        xcb_intern_atom(connection, 0, static_cast<uint16_t>(name.size()), name.data());
    const auto reply = owned(xcb_intern_atom_reply(connection, cookie, nullptr));
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

uint32_t owner_of(xcb_connection_t* connection, const char* selection) {
    const auto cookie = xcb_get_selection_owner(connection, atom(connection, selection));
    const auto reply = owned(xcb_get_selection_owner_reply(connection, cookie, nullptr));
    return reply ? reply->owner : 0;
}

// One reading of the clipboard: a connection, and a window that the owner puts the bytes on.
class SelectionReader {
  public:
    SelectionReader() : connection_(xcb_connect(nullptr, nullptr)), end_(Clock::now() + kPatience) {
        if (xcb_connection_has_error(connection_.get()) != 0) return;
        make_window();
        selection_ = atom(connection_.get(), "CLIPBOARD");
        property_ = atom(connection_.get(), "DORN_CLIPBOARD");
        incremental_ = atom(connection_.get(), "INCR");
    }

    // The bytes of the type; empty when the owner refuses it, none when it does not answer.
    std::optional<std::string> convert(const std::string& type) {
        if (window_ == 0) return std::nullopt;
        xcb_convert_selection(connection_.get(), window_, selection_, atom(connection_.get(), type),
                              property_, XCB_CURRENT_TIME);
        const auto answer = wait_for(XCB_SELECTION_NOTIFY);
        if (!answer) return std::nullopt;
        if (reinterpret_cast<const xcb_selection_notify_event_t*>(answer.get())->property ==
            XCB_ATOM_NONE)
            return std::string();
        std::string bytes;
        if (take_property(&bytes) == incremental_) return take_pieces();
        return bytes.size() <= kMostBytes ? bytes : std::string();
    }

    std::vector<xcb_atom_t> atoms_of(const std::string& bytes) const {
        std::vector<xcb_atom_t> atoms(bytes.size() / sizeof(xcb_atom_t));
        std::copy_n(bytes.data(), atoms.size() * sizeof(xcb_atom_t),
                    reinterpret_cast<char*>(atoms.data()));
        return atoms;
    }

    bool offers(const std::vector<xcb_atom_t>& targets, const std::string& type) const {
        return std::ranges::find(targets, atom(connection_.get(), type)) != targets.end();
    }

  private:
    using Event = std::unique_ptr<xcb_generic_event_t, Free>;

    void make_window() {
        const xcb_screen_t* screen =
            xcb_setup_roots_iterator(xcb_get_setup(connection_.get())).data;
        const uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
        window_ = xcb_generate_id(connection_.get());
        xcb_create_window(connection_.get(), XCB_COPY_FROM_PARENT, window_, screen->root, 0, 0, 1,
                          1, 0, XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT,
                          XCB_CW_EVENT_MASK, &events);
    }

    // The next event of that kind; null after a silence, at the end of all patience, or without a
    // server.
    Event wait_for(uint8_t kind) {
        const Clock::time_point give_up = std::min(Clock::now() + kSilence, end_);
        xcb_flush(connection_.get());
        for (;;) {
            Event event(xcb_poll_for_event(connection_.get()));
            if (event && (event->response_type & 0x7F) == kind) return event;
            if (event) continue;
            const auto left = std::chrono::ceil<std::chrono::milliseconds>(give_up - Clock::now());
            if (left.count() <= 0 || xcb_connection_has_error(connection_.get()) != 0) return {};
            pollfd ready{xcb_get_file_descriptor(connection_.get()), POLLIN, 0};
            poll(&ready, 1, static_cast<int>(left.count()));
        }
    }

    // Appends the property's bytes and deletes it, which asks for the next piece. Returns its type.
    xcb_atom_t take_property(std::string* bytes) {
        const auto cookie = xcb_get_property(connection_.get(), 1, window_, property_,
                                             XCB_GET_PROPERTY_TYPE_ANY, 0, kWholeProperty);
        const auto reply = owned(xcb_get_property_reply(connection_.get(), cookie, nullptr));
        if (!reply) return XCB_ATOM_NONE;
        if (reply->type != incremental_)
            bytes->append(static_cast<const char*>(xcb_get_property_value(reply.get())),
                          static_cast<std::size_t>(xcb_get_property_value_length(reply.get())));
        return reply->type;
    }

    // What comes piece by piece, until an empty one.
    std::optional<std::string> take_pieces() {
        std::string bytes;
        while (bytes.size() <= kMostBytes) {
            const Event event = wait_for(XCB_PROPERTY_NOTIFY);
            if (!event) return std::nullopt;
            const auto* change = reinterpret_cast<const xcb_property_notify_event_t*>(event.get());
            if (change->state != XCB_PROPERTY_NEW_VALUE || change->atom != property_) continue;
            const std::size_t before = bytes.size();
            if (take_property(&bytes) == XCB_ATOM_NONE) return std::nullopt;
            if (bytes.size() == before) return bytes;
        }
        return std::string();
    }

    Connection connection_;
    Clock::time_point end_;
    xcb_window_t window_ = 0;
    xcb_atom_t selection_ = 0;
    xcb_atom_t property_ = 0;
    xcb_atom_t incremental_ = 0;
};

}  // namespace

SelectionRead x_selection_read(const std::vector<ClipboardTypes>& wanted) {
    SelectionRead read;
    SelectionReader reader;
    const std::optional<std::string> targets = reader.convert("TARGETS");
    if (!targets) return read;
    const std::vector<xcb_atom_t> offered = reader.atoms_of(*targets);
    for (const ClipboardTypes& group : wanted) {
        for (const std::string& type : group) {
            if (!reader.offers(offered, type)) {
                if (read.items.empty()) break;
                continue;
            }
            std::optional<std::string> bytes = reader.convert(type);
            if (!bytes) return {};
            if (bytes->empty() && read.items.empty()) break;
            read.items.emplace(type, std::move(*bytes));
        }
        if (!read.items.empty()) break;
    }
    read.answered = true;
    return read;
}

SelectionOwners x_selection_owners() {
    SelectionOwners owners;
    const Connection connection(xcb_connect(nullptr, nullptr));
    if (xcb_connection_has_error(connection.get()) != 0) return owners;
    owners.clipboard = owner_of(connection.get(), "CLIPBOARD");
    owners.manager = owner_of(connection.get(), "CLIPBOARD_MANAGER") != 0;
    return owners;
}

}  // namespace dorn
