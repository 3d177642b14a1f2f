#!/usr/bin/python3
"""What a screen reader is told: the windows of a running dorn, read over the accessibility bus.

Called with the program's path. Starts an X server, a message bus and the accessibility bus of its
own. Exit status 0: all is well; 77: something that it needs is not installed.
"""
import os
import shutil
import subprocess
import sys
import tempfile
import time

NEEDED = ("Xvfb", "openbox", "dbus-run-session", "xdotool")
LAUNCHER = "/usr/libexec/at-spi-bus-launcher"
PATIENCE = 12  # seconds

# Names are wanted of what can be used; roles of what may stand without one.
CONTROLS = {"push button", "toggle button", "check box", "radio button", "text", "combo box",
            "table", "tree", "tree table", "menu item", "check menu item", "radio menu item", "menu", "list", "progress bar",
            "slider", "spin button", "page tab", "column header", "password text"}
ACTIVE = {"push button", "toggle button", "check box", "radio button", "menu item",
          "check menu item"}

faults = []
events = []  # kind and name of the source


def check(condition, text):
    if not condition:
        faults.append(text)


def wait_for(what, condition):
    end = time.monotonic() + PATIENCE
    while time.monotonic() < end:
        found = condition()
        if found:
            return found
        time.sleep(0.1)
    raise TimeoutError(f"{what} did not come in {PATIENCE} seconds")


def set_up(program):
    """Runs this script again inside a screen and a bus of its own."""
    if any(shutil.which(tool) is None for tool in NEEDED) or not os.path.exists(LAUNCHER):
        sys.exit(77)
    with tempfile.TemporaryDirectory() as home:
        os.makedirs(home + "/.or/dorn")
        os.makedirs(home + "/runtime", mode=0o700)
        number, write_end = os.pipe()
        server = subprocess.Popen(
            ["Xvfb", "-displayfd", str(write_end), "-screen", "0", "1000x800x24", "-nolisten",
             "tcp"], pass_fds=[write_end], stderr=subprocess.DEVNULL)
        os.close(write_end)
        display = ":" + os.fdopen(number).readline().strip()
        environment = dict(os.environ, DISPLAY=display, HOME=home, QT_QPA_PLATFORM="xcb",
                           XDG_RUNTIME_DIR=home + "/runtime", GTK_MODULES="", NO_AT_BRIDGE="1",
                           QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1", LC_ALL="C.UTF-8")
        for name in ("WAYLAND_DISPLAY", "DBUS_SESSION_BUS_ADDRESS", "AT_SPI_BUS_ADDRESS"):
            environment.pop(name, None)
        manager = subprocess.Popen(["openbox", "--sm-disable", "--startup", f"touch {home}/managed"],
                                   env=environment, stderr=subprocess.DEVNULL)
        try:
            wait_for("the window manager", lambda: os.path.exists(home + "/managed"))
            return subprocess.run(["dbus-run-session", "--", sys.executable, __file__, program,
                                   "inside"], env=environment, timeout=150, check=False).returncode
        finally:
            for process in (manager, server):
                process.terminate()
                process.wait()


def walk(node, depth=0):
    """The node and all below it that are on the screen; of a table only the first rows."""
    yield node
    if depth > 20:
        return
    for i in range(min(node.childCount, 60)):
        child = node.getChildAtIndex(i)
        if child is not None:
            yield from walk(child, depth + 1)


def showing(node):
    return node.getState().contains(pyatspi.STATE_SHOWING)


def find(root, role, name=None):
    for node in walk(root):
        if node.getRoleName() == role and (name is None or node.name == name):
            return node
    return None


def is_named(node):
    labelled = any(relation.getRelationType() == pyatspi.RELATION_LABELLED_BY
                   for relation in node.getRelationSet())
    return bool(node.name.strip()) or labelled


def check_controls(window):
    """Every control in sight has a role and a name, and an action where it is one."""
    count = 0
    for node in walk(window):
        role = node.getRoleName()
        below = "" if node.parent is None else node.parent.getRoleName()
        # (The toolkit has no word for the handle of a split pane.)
        check(role not in ("invalid", "unknown") or below == "split pane",
              f"{window.name}: {node.name!r} below {below} is {role}")
        if role not in CONTROLS or not showing(node) or (role, below) == ("list", "combo box"):
            continue
        count += 1
        check(is_named(node), f"{window.name}: a {role} without a name, "
                              f"below {node.parent.getRoleName()} {node.parent.name!r}")
        if role in ACTIVE:
            enabled = node.getState().contains(pyatspi.STATE_ENABLED)
            check(actions(node) or not enabled, f"{window.name}: {node.name} can't be used")
    return count


def actions(node):
    try:
        action = node.queryAction()
    except NotImplementedError:
        return []
    return [action.getName(i) for i in range(action.nActions)]


def act(node, name):
    index = actions(node).index(name)
    node.queryAction().doAction(index)


def key(*keys):
    subprocess.run(["xdotool", "key", *keys], check=True)


def check_list(window):
    """Rows with their columns, the selected state, an event for each change of it."""
    files = find(window, "table", "Files")
    check(files is not None, "there is no table of files")
    table = files.queryTable()
    check((table.nRows, table.nColumns) == (4, 7), f"{table.nRows} rows, {table.nColumns} columns")
    titles = [table.getColumnDescription(column) for column in range(7)]
    check(titles[0] == "Filename" and titles[6] == "Link", f"titles are {titles}")
    names = [table.getAccessibleAt(row, 0).name for row in range(4)]
    check(sorted(names) == ["..", "directory", "one", "two"], f"the rows are {names}")
    row = names.index("one")
    cell = table.getAccessibleAt(row, 0)
    check(table.getAccessibleAt(row, 1).name == "3", "the size of a file of 3 bytes")
    check(cell.description == "file", f"described as {cell.description!r}")
    check(not cell.getState().contains(pyatspi.STATE_SELECTED), "selected from the start")
    act(cell, "SetFocus")
    wait_for("an event of the current row", lambda: heard("focus", "one"))
    act(cell, "Toggle")
    wait_for("the selected state", lambda: cell.getState().contains(pyatspi.STATE_SELECTED))
    check(list(table.getSelectedRows()) == [row], f"selected: {table.getSelectedRows()}")
    wait_for("an event of the selection", lambda: heard("state-changed:selected", "one"))


def heard(kind, name):
    """Whether such an event has come from an object of that name."""
    GLib.timeout_add(50, pyatspi.Registry.stop)
    pyatspi.Registry.start()
    return any(kind in event_kind and name == source for event_kind, source in events)


def check_menus(window):
    bar = find(window, "menu bar")
    menus = [bar.getChildAtIndex(i) for i in range(bar.childCount)]
    check([menu.name for menu in menus] == ["File", "Edit", "Go", "Bookmarks", "Help"],
          f"menus are {[menu.name for menu in menus]}")


def check_window(application, opening, title):
    """Opens a window, reads it, and closes it by Escape."""
    before = application.childCount
    opening()
    wait_for(f"the window {title}", lambda: application.childCount > before)
    window = application.getChildAtIndex(application.childCount - 1)
    wait_for(f"the contents of {title}", lambda: showing(window))
    wait_for(f"the keyboard in {title}",
             lambda: window.getState().contains(pyatspi.STATE_ACTIVE))
    check(window.name == title, f"{window.name!r} opens instead of {title!r}")
    check(check_controls(window) > 0, f"{title}: nothing in it")
    key("Escape")
    wait_for(f"the end of {title}", lambda: application.childCount <= before)


def check_dialogs(application, window):
    for title, keys in DIALOGS:
        check_window(application, lambda keys=keys: key(keys), title)
    about = find(window, "menu item", "About")
    check_window(application, lambda: act(about, "Press"), "About DORN")


def check_operation(application, window):
    """A copy that asks a question: the question, and a progress bar with a value."""
    files = find(window, "table", "Files")
    names = [files.queryTable().getAccessibleAt(row, 0) for row in range(4)]
    one = next(cell for cell in names if cell.name == "one")
    if not one.getState().contains(pyatspi.STATE_SELECTED):
        act(one, "Toggle")
    wait_for("the selected state", lambda: one.getState().contains(pyatspi.STATE_SELECTED))
    key("ctrl+c")
    act(next(cell for cell in names if cell.name == "directory"), "Press")
    wait_for("the directory", lambda: files.queryTable().nRows == 2)
    before = application.childCount
    key("ctrl+v")
    wait_for("the question", lambda: application.childCount >= before + 2)
    bars = 0
    for other in list(application)[before:]:
        wait_for("the contents of a window", lambda other=other: showing(other))
        check(check_controls(other) > 0, f"{other.name}: nothing in it")
        bar = find(other, "progress bar")
        if bar is not None:
            bars += 1
            value = bar.queryValue()
            check(value.minimumValue <= value.currentValue <= value.maximumValue, "progress")
    check(bars == 1, f"{bars} progress bars")


DIALOGS = (
    ("File Information", "F9"),
    ("Preferences", "F10"),
    ("Associate", "F11"),
    ("Open With", "shift+Return"),
    ("Create New File", "F3"),
    ("Create New Folder", "F4"),
    ("Select Pattern", "ctrl+s"),
    ("Quick Reference", "F1"),
)


def inside(program):
    home = os.environ["HOME"] + "/files"
    os.makedirs(home + "/directory")
    for name in ("one", "two"):
        with open(f"{home}/{name}", "w", encoding="ascii") as file:
            file.write("abc")
    shutil.copy(home + "/one", home + "/directory")
    launcher = subprocess.Popen([LAUNCHER, "--launch-immediately"])
    child = subprocess.Popen([program, home])
    try:
        pyatspi.Registry.registerEventListener(
            lambda event: events.append((str(event.type), event.source.name)),
            "object:selection-changed", "object:state-changed:selected",
            "object:state-changed:focused", "focus:")
        desktop = pyatspi.Registry.getDesktop(0)
        application = wait_for("dorn", lambda: next(
            (node for node in desktop if node is not None and node.name == "dorn"), None))
        window = wait_for("the main window", lambda: find(application, "frame"))
        wait_for("the list", lambda: find(window, "table", "Files"))
        check(check_controls(window) > 20, "too few controls")
        check_menus(window)
        check_list(window)
        check_dialogs(application, window)
        check_operation(application, window)
    except TimeoutError as late:
        faults.append(str(late))
    finally:
        child.terminate()
        child.wait()
        launcher.terminate()
        launcher.wait()
    for fault in faults:
        print(fault, file=sys.stderr)
    return 1 if faults else 0


if __name__ == "__main__":
    if sys.argv[2:] != ["inside"]:
        sys.exit(set_up(sys.argv[1]))
    import pyatspi
    from gi.repository import GLib
    sys.exit(inside(sys.argv[1]))
