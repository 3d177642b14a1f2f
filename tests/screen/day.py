"""The sandbox of a working day: a HOME, a printer that prints to a file, and the program on a screen.

What is looked at is what anyone could look at: the titles of windows, the clipboard, the directory
that the program shows (its working directory), the files.
"""
import os
import shutil
import sys
import tempfile
import time

from screen import PATIENCE, Missing, Screen, wait

MAIN = "dorn"
OPERATIONS = "DORN: File Operations"
FIRST_ROW, ROW = 105, 18  # of the list: where ".." is from the top of the window, and the next below


class Day:
    def __init__(self, program):
        os.umask(0o022)
        self.sandbox = tempfile.mkdtemp(prefix="dorn-day-")
        self.home = self.sandbox + "/home"
        for folder in ("home/.or", "home/projects/old", "home/archive", "bin"):
            os.makedirs(f"{self.sandbox}/{folder}")
        self.write("../bin/lpr", f'#!/bin/sh\ncat -- "$@" >{self.sandbox}/printed\n')
        os.chmod(self.at("../bin/lpr"), 0o755)
        os.environ["PATH"] = f"{self.sandbox}/bin:{os.environ['PATH']}"
        self.screen = Screen(self.home, self.sandbox + "/log")
        self.program = program
        self.process = None

    def end(self):
        self.screen.end()
        shutil.rmtree(self.sandbox, ignore_errors=True)

    # The disk. Paths are below HOME.
    def at(self, path):
        return os.path.join(self.home, path)

    def write(self, path, text):
        with open(self.at(path), "w", encoding="utf-8") as file:
            file.write(text)

    def read(self, path):
        try:
            with open(self.at(path), encoding="utf-8", errors="replace") as file:
                return file.read()
        except OSError:
            return None

    def expect_file(self, path, text):
        wait(f"the file {path} to hold {text!r}", lambda: self.read(path) == text)

    def expect_gone(self, path):
        wait(f"nothing at {path}", lambda: not os.path.lexists(self.at(path)))

    # The program.
    def begin(self, path, *options):
        """Starts it with that directory."""
        self.process = self.screen.start(self.program, *options, self.at(path))
        self.await_window(MAIN)
        self.shows(path)

    def expect_end(self):
        wait("the program to end with status 0", lambda: self.process.poll() == 0)

    def await_window(self, title):
        wait(f'the keyboard in the window "{title}"', lambda: self.screen.active_title() == title)

    def press(self, *keys, window=MAIN):
        """Presses the keys, after which a window of that title must have the keyboard."""
        self.screen.key(*keys)
        self.await_window(window)

    def type(self, text, window=MAIN):
        """The same with a text and Enter."""
        self.screen.type(text, "Return")
        self.await_window(window)

    def shows(self, path):
        """Waits until the window that has the keyboard shows the directory, and is at rest."""
        def shown():
            try:
                here = f"/proc/{self.screen.active_process()}/cwd"
                return os.path.samefile(here, self.at(path))
            except OSError:
                return False
        wait(f"the list to show {path or 'HOME'}", shown)
        self.rest()

    def rest(self):
        """Waits until the program has nothing to do."""
        def sleeps():
            with open(f"/proc/{self.screen.active_process()}/stat", encoding="utf-8") as file:
                return file.read().rsplit(")", 1)[1].split()[0] == "S"
        wait("the program to come to rest", lambda: all(sleeps() for _ in range(3)))

    def go(self, path):
        """Types the path into its field, and deletes what the field completes from its history."""
        self.screen.click(150, 57, times=3)
        self.screen.type(self.at(path), "Delete", "Return")
        self.shows(path)

    def select(self, name):
        """Types ahead to the first name that begins so and stays on it."""
        self.screen.type(name, "Escape")

    def expect_selected(self, *names):
        """Copies the selection, and expects those names on the clipboard."""
        def copied():
            self.screen.key("ctrl+c")
            return self.screen.clipboard() == sorted(names)
        wait(f"{names} to be selected", copied)

    def expect_done(self):
        wait("the operations to end", lambda: not self.screen.window(OPERATIONS))
        self.await_window(MAIN)
        self.rest()

    def answer(self, title, mnemonic):
        """Answers a question. Its buttons are dead for a moment, so that blind typing can't answer."""
        self.await_window(title)
        question = self.screen.active_window()
        end = time.monotonic() + PATIENCE
        while self.screen.active_window() == question:
            self.screen.key("alt+" + mnemonic)
            try:
                wait("an answer", lambda: self.screen.active_window() not in ("", question), 0.6)
            except Missing:
                if time.monotonic() > end:
                    raise


def main(steps):
    """Goes through the steps, each a function of a day, with the arguments of working_day.py."""
    day = Day(os.path.abspath(sys.argv[1]))
    try:
        for number, step in enumerate(steps, 1):
            step(day)
            if len(sys.argv) > 2:
                day.screen.picture(f"{sys.argv[2]}/{number:02}-{step.__name__}.png")
    except Exception as failure:
        picture = os.path.abspath(f"{step.__name__}.png")
        day.screen.picture(picture)
        print(f"{step.__name__}: {failure}\nThe keyboard is in the window "
              f"{day.screen.active_title()!r}; picture: {picture}\nWritten by the program:\n"
              f"{day.read('../log')}")
        if not isinstance(failure, Missing):
            raise
        sys.exit(1)
    finally:
        day.end()
