#include "app/show_request.h"

#include "dialogs/properties.h"
#include "dirmodel/dir_entry.h"
#include "filelist/selection.h"
#include "platform/spawn.h"

#include <cstdlib>
#include <string_view>

namespace dorn {

namespace {

constexpr const char* kDorn = "/usr/orrin/bin/dorn";
constexpr const char* kVariable = "DORN_SHOW";
// "verb/name/name//directory": no name is empty or has a "/".
constexpr std::string_view kSelect = "select";
constexpr std::string_view kProperties = "properties";
// The system takes no variable of 128 KiB.
constexpr std::size_t kLongest = 100000;

std::string packed(const ShowRequest& request) {
    std::string text(request.properties ? kProperties : kSelect);
    for (const std::string& name : request.names) {
        if (text.size() + 1 + name.size() > kLongest) break;
        text += "/" + name;
    }
    return text + "/" + request.directory;
}

}  // namespace

int show_request_start(const ShowRequest& request, const std::string& startup_id) {
    std::vector<std::string> variables;
    if (!request.names.empty()) variables.push_back(std::string(kVariable) + "=" + packed(request));
    // The X11 and the Wayland word for the same thing; which of them it is the caller doesn't say.
    if (!startup_id.empty()) {
        variables.push_back("DESKTOP_STARTUP_ID=" + startup_id);
        variables.push_back("XDG_ACTIVATION_TOKEN=" + startup_id);
    }
    const std::vector<std::string> words = {"dorn", request.directory};
    return spawn_program(orrin_program(kDorn), words, {}, variables) < 0 ? -1 : 0;
}

ShowRequest show_request_take() {
    const char* value = std::getenv(kVariable);
    if (value == nullptr) return {};
    const std::string text = value;
    unsetenv(kVariable);
    const std::size_t end = text.find("//");
    if (end == std::string::npos) return {};
    ShowRequest request;
    request.directory = text.substr(end + 1);
    std::size_t at = text.find('/');
    request.properties = text.substr(0, at) == kProperties;
    while (at != end) {
        const std::size_t next = text.find('/', at + 1);
        request.names.push_back(text.substr(at + 1, next - at - 1));
        at = next;
    }
    return request;
}

void show_request_apply(const ShowRequest& request) {
    if (request.names.empty() || gDir->path != request.directory) return;
    if (fl_select_names(request.names) > 0 && request.properties) fm_inspect();
}

}  // namespace dorn
