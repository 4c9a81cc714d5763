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
        --type) echo bool hex u8 s8 u16 s16 bcd16 u32 s32 f32 bcd32 u64 s64 f64 string: bit: ;;
        --order) echo abcd badc cdab dcba ;;
        --area) echo X D C ;;
        --reply-check) echo off count auto refuse ;;
        --values) echo constant counter ramp sine walk serial step mixed ;;
        *) return 1 ;;
    esac
}

# Names in the tag list $1, for as far as they are plain: a quoted one is left out.
_kvt_tags() {
    awk -F, '/^[[:space:]]*(#|$)/ { next }
        !column { for (i = 1; i <= NF; ++i) if (tolower($i) ~ /name[[:space:]]*$/) column = i; next }
        $column ~ /^[^" ]+$/ { print $column }' "$1" 2>/dev/null
}

# The file behind --tags on the command line, if there is one.
_kvt_tag_file() {
    local i
    for ((i = 1; i < COMP_CWORD - 1; ++i)); do
        [[ ${COMP_WORDS[i]} == --tags ]] && echo "${COMP_WORDS[i + 1]/#\~/$HOME}"
    done
}

# The option ahead of the word that is being typed. The shell parts words at = and : too.
_kvt_last_option() {
    local i
    for ((i = COMP_CWORD - 1; i > 1; --i)); do
        [[ ${COMP_WORDS[i]} == --* ]] && echo "${COMP_WORDS[i]}" && return
    done
}

# Whether the word $2 behind the word $1 is one of fault rules, or the last of several.
_kvt_types_faults() {
    [[ $1 == --faults ]] && return
    [[ $1 == [=:] && $2 == *,* && $(_kvt_last_option) == --faults ]]
}

# Whether a word behind $1 is the name of a tag, for the command $2.
_kvt_types_tag() {
    [[ $2 == read || $2 == write ]] && [[ $1 != --* || $1 == --json ]] && [[ -n $(_kvt_tag_file) ]]
}

# The rule that is being typed is the last one of the list $1. Nothing is offered behind its name.
_kvt_faults() {
    local rules='' name
    [[ $1 == *,* ]] && rules=${1%,*},
    for name in noreply refuse truncate extra badend flip foreign duplicate echo delay late silence \
        break; do
        echo "$rules$name="
    done
}

_kvt() {
    local program=${COMP_WORDS[0]} word=${COMP_WORDS[COMP_CWORD]} words
    local before=${COMP_WORDS[COMP_CWORD - 1]} command=${COMP_WORDS[1]}
    COMPREPLY=()
    if ((COMP_CWORD == 1)); then
        mapfile -t COMPREPLY < <(compgen -W "$(_kvt_commands "$program") --help --version" -- "$word")
    elif words=$(_kvt_values "$before"); then
        mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word")
    elif _kvt_types_faults "$before" "$word"; then
        mapfile -t COMPREPLY < <(compgen -W "$(_kvt_faults "$word")" -- "$word")
        compopt -o nospace 2>/dev/null
    elif [[ $word == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$(_kvt_options "$program" "$command")" -- "$word")
    elif ((COMP_CWORD == 2)) && [[ $command == help ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$(_kvt_commands "$program")" -- "$word")
    elif ((COMP_CWORD == 2)) && [[ $command == tags ]]; then
        mapfile -t COMPREPLY < <(compgen -W "check template" -- "$word")
    elif _kvt_types_tag "$before" "$command"; then
        mapfile -t COMPREPLY < <(compgen -W "$(_kvt_tags "$(_kvt_tag_file)")" -- "$word")
    elif ((COMP_CWORD == 2)) && [[ $command == read || $command == write ]]; then
        mapfile -t COMPREPLY < <(compgen -W "X D C" -- "$word")
    fi
    # What is left are files, which the defaults below supply, and numbers.
}

complete -o default -F _kvt kvt
