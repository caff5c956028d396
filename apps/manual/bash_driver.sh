# shellcheck shell=bash
# The part of the bash completion that is the same whatever the commands are. The functions that know the
# commands' options and values, _tarvex_commands, _tarvex_arguments and _tarvex_value, stand before it.

# Offers the words of $1, or files for the word FILES.
_tarvex_offer() {
    if [[ $1 == FILES ]]; then
        compopt -o filenames 2>/dev/null
        mapfile -t COMPREPLY < <(compgen -f -- "$cur")
    else
        mapfile -t COMPREPLY < <(compgen -W "$1" -- "$cur")
    fi
}

# Into $place: how many arguments that belong to no option stand before the cursor.
_tarvex_count_places() {
    local i
    place=0
    for ((i = 2; i < COMP_CWORD; i++)); do
        if [[ ${COMP_WORDS[i]} != -?* ]]; then
            place=$((place + 1))
        elif _tarvex_value "$command" "${COMP_WORDS[i]}"; then
            i=$((i + 1))
            if [[ ${COMP_WORDS[i]} == = ]]; then i=$((i + 1)); fi
        fi
    done
}

_tarvex() {
    local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD - 1]}
    local command=${COMP_WORDS[1]} options offered repeats place
    local -a places
    COMPREPLY=()
    if ((COMP_CWORD == 1)); then
        _tarvex_offer "$(_tarvex_commands)"
        return
    fi
    _tarvex_arguments "$command" || return

    # bash takes --option=value apart into three words
    if [[ $prev == = ]]; then prev=${COMP_WORDS[COMP_CWORD - 2]}; fi
    if [[ $cur == = ]]; then cur=; fi
    if _tarvex_value "$command" "$prev"; then
        _tarvex_offer "$offered"
    elif [[ $cur == -* ]]; then
        _tarvex_offer "$options"
    else
        _tarvex_count_places
        if [[ -n $repeats ]] && ((place >= ${#places[@]})); then place=$((${#places[@]} - 1)); fi
        if ((place < ${#places[@]})); then _tarvex_offer "${places[place]}"; fi
    fi
}

complete -F _tarvex tarvex
