"""A private X server with a window manager, and what a person does and sees on it.

Everything goes in by keys and mouse (xdotool). Every wait is for a condition; one that does not come
true in time raises Missing, which says what was expected.
"""
import os
import signal
import subprocess
import time

PATIENCE = 30.0  # seconds that a condition may take on a busy machine


class Missing(Exception):
    pass


def wait(expected, condition, patience=PATIENCE):
    """Waits until the condition holds and returns what it gave; `expected` says it in words."""
    end = time.monotonic() + patience
    while not (value := condition()):
        if time.monotonic() > end:
            raise Missing(f"expected {expected}")
        time.sleep(0.03)
    return value


class Screen:
    def __init__(self, home, log):
        unwanted = ("WAYLAND_DISPLAY", "XAUTHORITY", "SESSION_MANAGER", "QT_QPA_PLATFORM")
        self.environment = {key: value for key, value in os.environ.items() if key not in unwanted}
        self.environment |= {"HOME": home, "QT_FONT_DPI": "96", "QT_SCALE_FACTOR": "1"}
        self.log = open(log, "wb")
        self.children = []
        reading, writing = os.pipe()
        self.start("Xvfb", "-displayfd", str(writing), "-screen", "0", "1024x768x24", "-noreset",
                   "-nolisten", "tcp", pass_fds=[writing])
        os.close(writing)
        with os.fdopen(reading) as number:
            self.environment["DISPLAY"] = ":" + number.readline().strip()
        # A window that maps itself while the window manager starts would never be shown.
        started = log + ".started"
        self.start("openbox", "--sm-disable", "--startup", f"touch {started}")
        wait("a window manager", lambda: os.path.exists(started))

    def start(self, *words, **options):
        child = subprocess.Popen(words, env=self.environment, stdin=subprocess.DEVNULL,
                                 stdout=self.log, stderr=self.log, **options)
        self.children.append(child)
        return child

    def end(self):
        for child in reversed(self.children):
            child.terminate()
            child.send_signal(signal.SIGCONT)  # to one that a test has stopped
            child.wait()

    def output(self, *words):
        return subprocess.run(words, env=self.environment, capture_output=True, timeout=60,
                              check=False).stdout.decode(errors="replace").strip()

    def picture(self, path):
        self.output("import", "-window", "root", path)

    # What is there.
    def active_window(self):
        return self.output("xdotool", "getactivewindow")

    def active_title(self):
        return self.output("xdotool", "getactivewindow", "getwindowname")

    def active_process(self):
        return int(self.output("xdotool", "getactivewindow", "getwindowpid") or 0)

    def window(self, title):
        """The number of the window on the screen that has that title, "" for none."""
        return self.output("xdotool", "search", "--onlyvisible", "--name", f"^{title}$")

    def clipboard(self):
        """The names in the list of files on the clipboard."""
        return sorted(uri.rsplit("/", 1)[1] for uri in self.clipboard_as("text/uri-list").split())

    def clipboard_as(self, kind):
        return self.output("timeout", "5", "xclip", "-o", "-selection", "clipboard", "-t", kind)

    # What a person does.
    def key(self, *keys):
        self.output("xdotool", "key", "--clearmodifiers", "--delay", "30", *keys)

    def type(self, text, *then):
        self.output("xdotool", "type", "--delay", "15", "--", text)
        if then:
            self.key(*then)

    def click(self, x, y, button=1, times=1, window=None):
        """In the active window or the given one, that many pixels from its upper left corner."""
        self.output("xdotool", "mousemove", "--window", window or self.active_window(), str(x),
                    str(y), "click", "--repeat", str(times), "--delay", "60", str(button))
