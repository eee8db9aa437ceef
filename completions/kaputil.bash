# shellcheck shell=bash
# Completion of the kaputil command line for bash.
#
# Everything offered is asked of the program itself: commands and options of its help, names of
# classes, members and parameters of its catalogue. So nothing here repeats what it can do.

# The names on stdin that begin like the word being completed, ignoring case, each between a prefix and a suffix.
_kaputil_offer() {
    local prefix=$1 typed=$2 suffix=$3 name
    while read -r name; do
        if [[ ${name,,} == "${typed,,}"* ]]; then
            COMPREPLY+=("$prefix$name$suffix")
        fi
    done
}

# Names of the catalogue: of the classes, or below the class or member given.
_kaputil_names() {
    "$_kaputil_program" classes "$@" --names 2>/dev/null
}

# The help with the headings that are looked for here, whatever language the user reads.
_kaputil_help() {
    KAPUTIL_LOCALE=en-US "$_kaputil_program" "$@" --help 2>/dev/null
}

# The commands, or the actions of the command given.
_kaputil_commands() {
    _kaputil_help "$@" | sed -n '/^Subcommands:/,$ s/^  \([a-z][a-z]*\) .*/\1/p'
}

_kaputil_options() {
    _kaputil_help "$@" | sed -n '/^Options:/,/^$/ s/^  \(-[a-z],\)\{0,1\}\(--[a-z][a-z-]*\).*/\2/p' | sort -u
}

# The next character is typed right behind what was completed.
_kaputil_no_blank() {
    compopt -o nospace 2>/dev/null || true
}

# Members behind "CLASS.", or general functions and classes.
_kaputil_members() {
    local typed=$1
    if [[ $typed == *.* ]]; then
        _kaputil_offer "${typed%.*}." "${typed##*.}" '' < <(_kaputil_names "${typed%.*}")
    else
        _kaputil_offer '' "$typed" '' < <(_kaputil_names StdFunctions)
    fi
    if [[ ${#COMPREPLY[@]} -eq 0 || $typed != *.* ]]; then
        local functions=${#COMPREPLY[@]}
        _kaputil_offer '' "$typed" '.' < <(_kaputil_names)
        if [[ $functions -eq 0 ]]; then
            _kaputil_no_blank
        fi
    fi
}

# Words of "call" before the one being completed: sets `class` and `member` of the call it belongs to, which are empty
# while the call's own name is still to come.
_kaputil_read_call() {
    local i word
    class='' member=''
    for ((i = 2; i < COMP_CWORD; ++i)); do
        word=${COMP_WORDS[i]}
        case $word in
        --locale | --message-log)
            [[ ${COMP_WORDS[i + 1]:-} != '=' ]] || ((++i))
            ((++i))
            ;;
        -*) ;;
        +) member='' ;;
        *)
            if [[ -z $member ]]; then
                [[ $word != *.* ]] || class=${word%.*}
                member=${word##*.}
            fi
            ;;
        esac
    done
}

_kaputil_call() {
    local typed=$1 class member
    _kaputil_read_call
    if [[ -n $member ]]; then
        _kaputil_offer '' "$typed" ':=' < <(_kaputil_names "${class:-StdFunctions}.$member")
        _kaputil_no_blank
    elif [[ -n $class ]]; then
        _kaputil_offer '' "$typed" '' < <(_kaputil_names "$class")
    else
        _kaputil_members "$typed"
    fi
}

_kaputil_classes() {
    local typed=$1
    _kaputil_offer '' "$typed" '' < <(_kaputil_names)
    if [[ $typed == *.* ]]; then
        _kaputil_offer "${typed%.*}." "${typed##*.}" '' < <(_kaputil_names "${typed%.*}")
    fi
}

# The action, then the file to import.
_kaputil_registry() {
    local typed=$1
    if [[ $COMP_CWORD -eq 2 ]]; then
        _kaputil_offer '' "$typed" '' < <(_kaputil_commands registry)
    elif [[ ${COMP_WORDS[2]} == import ]]; then
        _kaputil_value --file "$typed"
    fi
}

_kaputil_files() {
    mapfile -t COMPREPLY < <(compgen -f -- "$1")
    compopt -o filenames 2>/dev/null || true
}

# What may follow an option that takes a value.
_kaputil_value() {
    local option=$1 typed=$2
    case $option in
    --locale) _kaputil_offer '' "$typed" '' < <(printf '%s\n' it-IT en-US en-GB) ;;
    --type) _kaputil_offer '' "$typed" '' < <(printf '%s\n' REG_SZ REG_EXPAND_SZ REG_DWORD REG_BINARY) ;;
    --folder)
        mapfile -t COMPREPLY < <(compgen -d -- "$typed")
        compopt -o filenames 2>/dev/null || true
        ;;
    --encoding) _kaputil_offer '' "$typed" '' < <(printf '%s\n' utf-8 utf-16 1252 850) ;;
    --language) _kaputil_offer '' "$typed" '' < <(printf '%s\n' it en) ;;
    --database | --declaration | --file | --message-log | --backup | --connection | --from | --to) _kaputil_files "$typed" ;;
    esac
}

_kaputil() {
    local _kaputil_program=${1/#\~/$HOME}
    local typed=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}
    COMPREPLY=()
    # The line editor cuts words at ':' and '='.
    if [[ $typed == = ]]; then
        typed=''
    elif [[ $before == = ]]; then
        before=${COMP_WORDS[COMP_CWORD - 2]}
    fi

    case $before in
    := | :) return ;;
    --locale | --database | --declaration | --file | --folder | --message-log | --connection | --from | --to | --command | --query | --name | --seed | --type | --group | --path | --table | --backup | --counter | --year | --encoding | --language | --delimiter | --quote | --columns | --null | --max-errors | --variable)
        _kaputil_value "$before" "$typed"
        return
        ;;
    esac
    if [[ $typed == -* ]]; then
        local command=()
        [[ $COMP_CWORD -eq 1 ]] || command=("${COMP_WORDS[1]}")
        case ${COMP_WORDS[1]} in
            config | registry) [[ $COMP_CWORD -eq 2 ]] || command+=("${COMP_WORDS[2]}") ;;
        esac
        _kaputil_offer '' "$typed" '' < <(_kaputil_options "${command[@]}")
    elif [[ $COMP_CWORD -eq 2 && ${COMP_WORDS[1]} == completion ]]; then
        _kaputil_offer '' "$typed" '' < <(printf '%s\n' zsh fish)
    elif [[ $COMP_CWORD -eq 2 && ${COMP_WORDS[1]} == manual ]]; then
        _kaputil_offer '' "$typed" '' < <(_kaputil_commands)
    elif [[ $COMP_CWORD -eq 1 ]]; then
        _kaputil_offer '' "$typed" '' < <(_kaputil_commands)
    elif [[ ${COMP_WORDS[1]} == config && $COMP_CWORD -eq 2 ]]; then
        _kaputil_offer '' "$typed" '' < <(_kaputil_commands config)
    elif [[ ${COMP_WORDS[1]} =~ ^(batch|sql|import)$ ]]; then
        _kaputil_files "$typed"
    elif [[ ${COMP_WORDS[1]} == call && $typed != :* ]]; then
        _kaputil_call "$typed"
    elif [[ ${COMP_WORDS[1]} == classes ]]; then
        _kaputil_classes "$typed"
    elif [[ ${COMP_WORDS[1]} == registry ]]; then
        _kaputil_registry "$typed"
    fi
}

complete -F _kaputil kaputil
