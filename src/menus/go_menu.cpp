// The Go menu.
#include "dirmodel/dir_entry.h"
#include "filelist/navigation.h"
#include "menus/commands.h"
#include "menus/toolbar.h"

#include <cstdlib>
#include <cstring>

namespace dorn {

const char* home_directory() {
    const char* home = std::getenv("HOME");
    return home != nullptr && *home != '\0' ? home : nullptr;
}

int gm_back() {
    fl_back();
    return 0;
}

int gm_forward() {
    fl_forward();
    return 0;
}

int gm_up() {
    fl_up();
    return 0;
}

int gm_home() {
    if (const char* home = home_directory()) fl_newpath(nullptr, home);
    return 0;
}

void gm_setup(MenuStates& states) {
    if (fl_get_back_count() == 0) states.disable("gm_back");
    if (fl_get_forward_count() == 0) states.disable("gm_forward");
    if (gDir == nullptr) return;
    if (gDir->path == "/") states.disable("gm_up");
    const char* home = home_directory();
    if (home != nullptr && gDir->path == home) states.disable("gm_home");
}

}  // namespace dorn
