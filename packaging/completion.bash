# SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
# SPDX-License-Identifier: GPL-3.0-or-later
# shellcheck shell=bash
#
# Completion of zorvi_yield and zorvi_unit.

# Sets COMPREPLY to those of the words that begin like the word at the cursor.
_zorvi_words() { mapfile -t COMPREPLY < <(compgen -W "$*" -- "${COMP_WORDS[COMP_CWORD]}"); }

_zorvi_paths() { # -f: files, -d: folders
    compopt -o filenames
    mapfile -t COMPREPLY < <(compgen "$1" -- "${COMP_WORDS[COMP_CWORD]}")
}

_zorvi_yield() {
    local command=${COMP_WORDS[1]:-} options='--database --help'
    if [ "$COMP_CWORD" = 1 ]; then
        _zorvi_words collect import report unit export status station --help --version
        return
    fi
    case ${COMP_WORDS[COMP_CWORD - 1]} in
        --database | --output) _zorvi_paths -f && return ;;
        --spool) _zorvi_paths -d && return ;;
        --format)
            if [ "$command" = report ]; then _zorvi_words html json; else _zorvi_words csv json; fi
            return
            ;;
        # The user's own words.
        --station | --since | --until | --days | --exclude) return ;;
    esac
    case $command in
        collect) options+=' --station --tests-component-18 --once --spool' ;;
        import) options+=' --station --tests-component-18' ;;
        report) options+=' --since --until --days --station --exclude --format --output' ;;
        export) options+=' --format' ;;
    esac
    if [[ ${COMP_WORDS[COMP_CWORD]} == -* ]]; then
        _zorvi_words "$options"
    elif [ "$command" = import ]; then
        _zorvi_paths -f
    elif [ "$command" = collect ] || [ "$command" = status ]; then
        _zorvi_paths -d
    elif [ "$command $COMP_CWORD" = 'station 2' ]; then
        _zorvi_words rename
    fi
}

_zorvi_unit() {
    case ${COMP_WORDS[COMP_CWORD - 1]} in
        --fault)
            _zorvi_words none stuck no-low-end no-high-end weak-button too-early swapped \
                cable-pulled chatter flood
            ;;
        --pace | --component | --runs | --delay) ;;
        *) _zorvi_words --pace --fault --component --runs --delay --tarvek --help --version ;;
    esac
}

complete -F _zorvi_yield zorvi_yield
complete -F _zorvi_unit zorvi_unit
