// Opaque handles of the screen's widgets.
//
// Engine code names a widget by its instance name, the name it has in its layout, and hands the
// handle on to the functions of this folder; only these know what is behind it. A handle may be
// null (the widget does not exist, or there is no screen): every function here takes that.
#pragma once

namespace dorn {

struct Widget;

/// The widget with that instance name, null while there is none. Event-loop thread only.
Widget* w_instance(const char* name);

}  // namespace dorn
