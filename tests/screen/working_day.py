#!/usr/bin/env python3
"""One working day with the program: its real windows on a real X server, by keys and mouse.

working_day.py PROGRAM [FOLDER]: a step a function, in the order of the day, each checked on the disk
and in the files kept per user. With FOLDER a picture of the screen is put there after each step. The
step that fails says what it expected, leaves a picture in the working directory, and ends the day with
status 1.
"""
import os
import stat
import struct

from day import FIRST_ROW, MAIN, OPERATIONS, ROW, main
from screen import Missing, wait

NOTES = "one\ntwo\nthree\n"
BIG = 64 << 20  # bytes


def start(day):
    for number in (1, 2, 3):
        day.write(f"projects/report{number}.txt", f"report {number}\n")
    day.write("projects/notes.md", NOTES)
    day.write("projects/.plan", "hidden\n")
    day.begin("")
    mode = stat.S_IMODE(os.stat(day.at(".or/dorn")).st_mode)
    if mode != 0o700:
        raise Missing(f"expected a private .or/dorn, not mode {mode:o}")


def browse(day):
    day.screen.type("proj", "Return")
    day.shows("projects")
    day.screen.key("BackSpace")
    day.shows("")
    day.screen.key("alt+Left")
    day.shows("projects")
    day.go("archive")
    day.screen.key("ctrl+d", "F6")  # a bookmark, and home
    day.shows("")
    day.screen.click(300, FIRST_ROW + 2 * ROW, times=2)  # archive, projects
    day.shows("projects")


def search(day):
    day.screen.type("rep", "Escape")
    day.expect_selected("report1.txt")
    day.screen.type("/*3.txt", "Escape")
    day.expect_selected("report3.txt")
    day.screen.type(":cat report* >/dev/null && mv report2.txt second.txt", "Return")
    day.expect_gone("projects/report2.txt")
    day.screen.type(":mv second.txt report2.txt", "Return")
    day.expect_file("projects/report2.txt", "report 2\n")


def select_by_pattern(day):
    day.press("F5", "ctrl+s", window="Select Pattern")
    day.type("*.txt|*.md")
    day.expect_selected("notes.md", "report1.txt", "report2.txt", "report3.txt")


def copy(day):
    day.go("archive")
    day.screen.key("ctrl+v")
    for name in ("notes.md", "report1.txt", "report2.txt", "report3.txt"):
        day.expect_file("archive/" + name, day.read("projects/" + name))
    day.expect_done()
    day.write("archive/report1.txt", "mine\n")
    day.write("archive/report3.txt", "old\n")
    day.screen.key("ctrl+v")
    day.answer("Copy/Move", "o")  # notes.md: Overwrite
    day.answer("Copy/Move", "s")  # report1.txt: Skip
    day.answer("Copy/Move", "a")  # Overwrite All
    day.expect_done()
    day.expect_file("archive/report1.txt", "mine\n")
    day.expect_file("archive/report3.txt", "report 3\n")


def cancel(day):
    day.write("projects/old/0.img", "." * BIG)
    for number in range(1, 40):
        os.link(day.at("projects/old/0.img"), day.at(f"projects/old/{number}.img"))
    day.go("projects")
    day.select("old")
    day.expect_selected("old")
    day.go("archive")
    day.screen.key("ctrl+v")
    operations = wait("the window of operations", lambda: day.screen.window(OPERATIONS))
    wait("a copy under way", lambda: os.path.exists(day.at("archive/old/1.img")))
    day.screen.click(382, 22, window=operations)  # Cancel
    day.answer("File Operation", "y")
    day.expect_done()
    copies = os.listdir(day.at("archive/old"))
    sizes = {os.stat(day.at("archive/old/" + name)).st_size for name in copies}
    if len(copies) == 40 or not sizes <= {BIG}:
        raise Missing(f"expected whole copies of some of the files, not {copies} of {sizes} bytes")
    day.select("old")
    day.press("Delete", window="Delete")
    day.screen.key("Return")
    day.expect_gone("archive/old")
    day.expect_done()
    day.screen.key("Down")
    day.expect_selected("report1.txt")  # which has come to its row
    for number in range(40):
        os.unlink(day.at(f"projects/old/{number}.img"))


def move(day):
    day.go("projects")
    day.select("notes")
    day.screen.key("ctrl+x")
    day.go("projects/old")
    day.screen.key("ctrl+v")
    day.expect_gone("projects/notes.md")
    day.expect_file("projects/old/notes.md", NOTES)
    day.expect_done()
    day.write("archive/notes.md", "")
    day.select("notes")
    day.press("alt+e", "m", "Up", "Return", window="move")  # the last bookmark
    day.screen.key("Return")
    day.answer("Move", "o")
    day.expect_gone("projects/old/notes.md")
    day.expect_file("archive/notes.md", NOTES)
    day.expect_done()
    day.go("archive")
    day.select("report2")
    day.press("alt+e", "c", "o", window="Copy to")  # Copy To, "Other..."
    day.screen.type(day.at("projects/o"), "Tab", "Return")
    day.expect_file("projects/old/report2.txt", "report 2\n")
    day.expect_done()


def rename(day):
    day.go("projects")
    day.select("report1")
    day.press("F2", window="File Information")
    day.type("summary")  # the ending is not marked, so it stays
    day.expect_file("projects/summary.txt", "report 1\n")
    day.expect_gone("projects/report1.txt")
    day.select("summary")
    day.expect_selected("summary.txt")


def change_modes(day):
    day.press("ctrl+s", window="Select Pattern")
    day.type("*.txt")
    day.press("F9", window="File Information")
    day.press("Tab", "Tab", "Tab", "Tab", "Tab", "space", "Return")  # Exec of User
    for name in ("summary.txt", "report2.txt", "report3.txt"):
        mode = stat.S_IMODE(os.stat(day.at("projects/" + name)).st_mode)
        if mode != 0o744:
            raise Missing(f"expected {name} to be executable for its owner, not mode {mode:o}")


def link(day):
    day.screen.click(300, FIRST_ROW + 2 * ROW, button=3)  # old, report2.txt
    day.press("s", window="Create a symlink...")
    day.type("latest")
    if os.readlink(day.at("projects/latest")) != day.at("projects/report2.txt"):
        raise Missing("expected the link to lead to report2.txt")


def associate(day):
    day.press("F11", window="Associate")
    day.press("Insert", window="New Association Type")
    row = "*.md\tcp @ opened\tcp @ viewed\t"
    day.type(row, window="Associate")
    day.press("shift+Tab", "Return")  # Done
    if not day.read(".or/dorn/associate.003").endswith(f"\n{row}\n"):
        raise Missing(f"expected a last row {row!r} in associate.003")


def open_files(day):
    day.go("archive")
    day.select("notes")
    day.screen.key("Return")
    day.expect_file("archive/opened", NOTES)
    day.screen.key("alt+v")
    day.expect_file("archive/viewed", NOTES)
    day.press("shift+Return", window="Open With")
    day.type("sort -o sorted @")
    day.expect_file("archive/sorted", "one\nthree\ntwo\n")


def print_to_file(day):
    day.screen.key("ctrl+p")
    day.expect_file("../printed", NOTES)


def preferences(day):
    day.press("F10", window="Preferences")
    day.press("space", "Tab", "space", "Return")  # "Hide 'dot' Files", "Folders First"
    day.go("projects")
    day.screen.type("/.pl", "Escape")
    day.expect_selected(".plan")


def two_windows(day):
    day.select("old")
    day.screen.key("ctrl+Return")
    second = wait("a second window", lambda: {day.screen.active_process()} - {0, day.process.pid}).pop()
    day.shows("projects/old")
    day.press("F3", window="Create New File")
    day.type("ideas.txt")
    day.expect_file("projects/old/ideas.txt", "")
    day.screen.key("ctrl+x", "alt+Tab")
    wait("the first window", lambda: day.screen.active_process() == day.process.pid)
    day.screen.key("ctrl+v")
    day.expect_gone("projects/old/ideas.txt")
    day.expect_file("projects/ideas.txt", "")
    day.expect_done()
    day.screen.key("alt+Tab")
    wait("the second window", lambda: day.screen.active_process() == second)
    day.screen.key("ctrl+a")
    day.expect_selected("report2.txt")  # it has read its directory again without being told
    day.screen.key("alt+x")
    day.expect_gone(f"/proc/{second}")
    day.await_window(MAIN)


def leave(day):
    day.screen.key("alt+x")
    day.expect_end()
    with open(day.at(".or/dorn/config.003"), "rb") as file:
        record = file.read()
    fields = len(record), *struct.unpack_from("<i", record, 4), *struct.unpack_from("<I", record, 4656)
    if fields != (5692, 2, 0xFF000924):
        raise Missing(f"expected the preferences in config.003, not length, dirs_first, flags {fields}")
    for name, text in (("hotlist.001", day.at("archive")), ("goto.001", day.at("projects/old")),
                       ("pattern.001", "*.txt\n*.txt|*.md\n"), ("fspec.001", "*\n")):
        if text not in day.read(".or/dorn/" + name):
            raise Missing(f"expected {text!r} in {name}, not {day.read('.or/dorn/' + name)!r}")


def next_morning(day):
    day.begin("projects")
    day.screen.type("/.pl", "Escape")
    day.expect_selected(".plan")
    day.screen.key("alt+b", "Up", "Return")  # the last bookmark
    day.shows("archive")
    day.screen.key("alt+F4")
    day.expect_end()


main((start, browse, search, select_by_pattern, copy, cancel, move, rename, change_modes, link,
      associate, open_files, print_to_file, preferences, two_windows, leave, next_morning))
