#include "ui/clipboard_holder.h"

#include "platform/spawn.h"

#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <poll.h>
#include <string_view>
#include <unistd.h>

namespace dorn {

namespace {

using Clock = std::chrono::steady_clock;

constexpr auto kPatience = std::chrono::seconds(2);

struct Pipe {
    int read = -1;
    int write = -1;

    Pipe() {
        int ends[2];
        if (pipe2(ends, O_CLOEXEC) == 0) read = ends[0], write = ends[1];
    }
    ~Pipe() {
        close_end(&read);
        close_end(&write);
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    static void close_end(int* end) {
        if (*end != -1) close(*end);
        *end = -1;
    }
};

void put_text(std::string* out, std::string_view text) {
    const auto size = static_cast<uint32_t>(text.size());
    for (unsigned shift = 0; shift < 32; shift += 8)
        out->push_back(static_cast<char>((size >> shift) & 0xFF));
    out->append(text);
}

// What the holder reads: for each type its name and its bytes, each behind its length.
std::string message(const ClipboardOffer& offer) {
    std::string bytes;
    for (const std::string& type : offer.types) {
        if (!offer.has(type.c_str())) continue;
        put_text(&bytes, type);
        put_text(&bytes, offer.pack(type.c_str()));
    }
    return bytes;
}

bool wait_until(int descriptor, short events, Clock::time_point end) {
    pollfd ready{descriptor, events, 0};
    for (;;) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now());
        if (left.count() <= 0) return false;
        const int count = poll(&ready, 1, static_cast<int>(left.count()));
        if (count > 0) return true;
        if (count == -1 && errno != EINTR) return false;
    }
}

bool write_all(int descriptor, std::string_view bytes, Clock::time_point end) {
    fcntl(descriptor, F_SETFL, O_NONBLOCK);
    while (!bytes.empty()) {
        if (!wait_until(descriptor, POLLOUT, end)) return false;
        const ssize_t written = write(descriptor, bytes.data(), bytes.size());
        if (written > 0) bytes.remove_prefix(static_cast<std::size_t>(written));
        if (written == -1 && errno != EINTR && errno != EAGAIN) return false;
    }
    return true;
}

// The holder says one byte once it has the clipboard, and nothing when it failed.
bool has_taken(int descriptor, Clock::time_point end) {
    char byte = 0;
    return wait_until(descriptor, POLLIN, end) && read(descriptor, &byte, 1) == 1;
}

}  // namespace

int clipboard_start_holder(const ClipboardOffer& offer, uint32_t owner) {
    const Clock::time_point end = Clock::now() + kPatience;
    const std::string program = orrin_adaptor("clipboard_holder");
    const std::string bytes = message(offer);
    Pipe content;
    Pipe answer;
    if (program.empty() || bytes.empty() || content.write == -1 || answer.write == -1) return -1;
    if (spawn_program(program, {"clipboard_holder", std::to_string(owner)},
                      {content.read, answer.write}) == -1)
        return -1;
    Pipe::close_end(&content.read);
    Pipe::close_end(&answer.write);
    if (!write_all(content.write, bytes, end)) return -1;
    Pipe::close_end(&content.write);
    return has_taken(answer.read, end) ? 0 : -1;
}

}  // namespace dorn
