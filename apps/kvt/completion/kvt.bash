# Completion of kvt for bash. Commands and options are taken from the program's own help.
# Installed as kvt in bash-completion's folder, or sourced from ~/.bashrc.

_kvt_commands() {
    "$1" --help 2>/dev/null | sed -n 's/^  \([a-z][a-z]*\) .*/\1/p'
}

_kvt_options() {
    "$1" "$2" --help 2>/dev/null | grep -o -- '^  -.*' | grep -o -- '--[a-z][a-z-]*' | sort -u
}

# Values of the option $1; fails when they are not a fixed set.
_kvt_values() {
    case $1 in
        --baud) echo 1200 2400 4800 9600 19200 38400 57600 115200 ;;
        --format) echo 8N1 8E1 8O1 8N2 7E1 7O1 7N2 ;;
        --type) echo bool u8 s16 u16 hex ;;
        --area) echo X D C ;;
        --values) echo constant counter ramp sine walk serial mixed ;;
        *) return 1 ;;
    esac
}

_kvt() {
    local program=${COMP_WORDS[0]} word=${COMP_WORDS[COMP_CWORD]} words
    local before=${COMP_WORDS[COMP_CWORD - 1]} command=${COMP_WORDS[1]}
    COMPREPLY=()
    if ((COMP_CWORD == 1)); then
        mapfile -t COMPREPLY < <(compgen -W "$(_kvt_commands "$program") --help --version" -- "$word")
    elif words=$(_kvt_values "$before"); then
        mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word")
    elif [[ $word == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$(_kvt_options "$program" "$command")" -- "$word")
    elif ((COMP_CWORD == 2)) && [[ $command == help ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$(_kvt_commands "$program")" -- "$word")
    elif ((COMP_CWORD == 2)) && [[ $command == read || $command == write ]]; then
        mapfile -t COMPREPLY < <(compgen -W "X D C" -- "$word")
    fi
    # What is left are files, which the defaults below supply, and numbers.
}

complete -o default -F _kvt kvt
