#include "ui/actions.h"

#include "ui/action_records.h"

#include <algorithm>

namespace dorn {

std::forward_list<Action> gActions;
std::forward_list<KeySection> gSections;
std::forward_list<SectionLink> gLinks;

namespace {

// The first record of `list` for which `wanted` holds; null when there is none.
template <class Record, class Predicate>
Record* find_record(std::forward_list<Record>& list, Predicate wanted) {
    const auto found = std::find_if(list.begin(), list.end(), wanted);
    return found == list.end() ? nullptr : &*found;
}

template <class Record>
Record* find_named(std::forward_list<Record>& list, const char* name) {
    return find_record(list, [name](const Record& record) { return record.name == name; });
}

template <class Record>
Record& find_or_make_named(std::forward_list<Record>& list, const char* name) {
    if (Record* found = find_named(list, name)) return *found;
    return list.emplace_front(Record{name, {}});
}

Action& x_add_action(const char* name) {
    return find_or_make_named(gActions, name);
}

KeySection& x_add_section(const char* name) {
    return find_or_make_named(gSections, name);
}

KeyGroup* find_group(KeySection& section, uint32_t modifiers) {
    return find_record(section.groups,
                       [=](const KeyGroup& group) { return group.modifiers == modifiers; });
}

KeyBinding* find_binding(KeyGroup& group, uint32_t key) {
    return find_record(group.bindings,
                       [=](const KeyBinding& binding) { return binding.key == key; });
}

KeyBinding* find_active(KeySection& section, const Action& action) {
    for (KeyGroup& group : section.groups) {
        KeyBinding* active = find_record(group.bindings, [&](const KeyBinding& binding) {
            return binding.action == &action && (binding.flags & kBindingActive) != 0;
        });
        if (active != nullptr) return active;
    }
    return nullptr;
}

SectionLink* find_link(const Widget* widget) {
    return find_record(gLinks, [=](const SectionLink& link) { return link.widget == widget; });
}

}  // namespace

int ac_register(const char* action, ActionCallback callback) {
    std::forward_list<ActionCallback>& callbacks = x_add_action(action).callbacks;
    if (std::find(callbacks.begin(), callbacks.end(), callback) == callbacks.end())
        callbacks.push_front(callback);
    return 0;
}

int ac_link_widget(Widget* widget, const char* section) {
    KeySection& linked = x_add_section(section);
    if (SectionLink* link = find_link(widget))
        link->section = &linked;
    else
        gLinks.push_front({&linked, widget});
    return 0;
}

void ac_unlink_widget(Widget* widget) {
    gLinks.remove_if([widget](const SectionLink& link) { return link.widget == widget; });
}

int kb_attach(const char* action, const char* section, uint32_t modifiers, uint32_t key) {
    Action& bound = x_add_action(action);
    KeySection& in = x_add_section(section);
    KeyGroup* group = find_group(in, modifiers);
    if (group == nullptr) group = &in.groups.emplace_front(KeyGroup{modifiers, {}});
    KeyBinding* binding = find_binding(*group, key);
    if (binding == nullptr) binding = &group->bindings.emplace_front(KeyBinding{key});
    if (binding->action != &bound) binding->flags &= ~kBindingActive;
    binding->action = &bound;
    if (find_active(in, bound) == nullptr) binding->flags |= kBindingActive;
    return 0;
}

int kb_set_default(const char* action, const char* section, uint32_t modifiers, uint32_t key) {
    const Action* bound = find_named(gActions, action);
    KeySection* in = find_named(gSections, section);
    if (bound == nullptr || in == nullptr) return -1;
    KeyGroup* group = find_group(*in, modifiers);
    KeyBinding* binding = group == nullptr ? nullptr : find_binding(*group, key);
    if (binding == nullptr || binding->action != bound) return -1;
    if (KeyBinding* active = find_active(*in, *bound)) active->flags &= ~kBindingActive;
    binding->flags |= kBindingActive;
    return 0;
}

char* kb_get_accel_text(const char* action, const char* section, char* text) {
    const Action* bound = find_named(gActions, action);
    KeySection* in = find_named(gSections, section);
    const bool active = bound != nullptr && in != nullptr && find_active(*in, *bound) != nullptr;
    return active ? text : nullptr;
}

int kb_process(Widget* widget, void* data, const KeyEvent* info) {
    constexpr uint32_t kLooked = kKeyDown | kKeyRepeat | kKeySymValid;
    constexpr uint32_t kWanted = kKeyDown | kKeySymValid;
    static_assert(kLooked == 0x83 && kWanted == 0x81);
    if ((info->flags & kLooked) != kWanted) return 0;
    const SectionLink* link = find_link(widget);
    if (link == nullptr) return 0;
    KeyGroup* group = find_group(*link->section, info->modifiers);
    const KeyBinding* binding = group == nullptr ? nullptr : find_binding(*group, info->cap);
    if (binding == nullptr) return 0;
    for (const ActionCallback callback : binding->action->callbacks)
        callback(widget, data, info);
    return 1;
}

void init_actions() {}

void init_kb_defaults() {}

}  // namespace dorn
