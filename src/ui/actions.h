// Named actions, key bindings in named sections, and the widgets linked to a section.
//
// A key press in a linked widget is looked up in the widget's section; when it is bound, every
// callback of the bound action runs. Bindings can be kept in a text file. Records live for the
// whole run. Event-loop thread only.
#pragma once

#include "ui/key_event.h"
#include "ui/widget.h"

#include <cstdint>

namespace dorn {

using ActionCallback = int (*)(Widget* widget, void* data, const KeyEvent* info);

/// Adds `callback` to the action of that name, made when missing; a second time changes nothing.
/// Returns 0.
int ac_register(const char* action, ActionCallback callback);

/// Links `widget` to the section of that name, made when missing; a widget has one link. Returns 0.
int ac_link_widget(Widget* widget, const char* section);

/// Removes the widget's link.
void ac_unlink_widget(Widget* widget);

/// Binds a key in a section to an action, all made when missing. The first binding of an action in
/// a section is its active one. Returns 0.
int kb_attach(const char* action, const char* section, uint32_t modifiers, uint32_t key);

/// Makes that binding the action's active one in the section. 0, or -1 when there is no such
/// action, section, key group or binding.
int kb_set_default(const char* action, const char* section, uint32_t modifiers, uint32_t key);

/// `text` when the action has an active binding in the section, else null. No text is composed.
char* kb_get_accel_text(const char* action, const char* section, char* text);

/// Runs the callbacks of the action bound to the key in the widget's section. 1 when the key was
/// bound, else 0. Only first presses of keys with a valid symbol count.
int kb_process(Widget* widget, void* data, const KeyEvent* info);

/// Writes or reads the bindings; the path is `dir` + "/" + `name`, or `name` alone with a null
/// `dir`. 0, or -1 when the file can't be opened or both are null.
int kb_save(const char* dir, const char* name);
int kb_load(const char* dir, const char* name);

/// Where actions and default bindings are registered; the program has none of its own.
void init_actions();
void init_kb_defaults();

}  // namespace dorn
