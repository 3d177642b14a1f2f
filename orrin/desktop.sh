# shellcheck shell=sh disable=SC2154
# Starts the desktop's programs for files. Sourced by the adaptors, which set $me to their name
# and $programs to what opens their files where the desktop says nothing.
#
# A graphical program runs in a session of its own with nothing on its standard descriptors: what it
# chatters must not make a terminal window appear, and it outlives the terminal it was started from.
# The adaptor waits for it, so that a failure can be told.

# Ends a program that fails this many seconds after its start: it had come up, and was used.
came_up_after=10

say() {
    printf '%s: %s\n' "$me" "$1" >&2
}

# A name as a terminal may be shown it: "?" for each control character, those of two bytes in UTF-8
# among them.
shown() {
    printf '%s' "$1" | LC_ALL=C tr '\001-\037\177' '?' |
        LC_ALL=C sed "$(printf 's/\302[\200-\237]/?/g')"
}

have() {
    command -v "$1" >/dev/null 2>&1
}

# Runs a graphical program. True unless it failed to come up.
in_window() {
    have "$1" || return 1
    started=$(date +%s)
    if have setsid; then
        setsid "$@" </dev/null >/dev/null 2>&1 && return 0
    else
        (trap '' HUP && exec "$@") </dev/null >/dev/null 2>&1 && return 0
    fi
    [ $(($(date +%s) - started)) -ge "$came_up_after" ]
}

# Calls the function $1 for each of the other arguments, all at the same time. The result is 0 or
# that of one which failed.
at_once() {
    action=$1
    shift
    running=
    for item; do
        "$action" "$item" &
        running="$running $!"
    done
    result=0
    for process in $running; do
        wait "$process" || result=$?
    done
    return "$result"
}

# True when the path names a file that may be opened; says why it may not. The desktop's program for
# a directory may well be the file manager that started the adaptor.
is_file() {
    if [ -d "$1" ]; then
        say "$(shown "$1") is a directory"
        return 1
    fi
    if [ ! -e "$1" ]; then
        say "$(shown "$1") is not there"
        return 1
    fi
}

# What xdg-open may fall back on where the user has not said which browser to use. It would try
# those that need a terminal too, and call their silence a success.
graphical_browsers=x-www-browser:firefox:firefox-esr:chromium:google-chrome:epiphany:konqueror

# Opens a file or a URL in what the desktop has for it.
in_default_program() {
    if have xdg-open; then
        in_window env "BROWSER=${BROWSER:-$graphical_browsers}" xdg-open "$1" && return 0
    fi
    in_window gio open "$1" || in_window exo-open "$1"
}

# Opens one file in the desktop's program for it, else in the first of $programs that is there. The
# result is 1 for a file that can't be opened, 3 when there is no program for it.
open_file() {
    is_file "$1" || return 1
    in_default_program "$1" && return 0
    for program in $programs; do
        in_window "$program" "$1" && return 0
    done
    say "there is no program to open $(shown "$1") with"
    return 3
}

open_each() {
    at_once open_file "$@"
}

# The whole of an adaptor whose arguments are files: on_files USAGE FUNCTION ARGUMENT... calls the
# function with the files' absolute paths. An only argument that names something is taken for that,
# though it looks like an option.
on_files() {
    usage=$1
    action=$2
    shift 2
    if [ $# -gt 1 ] || [ ! -e "${1-}" ]; then
        case ${1-} in
        --help)
            printf '%s\n' "$usage"
            return 0
            ;;
        --) shift ;;
        -?*) [ -e "./$1" ] || set -- ;;
        esac
    fi
    if [ $# = 0 ]; then
        printf '%s\n' "$usage" >&2
        return 2
    fi
    for item; do
        shift
        case $item in
        /*) ;;
        *) item=${PWD%/}/$item ;;
        esac
        set -- "$@" "$item"
    done
    "$action" "$@"
}
