#compdef kvt
# Completion of kvt for zsh. Commands and options are taken from the program's own help.
# Installed as _kvt in a folder of fpath.

_kvt_commands() {
    $1 --help 2>/dev/null | sed -n 's/^  \([a-z][a-z]*\) .*/\1/p'
}

_kvt_options() {
    $1 $2 --help 2>/dev/null | grep -o -- '^  -.*' | grep -o -- '--[a-z][a-z-]*' | sort -u
}

# Values of the option $1; fails when they are not a fixed set.
_kvt_values() {
    case $1 in
        --baud) print 1200 2400 4800 9600 19200 38400 57600 115200 ;;
        --format) print 8N1 8E1 8O1 8N2 7E1 7O1 7N2 ;;
        --type) print bool hex u8 s8 u16 s16 bcd16 u32 s32 f32 bcd32 u64 s64 f64 string: bit: ;;
        --order) print abcd badc cdab dcba ;;
        --area) print X D C ;;
        --reply-check) print off count auto refuse ;;
        --values) print constant counter ramp sine walk serial step mixed ;;
        *) return 1 ;;
    esac
}

_kvt() {
    local program=$words[1] command=$words[2] values
    if ((CURRENT == 2)); then
        compadd -- $(_kvt_commands $program) --help --version
    elif values=$(_kvt_values $words[CURRENT-1]); then
        compadd -- ${=values}
    elif [[ $words[CURRENT] == -* ]]; then
        compadd -- $(_kvt_options $program $command)
    elif ((CURRENT == 3)) && [[ $command == help ]]; then
        compadd -- $(_kvt_commands $program)
    elif ((CURRENT == 3)) && [[ $command == tags ]]; then
        compadd -- check template
    elif ((CURRENT == 3)) && [[ $command == (read|write) ]]; then
        compadd -- X D C
    else
        _files
    fi
}

# Completing for the first time, zsh runs this file as the function itself.
if [[ $funcstack[1] == _kvt ]]; then
    _kvt "$@"
elif (( $+functions[compdef] )); then
    compdef _kvt kvt
fi
