#include "filelist/open_file.h"

#include "assoc/engine/association.h"
#include "assoc/engine/command.h"
#include "dirmodel/dir_entry.h"
#include "dirmodel/name_match.h"
#include "ui/dialogs.h"

#include <algorithm>
#include <string_view>
#include <sys/stat.h>

namespace dorn {

namespace {

bool is_harmless(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
           static_cast<unsigned char>(c) > 0x7F ||
           std::string_view("_.,+-@%=:").find(c) != std::string_view::npos;
}

}  // namespace

std::string run_command(const std::string& name) {
    if (std::all_of(name.begin(), name.end(), is_harmless)) return "./" + name;
    std::string quoted = "./'";
    for (const char c : name) {
        if (c == '\'')
            quoted += "'\\''";
        else
            quoted += c;
    }
    return quoted + "'";
}

void open_file(int32_t index) {
    const DirEntry& entry = *gDir->entries[index];
    bool matched = false;
    for (const Association& row : apat) {
        if (es_strcmp(entry.name, row.pattern.c_str()) != 0) continue;
        file_cmd(row.open.c_str(), entry.name);
        matched = true;
    }
    if (matched || (entry.mode & S_IXUSR) == 0) return;
    const ScopedBlock blocked(w_instance("base"));
    misc_run(0, 0, run_command(entry.name).c_str());
}

}  // namespace dorn
