#!/usr/bin/env python3
"""Whole processes: start-up, what is kept per user, and the ways in which the program ends.

start.py PROGRAM: needs no screen, but waits as the others do.
"""
import os
import re
import signal
import stat
import struct
import subprocess
import sys
import tempfile
import unittest

from screen import wait

PROGRAM = os.path.abspath(sys.argv.pop(1))
with open(PROGRAM, "rb") as program:
    THREAD_SANITIZER = b"__tsan_init" in program.read()
WIDTHS, SHOW_HOTLIST = 4616, 4664  # where they are in the configuration


class Start(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="dorn-start-")
        self.addCleanup(folder.cleanup)
        self.home, self.shown, self.program = (folder.name + "/" + name
                                               for name in ("home", "shown", "program"))
        self.directory = self.home + "/.or/dorn"
        os.makedirs(self.home + "/.or")
        os.makedirs(self.shown + "/sub")
        os.symlink(PROGRAM, self.program)
        self.environment = dict(os.environ, HOME=self.home, QT_QPA_PLATFORM="offscreen")

    def keep(self, name, content):
        with open(f"{self.directory}/{name}", "wb") as file:
            file.write(content)

    def kept(self, name):
        with open(f"{self.directory}/{name}", "rb") as file:
            return file.read()

    def start(self, directory, *arguments):
        """Starts it and waits until it shows that directory and has come to rest."""
        process = subprocess.Popen([self.program, *arguments], cwd=self.shown, env=self.environment,
                                   stdin=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True)
        self.addCleanup(process.kill)

        def shown():
            with open(f"/proc/{process.pid}/status", encoding="utf-8") as file:
                status = file.read()
            catches = int(re.search("SigCgt:\t(.*)", status)[1], 16) >> (signal.SIGTERM - 1) & 1
            return (catches and "State:\tS" in status and
                    os.readlink(f"/proc/{process.pid}/cwd") == directory)
        wait(f"{directory} to be shown", shown)
        return process

    def end(self, process, by=signal.SIGTERM):
        """Ends it; what it has said of itself."""
        process.send_signal(by)
        said = process.communicate(timeout=30)[1]
        self.assertEqual(process.returncode, 0, by)
        return re.findall("DORN.*", said)

    def run_in(self, directory, *arguments):
        return self.end(self.start(directory, *arguments))

    def test_every_signal_that_ends_the_program_saves(self):
        for number in (signal.SIGTERM, signal.SIGHUP, signal.SIGINT, signal.SIGQUIT):
            self.assertEqual(self.end(self.start(self.shown), number), [])
            config = self.kept("config.003")
            self.assertEqual((len(config), config[4659]), (5692, 0xff))
            self.assertEqual(self.kept("hotlist.001") + self.kept("fspec.001"), b"/\n*\n")
            self.assertEqual(stat.S_IMODE(os.stat(self.directory).st_mode), 0o700)
            for name in os.listdir(self.directory):
                os.unlink(f"{self.directory}/{name}")

    def test_what_one_run_leaves_the_next_one_keeps_byte_for_byte(self):
        self.run_in(self.shown)
        config = bytearray(self.kept("config.003"))
        struct.pack_into("<i", config, WIDTHS, 222)
        config[SHOW_HOTLIST] = 0
        hotlist = f"{self.shown}\n/usr\n".encode()
        self.keep("config.003", config)
        self.keep("hotlist.001", hotlist)
        self.run_in(self.shown)
        self.assertEqual(self.kept("config.003"), config)
        self.assertEqual(self.kept("hotlist.001"), hotlist)

    def test_a_damaged_configuration_starts_all_the_same(self):
        os.mkdir(self.directory)
        for content in (b"\xff" * 100, b"\xff" * 5692, b"\x80" * 5692, b"x" * 7000):
            self.keep("config.003", content)
            self.keep("hotlist.001", b"\xfe" * 3000 + b"\0")
            self.run_in(self.shown)

    def test_without_a_configuration_directory_it_says_so_and_saves_nothing(self):
        error = "DORN error: unable to "
        os.rmdir(self.home + "/.or")
        self.assertEqual(self.run_in(self.shown), [f"{error}create config directory {self.directory}"])
        os.mkdir(self.home + "/.or")
        with open(self.directory, "w", encoding="ascii") as file:
            file.write("a file")
        self.assertEqual(self.run_in(self.shown), [f"{error}access config directory {self.directory}"])
        with open(self.directory, encoding="ascii") as file:
            self.assertEqual(file.read(), "a file")
        del self.environment["HOME"]
        self.assertEqual(self.run_in(self.shown), [error + "create config directory /.or/dorn"])

    def test_the_directory_is_the_first_argument_that_is_no_option(self):
        for directory, *arguments in ((self.home, "-x10", self.home), (self.shown, "-x", "10", self.home),
                                      (self.shown + "/sub", "sub"), (self.shown, "-h200", "-w300"),
                                      (self.shown, self.home + "/missing"),
                                      (self.home, self.home, "-w300")):
            self.run_in(directory, *arguments)

    @unittest.skipIf(THREAD_SANITIZER, "it holds signals back, some of a storm for ever")
    def test_signals_that_others_send_never_end_it(self):
        process = self.start(self.shown)
        with open(f"/proc/{process.pid}/comm", encoding="ascii") as file:
            self.assertEqual(file.read(), "dorn\n")  # which the broadcast after an operation goes to
        for number in [signal.SIGWINCH] * 200 + [signal.SIGCHLD, signal.SIGPIPE, signal.SIGALRM]:
            process.send_signal(number)
        self.end(process)


if __name__ == "__main__":
    unittest.main()
