// The records behind actions.h, shared by the registry and its file.
//
// Everything is put in front of its list and lives for the whole run, so addresses are stable and a
// callback may register more while callbacks run.
#pragma once

#include "ui/actions.h"

#include <cstdint>
#include <forward_list>
#include <string>

namespace dorn {

struct Action {
    std::string name;
    std::forward_list<ActionCallback> callbacks;
};

inline constexpr uint32_t kBindingActive = 0x1;  // the action's active binding in its section

struct KeyBinding {
    uint32_t key;  // cap code
    uint32_t flags = 0;
    Action* action = nullptr;
};

struct KeyGroup {
    uint32_t modifiers;
    std::forward_list<KeyBinding> bindings;
};

struct KeySection {
    std::string name;
    std::forward_list<KeyGroup> groups;
};

struct SectionLink {
    KeySection* section;
    Widget* widget;
};

extern std::forward_list<Action> gActions;
extern std::forward_list<KeySection> gSections;
extern std::forward_list<SectionLink> gLinks;

}  // namespace dorn
