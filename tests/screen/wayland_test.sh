#!/bin/sh
# dorn under a Wayland compositor without a screen: it shows a directory, says nothing on standard
# error, also of the window position that it can't have, and SIGTERM ends it. Called with the
# program's path; exit status 77 without a compositor.
command -v weston >/dev/null || exit 77
program=$1
home=$(mktemp -d) || exit 1
XDG_RUNTIME_DIR=$home HOME=$home
export XDG_RUNTIME_DIR HOME
unset DISPLAY DBUS_SESSION_BUS_ADDRESS
# The toolkit's plugin is unloaded before leaks are looked for, so that what it keeps has no name
# left that a suppression could match; dorn's own leaks are looked for under X11.
ASAN_OPTIONS=detect_leaks=0
export ASAN_OPTIONS
mkdir -p "$home/.or/dorn" "$home/files"
weston --backend=headless-backend.so --socket=test --idle-time=0 >"$home/log" 2>&1 &
compositor=$!

# Waits until the command succeeds, for half a minute.
wait_until() {
    tries=300
    until "$@"; do
        tries=$((tries - 1))
        [ "$tries" -gt 0 ] || return 1
        sleep 0.1
    done
}

# It works in the directory that it shows and has a window.
is_shown() {
    [ "$(readlink "/proc/$dorn/cwd")" = "$home/files" ] && grep -q 'attach(wl_buffer' "$home/protocol"
}

result=1
if wait_until test -S "$home/test"; then
    WAYLAND_DISPLAY=test WAYLAND_DEBUG=1 QT_QPA_PLATFORM=wayland XDG_ACTIVATION_TOKEN=token \
        "$program" -x10 -y10 "$home/files" 2>"$home/protocol" &
    dorn=$!
    wait_until is_shown && result=0
    kill -TERM "$dorn"
    wait "$dorn" || result=1
    # All but the protocol, which is in lines that begin with a time.
    if grep -v '^\[' "$home/protocol"; then result=1; fi
fi
[ "$result" = 0 ] || cat "$home/log" >&2
kill "$compositor"
wait "$compositor"
rm -rf "$home"
exit "$result"
