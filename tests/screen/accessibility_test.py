#!/usr/bin/python3
"""What a screen reader is told, and that the program can be used through it alone.

accessibility_test.py PROGRAM x11|wayland: starts a message bus, the accessibility bus, an X server
with a window manager and, for wayland, a compositor in a window of that. Nothing may be said on
standard error, also of the window position that Wayland does not have. Exit status 0: all is well;
77: something that it needs is not installed.
"""
import os
import shutil
import subprocess
import sys
import tempfile

from screen import Screen, wait

LAUNCHER = "/usr/libexec/at-spi-bus-launcher"
NEEDED = ("dbus-run-session", "Xvfb", "openbox", "xdotool")

# Names are wanted of what can be used; roles of what may stand without one.
ACTIVE = {"push button", "toggle button", "check box", "radio button", "menu item"}
CONTROLS = ACTIVE | {"text", "combo box", "table", "tree", "tree table", "list", "progress bar",
                     "slider", "spin button", "page tab", "column header"}
DIALOGS = (  # title, where in the menus, the button that closes it
    ("Create New File", "File/New/File", "Cancel"),
    ("Create New Folder", "File/New/Folder", "Cancel"),
    ("Open With", "File/Open With...", "Cancel"),
    ("File Information", "File/Inspect...", "Cancel"),
    ("Select Pattern", "Edit/Select/Pattern", "Cancel"),
    ("Preferences", "Edit/Preferences...", "Cancel"),
    ("Quick Reference", "Help/Quick Reference", "Close"),
    ("About DORN", "Help/About", "Done"),
)
KEYS = {"Window": "Ctrl-N", "Open": "Ret", "Inspect...": "F9", "Cut": "Ctrl-X", "Delete": "Del",
        "Back": "Alt-<-", "Quick Reference": "F1", "About": ""}

PLATFORM = sys.argv[2]
faults = []
events = []  # kind and name of the source


def check(condition, text):
    if not condition:
        faults.append(text)


# Of an accessible object.
def walk(node, depth=0):
    """The node and all below it; of a table only the first rows."""
    yield node
    for i in range(min(node.childCount, 60) if depth < 20 else 0):
        child = node.getChildAtIndex(i)
        if child is not None:
            yield from walk(child, depth + 1)


def find(root, roles, name=None):
    """The first that there is; none while a window goes, and its objects with it."""
    try:
        return next((node for node in walk(root)
                     if node.getRoleName() in roles and name in (None, node.name)), None)
    except GLib.GError:
        return None


def has(node, state):
    return node.getState().contains(getattr(pyatspi, "STATE_" + state))


def actions(node):
    try:
        action = node.queryAction()
    except NotImplementedError:
        return []
    return [action.getName(i) for i in range(action.nActions)]


def act(node, name):
    node.queryAction().doAction(actions(node).index(name))


def press(root, label):
    button = wait(f"a button {label}", lambda: find(root, ACTIVE, label))
    act(button, actions(button)[0])


def check_controls(window):
    """Every control in sight has a role and a name, and an action where it is one."""
    count = 0
    for node in walk(window):
        role = node.getRoleName()
        below = "" if node.parent is None else node.parent.getRoleName()
        # (The toolkit has no word for the handle of a split pane.)
        check(role not in ("invalid", "unknown") or below == "split pane",
              f"{window.name}: {node.name!r} below {below} is {role}")
        if role not in CONTROLS or not has(node, "SHOWING") or (role, below) == ("list", "combo box"):
            continue
        count += 1
        labelled = any(relation.getRelationType() == pyatspi.RELATION_LABELLED_BY
                       for relation in node.getRelationSet())
        check(node.name.strip() or labelled,
              f"{window.name}: a {role} without a name, below {below} {node.parent.name!r}")
        if role in ACTIVE:
            check(actions(node) or not has(node, "ENABLED"), f"{window.name}: {node.name} can't be used")
    check(count > 0, f"{window.name}: nothing in it")


def heard(kind, name):
    GLib.timeout_add(50, pyatspi.Registry.stop)
    pyatspi.Registry.start()
    return any(kind in event_kind and name == source for event_kind, source in events)


def entry(menu, name):
    return next((node for node in menu if node and node.name == name and has(node, "ENABLED")), None)


class Dorn:
    """A running dorn, as a screen reader sees it."""

    def __init__(self):
        desktop = pyatspi.Registry.getDesktop(0)
        self.application = wait("dorn", lambda: next(
            (node for node in desktop if node is not None and node.name == "dorn"), None))
        self.window = wait("the main window", lambda: find(self.application, {"frame"}))
        self.files = wait("the list", lambda: find(self.window, {"table"}, "Files"))

    def cell(self, name):
        table = self.files.queryTable()
        return wait(f"a row {name}", lambda: next(
            (cell for cell in (table.getAccessibleAt(row, 0) for row in range(table.nRows))
             if cell.name == name), None))

    def choose(self, path):
        """Opens the menus of the path one after the other, and uses its last part.

        A Wayland compositor lets only a key or the mouse open menus: there they stay closed.
        """
        wait("the keyboard", lambda: has(self.window, "ACTIVE"))
        menu = find(self.window, {"menu bar"})
        *menus, last = path.split("/")
        for name in menus:
            item = wait(f"{name} of {path}", lambda name=name: entry(menu, name))
            menu = item.getChildAtIndex(0)
            if PLATFORM == "x11":
                act(item, "ShowMenu")
                wait(f"the menu {name}", lambda: has(menu, "SHOWING"))
        act(wait(path, lambda: entry(menu, last)), "Press")

    def shown(self):
        """The windows by their titles; one may close while they are asked for."""
        return {node.name: node for node in self.application if node and has(node, "SHOWING")}

    def opened(self, title):
        window = wait(f"the window {title}", lambda: self.shown().get(title))
        check_controls(window)
        return window

    def close(self, window, button="Cancel"):
        title = window.name
        press(window, button)
        wait(f"the end of {title}", lambda: title not in self.shown())


def check_menus(dorn):
    found = {node.name: node.queryAction().getKeyBinding(0)
             for node in walk(find(dorn.window, {"menu bar"})) if node.name in KEYS}
    check(found == KEYS, f"keys are {found}")


def check_list(dorn):
    """Rows with their columns, the selected state, an event for each change of it."""
    table = dorn.files.queryTable()
    check((table.nRows, table.nColumns) == (5, 7), f"{table.nRows} rows, {table.nColumns} columns")
    titles = [table.getColumnDescription(column) for column in range(7)]
    check(titles[0] == "Filename" and titles[6] == "Link", f"titles are {titles}")
    cell = dorn.cell("one")
    row = [table.getAccessibleAt(row, 0).name for row in range(5)].index("one")
    check(table.getAccessibleAt(row, 1).name == "3", "the size of a file of 3 bytes")
    check(cell.description == "file", f"described as {cell.description!r}")
    check(not has(cell, "SELECTED"), "selected from the start")
    act(cell, "SetFocus")
    wait("an event of the current row", lambda: heard("focus", "one"))
    act(cell, "Toggle")
    wait("the selected state", lambda: has(cell, "SELECTED"))
    check(list(table.getSelectedRows()) == [row], f"selected: {table.getSelectedRows()}")
    wait("an event of the selection", lambda: heard("selected1", "one"))


def check_keys(dorn, screen):
    """The arrow keys: each row that they come to, and what becomes of its selection."""
    events.clear()
    screen.key("Down")
    for kind, name in (("focused1", "two"), ("selected0", "one"), ("selected1", "two")):
        wait(f"{kind} of {name}", lambda: heard(kind, name))


def check_symlink(dorn, screen):
    """The context menu, by the arrow keys: each entry that they come to."""
    screen.key("Menu")
    wait("an event of the context menu", lambda: screen.key("Down") or heard("focused1", "Symlink"))
    screen.key("Return")
    dorn.close(dorn.opened("Create a symlink..."))


def check_associations(dorn):
    dorn.choose("Edit/Associations...")
    associations = dorn.opened("Associate")
    press(associations, "Add...")
    dorn.close(dorn.opened("New Association Type"))
    dorn.close(associations)


def check_operation(dorn, home):
    """A copy to a typed directory, paused and cancelled: its progress, its state, its question."""
    for name in ("two", "big"):
        act(dorn.cell(name), "Toggle")
    dorn.choose("Edit/Copy To/Other...")
    prompt = dorn.opened("Copy to")
    find(prompt, {"text"}).queryEditableText().setTextContents(home + "/directory")
    press(prompt, "OK")
    press(wait("the operation", lambda: dorn.shown().get("DORN: File Operations")), "Pause")
    operations = dorn.opened("DORN: File Operations")
    wait("the word that it is paused", lambda: find(operations, {"label"}, "Paused"))
    bar = find(operations, {"progress bar"}, "Progress").queryValue()
    check(bar.minimumValue <= bar.currentValue <= bar.maximumValue, f"progress {bar.currentValue}")
    press(operations, "Cancel")
    dorn.close(dorn.opened("File Operation"), "Yes")
    wait("the end of the operation", lambda: len(dorn.shown()) == 1)


def use(screen, home):
    dorn = Dorn()
    check_controls(dorn.window)
    check_menus(dorn)
    check_list(dorn)
    check_keys(dorn, screen)
    for title, path, button in DIALOGS if PLATFORM == "x11" else DIALOGS[:1]:
        dorn.choose(path)
        dorn.close(dorn.opened(title), button)
    if PLATFORM == "x11":
        check_symlink(dorn, screen)
        check_associations(dorn)
        check_operation(dorn, home)
    dorn.choose("File/Exit")


def start_compositor(screen, environment):
    """A Wayland compositor in a window of the X server, whose keyboard it has."""
    screen.start("weston", "--backend=x11-backend.so", "--socket=test", "--idle-time=0",
                 "--no-config")
    wait("the compositor", lambda: os.path.exists(environment["XDG_RUNTIME_DIR"] + "/test"))
    # The toolkit's plugin is unloaded before leaks are looked for, so that what it keeps has no name
    # left that a suppression could match.
    return environment | {"DISPLAY": "", "WAYLAND_DISPLAY": "test", "QT_QPA_PLATFORM": "wayland",
                          "XDG_ACTIVATION_TOKEN": "token", "ASAN_OPTIONS": "detect_leaks=0"}


def run(program, home):
    files = home + "/files"
    os.makedirs(files + "/big")
    os.makedirs(files + "/directory")
    for name in ("one", "two"):
        with open(f"{files}/{name}", "w", encoding="ascii") as file:
            file.write("abc")
    with open(files + "/big/0", "wb") as file:
        file.truncate(64 << 20)
    for number in range(1, 100):
        os.link(files + "/big/0", f"{files}/big/{number}")
    launcher = subprocess.Popen([LAUNCHER, "--launch-immediately"], stderr=subprocess.DEVNULL)
    screen = Screen(home, home + "/log")
    environment = screen.environment
    if PLATFORM == "wayland":
        environment = start_compositor(screen, environment)
    with open(home + "/errors", "w", encoding="utf-8") as errors:
        child = subprocess.Popen([program, "-x10", "-y10", files], env=environment, stderr=errors)
    try:
        pyatspi.Registry.registerEventListener(
            lambda event: events.append((f"{event.type}{event.detail1}", event.source.name)),
            "object:state-changed:selected", "object:state-changed:focused")
        use(screen, files)
        check(child.wait(30) == 0, f"ends with status {child.returncode}")
    finally:
        child.kill()
        child.wait()
        screen.end()
        launcher.terminate()
        launcher.wait()
        with open(home + "/errors", encoding="utf-8") as errors:
            check(not (said := errors.read()), f"on standard error: {said}")
        print(*faults, sep="\n", file=sys.stderr)
    return 1 if faults else 0


def main(program, _, *home):
    if home:
        return run(program, *home)
    needed = NEEDED + (("weston",) if PLATFORM == "wayland" else ())
    if any(shutil.which(tool) is None for tool in needed) or not os.path.exists(LAUNCHER):
        return 77
    with tempfile.TemporaryDirectory() as home:
        os.makedirs(home + "/.or/dorn")
        os.makedirs(home + "/runtime", mode=0o700)
        environment = dict(os.environ, HOME=home, XDG_RUNTIME_DIR=home + "/runtime",
                           GTK_MODULES="", NO_AT_BRIDGE="1", QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1",
                           LC_ALL="C.UTF-8")
        for name in ("DISPLAY", "WAYLAND_DISPLAY", "DBUS_SESSION_BUS_ADDRESS", "AT_SPI_BUS_ADDRESS"):
            environment.pop(name, None)
        return subprocess.run(["dbus-run-session", "--", sys.executable, "-B", __file__, program,
                               PLATFORM, home], env=environment, timeout=140, check=False).returncode


if __name__ == "__main__":
    if len(sys.argv) == 4:
        import pyatspi
        from gi.repository import GLib
    sys.exit(main(*sys.argv[1:]))
