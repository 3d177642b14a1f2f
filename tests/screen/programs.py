#!/usr/bin/env python3
"""File lists between programs: on the clipboard, and dragged with the mouse.

programs.py PROGRAM [FOLDER], as working_day.py.
"""
import ctypes
import os
import signal

from day import FIRST_ROW, MAIN, OPERATIONS, ROW, main
from screen import Missing, wait

HOSTILE = "-\udcff 'a\nb'"  # a byte that is no UTF-8 in it
LIST = "application/x-ortransfiles"


def fill(day, **folders):
    for folder, names in folders.items():
        os.makedirs(day.at(folder), exist_ok=True)
        for name in names:
            day.write(f"{folder}/{name}", name.encode(errors="replace").decode())


def put(day, kind, text):
    """Another program puts that on the clipboard."""
    day.write("item", text)
    day.screen.start("xclip", "-quiet", "-i", "-selection", "clipboard", "-t", kind, day.at("item"))
    wait(f"{text!r} on the clipboard", lambda: day.screen.clipboard_as(kind) == text)


def expect(condition, what):
    if not condition:
        raise Missing(f"expected {what}")


def finish(day, process):
    process.terminate()
    wait("the program to end", lambda: process.poll() == 0)


def one_type(day):
    """Lists of programs that offer one type only."""
    fill(day, to=[])
    day.begin("to")
    name, uri = "\udcff", f"file://{day.at('from')}/%FF"
    for kind, text, moves in (("text/uri-list", uri, False),
                              ("x-special/mate-copied-files", "copy\n" + uri, False),
                              ("x-special/gnome-copied-files", "cut\n" + uri, True)):
        fill(day, **{"from": [name]})
        put(day, kind, text)
        day.screen.key("ctrl+v")
        day.expect_file("to/" + name, "?")
        day.expect_done()
        expect(os.path.exists(day.at("from/" + name)) != moves, f"{kind} to move: {moves}")
        os.unlink(day.at("to/" + name))
    finish(day, day.process)


def outlives(day):
    """A list stays when the program has ended, until another program takes the clipboard."""
    names = [f"{number:200}" for number in range(400)] + [HOSTILE]  # sent in more than one piece
    fill(day, many=names)
    day.begin("many")

    def contents():
        return [day.screen.clipboard_as(kind) for kind in
                ("text/uri-list", LIST, "x-special/gnome-copied-files", "UTF8_STRING")]
    day.screen.key("ctrl+a", "ctrl+c")
    wait("the list", lambda: LIST in day.screen.clipboard_as("TARGETS"))
    before = contents()
    finish(day, day.process)
    expect(len(before[0]) > 1 << 16 and contents() == before, "the list to stay")
    day.begin("to")
    day.screen.key("ctrl+v")
    wait("the files", lambda: len(os.listdir(day.at("to"))) == len(names))
    day.expect_file("to/" + HOSTILE, "-? 'a\nb'")
    day.expect_done()
    put(day, "UTF8_STRING", "newer")
    finish(day, day.process)


def newer(day):
    """A newer clipboard is not emptied at the end of a move."""
    fill(day, cut=map(str, range(2000)), there=[])
    day.begin("cut")
    day.screen.key("ctrl+a", "ctrl+x")
    wait("the list", lambda: LIST in day.screen.clipboard_as("TARGETS"))
    first = day.process
    day.begin("there")
    day.screen.key("ctrl+v")
    wait("the move", lambda: os.listdir(day.at("there")))
    day.process.send_signal(signal.SIGSTOP)
    expect(os.listdir(day.at("cut")), "a move that is not over")
    put(day, "UTF8_STRING", "newer")
    day.process.send_signal(signal.SIGCONT)
    wait("the move's end", lambda: not os.listdir(day.at("cut")))
    finish(day, day.process)  # once it has done all that the move left to do
    expect(day.screen.clipboard_as("UTF8_STRING") == "newer", "the newer clipboard")
    finish(day, first)


class HungOwner:
    """A client of the X server that owns selections and never answers for them."""

    def __init__(self, day, *selections):
        self.x = ctypes.CDLL("libX11.so.6")
        self.x.XOpenDisplay.restype = ctypes.c_void_p
        self.display = ctypes.c_void_p(self.x.XOpenDisplay(day.screen.environment["DISPLAY"].encode()))
        root = self.x.XDefaultRootWindow(self.display)
        self.window = self.x.XCreateSimpleWindow(self.display, root, 0, 0, 1, 1, 0, 0, 0)
        for name in selections:
            self.x.XSetSelectionOwner(self.display, self.atom(name), self.window, 0)
        self.x.XSync(self.display, 0)

    def atom(self, name):
        return self.x.XInternAtom(self.display, name, 0)

    def owns(self, name):
        return self.x.XGetSelectionOwner(self.display, self.atom(name)) == self.window

    def end(self):
        """As the server sees the end of a process that is killed."""
        self.x.XCloseDisplay(self.display)


def hung(day):
    """An owner or a manager that hangs does not hold up the window."""
    fill(day, one=["a"])
    day.begin("one")
    owner = HungOwner(day, b"CLIPBOARD", b"CLIPBOARD_MANAGER")
    day.screen.key("ctrl+v", "alt+e", "Escape", "Escape", "ctrl+a", "ctrl+c")
    wait("a copy at once", lambda: not owner.owns(b"CLIPBOARD"), 2)
    killed = HungOwner(day, b"CLIPBOARD")
    day.screen.key("ctrl+v")
    killed.end()  # while it is asked
    day.screen.key("ctrl+x")
    wait("a list at once", lambda: LIST in day.screen.clipboard_as("TARGETS"), 2)
    expect(os.listdir(day.at("one")) == ["a"], "nothing pasted")
    day.process.terminate()  # the toolkit waits five seconds for the manager
    wait("no window at once", lambda: not day.screen.window(MAIN), 2)
    owner.end()
    wait("the program to end", lambda: day.process.poll() == 0)


def drag(day, *way, rest=1.0, ctrl=False, selected=False):
    """From the first place to the last: each a window and a row. It takes over a second from its
    start with the rest. Of two places the first one's row is selected before; of three it is a sweep
    to the second that becomes the drag."""
    places = []
    for window, row in way:
        at = day.screen.output("xdotool", "mousemove", "--window", window, "0", "0", "getmouselocation")
        x, y = (int(word[2:]) for word in at.split()[:2])
        places.append((x + 300, y + FIRST_ROW + row * ROW))

    def move(x, y):
        return f"mousemove {x} {y} "
    words = move(*places[0])
    if len(places) == 2 and not selected:
        words += "click 1 sleep 0.6 "  # the rest makes it no double click
    words += "mousedown 1 "
    if len(places) == 3:
        words += move(*places[1])
    (x, y), (end_x, end_y) = places[-2:]
    for step in range(1, 9):
        words += "sleep 0.06 " + move(x + (end_x - x) * step // 8, y + (end_y - y) * step // 8)
        if step == 1 and ctrl:
            words += "keydown ctrl "
    words += f"sleep {rest} mouseup 1" + (" keyup ctrl" if ctrl else "")
    day.screen.output("xdotool", *words.split())


UP, A, B, C, D, FOLDER, EMPTY = 0, 1, 2, 3, 4, 5, 12  # rows of the list


def arrives(day, there, gone):
    wait(f"{there} to arrive", lambda: os.path.exists(day.at(there)))
    day.expect_gone(gone)
    wait("the operation to end", lambda: not day.screen.window(OPERATIONS))
    day.rest()


def drag_within(day):
    fill(day, **{"here/dir": [], "here": "abcd", "other": "x"})
    day.begin("here", "-x5", "-y25", "-w500", "-h500")
    here = day.screen.active_window()
    drag(day, (here, C), (here, FOLDER), rest=0.05)  # within a second of its start it is no drop
    drag(day, (here, C), (here, EMPTY))              # it is there already
    day.rest()
    expect(not os.listdir(day.at("here/dir")), "no drop")
    drag(day, (here, C), (here, FOLDER), ctrl=True)
    day.expect_file("here/dir/c", "c")
    day.expect_done()
    expect(os.path.exists(day.at("here/c")), "a copy")
    day.screen.click(300, FIRST_ROW + A * ROW)
    day.screen.key("shift+Down")
    drag(day, (here, A), (here, UP), selected=True)
    arrives(day, "a", "here/a")
    arrives(day, "b", "here/b")


def drag_between(day):
    here = day.screen.active_window()
    fill(day, here="ab")
    day.begin("other", "-x520", "-y25", "-w490", "-h500")
    other = day.screen.active_window()
    drag(day, (other, 1), (here, EMPTY))
    arrives(day, "here/x", "other/x")
    drag(day, (here, D), (other, EMPTY))
    arrives(day, "other/d", "here/d")
    drag(day, (here, B), (here, C), (other, C))
    arrives(day, "other/b", "here/b")
    arrives(day, "other/c", "here/c")


main((one_type, outlives, newer, hung, drag_within, drag_between))
