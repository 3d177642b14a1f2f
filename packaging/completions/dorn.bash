# Completion of dorn's command line in bash. Directories are completed by readline itself, which gets
# every name right, where nothing else fits.

_dorn() {
    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}
    local words=
    case $before in
    -S) words='i m n' ;;
    -s | -x | -y | -h | -w) ;;
    *)
        if [[ $word != -* ]]; then
            COMPREPLY=()
            return
        fi
        words='-s -x -y -h -w -S --help'
        ;;
    esac
    compopt +o dirnames
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word")
}

complete -o dirnames -F _dorn dorn
