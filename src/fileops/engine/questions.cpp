// What the worker's stages ask and tell alike.
#include "dirmodel/name_translation.h"
#include "fileops/engine/prompts.h"
#include "fileops/engine/worker.h"

#include <algorithm>
#include <cstring>

namespace dorn {

int32_t percent_of(uint64_t done, uint64_t total) {
    if (total == 0) return 0;
    return static_cast<int32_t>(std::min<uint64_t>(done * 100 / total, 100));
}

std::string filled(std::string_view text, std::initializer_list<std::string_view> values) {
    std::string out;
    for (const std::string_view value : values) {
        const std::size_t mark = text.find("%s");
        if (mark == std::string_view::npos) break;
        out.append(text.substr(0, mark)).append(value);
        text.remove_prefix(mark + 2);
    }
    return out.append(text);
}

std::string shown(const std::string& path) {
    // One component at a time: decoding has room for a name, not for the longest path.
    std::string text;
    std::size_t begin = 0;
    for (;;) {
        const std::size_t end = path.find('/', begin);
        text += fname_decode(path.substr(begin, end - begin).c_str(), nullptr);
        if (end == std::string::npos) return text;
        text += '/';
        begin = end + 1;
    }
}

int ask_skip(Worker& w, const char* title, std::string_view text, const std::string& path,
             int error) {
    const std::string message = filled(text, {shown(path), std::strerror(error)});
    const int button = fop_alert(w.op, title, "&Continue|&Abort", "%s", message.c_str());
    return button == 1 ? kEntrySkipped : kStopAll;
}

int ask_overwrite(Worker& w, const char* title, const std::string& path) {
    if ((w.op->flags & kFopOverwriteAll) != 0) return kEntryDone;
    const int button =
        fop_alert(w.op, title, "&Skip|&Overwrite|Overwrite &All|a&Bort",
                  "The '%s' file exists.\nWhat do you want to do ?\n", shown(path).c_str());
    if (button == 1) return kEntrySkipped;
    if (button == 3) w.op->flags |= kFopOverwriteAll;
    return button == 2 || button == 3 ? kEntryDone : kStopAll;
}

int refuse_into_itself(Worker& w) {
    fop_errinfo(w.op, "File Scan", "%s", w.verb->into_itself);
    return kStopAll;
}

void tell_done(const Worker& w, const char* name) {
    if (w.op->on_item_done != nullptr) w.op->on_item_done(w.source_path.c_str(), name);
}

}  // namespace dorn
