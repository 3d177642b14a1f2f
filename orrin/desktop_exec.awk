# Reads a desktop entry and prints its Exec line as shell code, every word of it quoted: a call of
# in_window or in_terminal (as the entry's Terminal key says) with "$@" where the files go. A program
# that takes one file at a time gets "$1", and "each " stands in front. Fails without an Exec line.

/^\[/ {
    inside = /^\[Desktop Entry\]/
    next
}
inside && /^Terminal[ \t]*=[ \t]*true/ { in_terminal = 1 }
inside && /^Exec[ \t]*=/ {
    line = $0
    sub(/^Exec[ \t]*=[ \t]*/, "", line)
    sub(/\r$/, "", line)
}

# The escapes that every value of a desktop entry may have.
function unescaped(text,    result, c, i) {
    for (i = 1; i <= length(text); i++) {
        c = substr(text, i, 1)
        if (c == "\\") {
            c = substr(text, ++i, 1)
            c = c == "s" ? " " : c == "n" ? "\n" : c == "t" ? "\t" : c == "r" ? "\r" : c
        }
        result = result c
    }
    return result
}

function quoted(text,    result, c, i) {
    for (i = 1; i <= length(text); i++) {
        c = substr(text, i, 1)
        result = result (c == "\047" ? "\047\\\047\047" : c)
    }
    return "\047" result "\047"
}

function end_literal() {
    if (literal != "") word = word quoted(literal)
    literal = ""
}

function end_word() {
    end_literal()
    if (word != "" || is_word) words = words " " (word == "" ? "\047\047" : word)
    word = ""
    is_word = 0
}

# A code that stands for files, or for something that an editor can do without.
function field(code) {
    if (code == "%") literal = literal "%"
    if (code !~ /^[fFuU]$/) return
    end_literal()
    if (code ~ /[fu]/) each = "each "
    word = word (code ~ /[fu]/ ? "\"$1\"" : "\"$@\"")
    takes_files = 1
}

function split_words(text,    quote, c, i) {
    for (i = 1; i <= length(text); i++) {
        c = substr(text, i, 1)
        if (c == "\\" && quote != "\047") literal = literal substr(text, ++i, 1)
        else if (quote != "" && c == quote) quote = ""
        else if (quote != "") literal = literal c
        else if (c == "\"" || c == "\047") {
            quote = c
            is_word = 1
        } else if (c == " " || c == "\t") end_word()
        else if (c == "%") field(substr(text, ++i, 1))
        else literal = literal c
    }
    end_word()
}

END {
    split_words(unescaped(line))
    if (words == "") exit 1
    if (!takes_files) words = words " \"$@\""
    print each (in_terminal ? "in_terminal" : "in_window") words
}
