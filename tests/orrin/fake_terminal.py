#!/usr/bin/env -S python3 -IS
"""A terminal emulator without a window: fake_terminal.py -e PROGRAM [ARGUMENT...]

The program runs on a pseudo-terminal of 100 columns and 30 rows, whose keyboard and screen are the
socket named by FAKE_TERMINAL; when that is closed the window is. SIGUSR1 makes it 132 by 50. With
FAKE_TERMINAL_SERVER set the process that was started ends at once and another one goes on.
"""
import os
import pty
import select
import signal
import socket
import sys
import termios

if "FAKE_TERMINAL_SERVER" in os.environ and os.fork():
    sys.exit()
test = socket.socket(socket.AF_UNIX)
test.connect(os.environ["FAKE_TERMINAL"])
child, master = pty.fork()
if child == 0:
    termios.tcsetwinsize(0, (30, 100))
    os.execv(sys.argv[2], sys.argv[2:])
signal.signal(signal.SIGUSR1, lambda *_: termios.tcsetwinsize(master, (50, 132)))
try:
    while True:
        ready = select.select([test, master], [], [])[0]
        if master in ready:
            test.sendall(os.read(master, 65536))
        if test in ready:
            keys = test.recv(65536)
            if not keys:
                break
            while keys:
                keys = keys[os.write(master, keys):]
except OSError:  # the other side of either is gone
    pass
