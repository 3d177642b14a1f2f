// The bus interface org.freedesktop.FileManager1, by which other programs have folders and files
// shown: each call opens windows of their own. Event-loop thread only.
#pragma once

namespace dorn {

/// Offers the interface on the session bus, soon, and queues for its well-known name; does nothing
/// where there is no bus. Never waits. What is offered goes with the process.
void file_manager_dbus_start();

}  // namespace dorn
