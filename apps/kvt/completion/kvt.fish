# Completion of kvt for fish. Commands and options are taken from the program's own help.
# Installed into fish's folder vendor_completions.d, or sourced from config.fish.

function __kvt_commands
    eval (commandline -opc)[1] --help 2>/dev/null | sed -n 's/^  \([a-z][a-z]*\) .*/\1/p'
end

function __kvt_options
    set -l words (commandline -opc)
    test (count $words) -ge 2
    and eval $words[1] $words[2] --help 2>/dev/null | grep -o -- '^  -.*' | grep -o -- '--[a-z][a-z-]*' | sort -u
end

function __kvt_is_command
    test (count (commandline -opc)) -eq 1
end

function __kvt_behind_help
    set -l words (commandline -opc)
    test (count $words) -eq 2 -a "$words[2]" = help
end

# Whether the word before the one that is typed is the option $argv.
function __kvt_behind
    test (commandline -opc)[-1] = $argv[1]
end

function __kvt_types_area
    set -l words (commandline -opc)
    test (count $words) -eq 2
    and contains -- $words[2] read write
end

function __kvt_behind_tags
    set -l words (commandline -opc)
    test (count $words) -eq 2 -a "$words[2]" = tags
end

complete -c kvt -n __kvt_is_command -f -a '(__kvt_commands) --help --version'
complete -c kvt -n __kvt_behind_help -f -a '(__kvt_commands)'
complete -c kvt -n 'string match -q -- "-*" (commandline -ct)' -f -a '(__kvt_options)'
complete -c kvt -n '__kvt_behind --baud' -f -a '1200 2400 4800 9600 19200 38400 57600 115200'
complete -c kvt -n '__kvt_behind --format' -f -a '8N1 8E1 8O1 8N2 7E1 7O1 7N2'
complete -c kvt -n '__kvt_behind --type' -f -a 'bool hex u8 s8 u16 s16 bcd16 u32 s32 f32 bcd32 u64 s64 f64 string: bit:'
complete -c kvt -n '__kvt_behind --order' -f -a 'abcd badc cdab dcba'
complete -c kvt -n '__kvt_behind --area' -f -a 'X D C'
complete -c kvt -n '__kvt_behind --reply-check' -f -a 'off count auto refuse'
complete -c kvt -n '__kvt_behind --values' -f -a 'constant counter ramp sine walk serial step mixed'
complete -c kvt -n __kvt_behind_tags -f -a 'check template'
complete -c kvt -n __kvt_types_area -f -a 'X D C'
