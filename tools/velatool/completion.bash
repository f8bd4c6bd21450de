# SPDX-License-Identifier: Apache-2.0
# bash completion for velatool
_velatool() {
    local -r current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]} command=${COMP_WORDS[1]-}
    local -r units="mm cm m in ft" axes="image opengl ros" input="--unit-from --axes-from --scale-from --rows-from --depth --help"
    local words=
    case $previous in
        --unit-from | --unit-to) words=$units ;;
        --axes-from | --axes-to) words=$axes ;;
        --rows-from | --rows-to) words="top bottom" ;;
        --encoding) words="ascii binary big-endian compressed" ;;
        --format) words="xyz pcd ply vtk png pfm pgm npy" ;;
        --views) words="front top left right back" ;;
        --color) [[ $command == view ]] && words="rgb depth height" ;;
    esac
    if [[ -n $words ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
        return
    fi
    if ((COMP_CWORD == 1)); then
        mapfile -t COMPREPLY < <(compgen -W "info convert view diff depth2cloud --help --help-all --version" -- "$current")
        return
    fi
    if [[ $current == -* ]]; then
        case $command in
            info) words="--json $input" ;;
            convert) words="--format --encoding --unit-to --axes-to --keep-grid --no-color --depth-scale --clip --rows-to $input" ;;
            view) words="--output --size --color --views --max-points $input" ;;
            diff) words="--tolerance $input" ;;
            depth2cloud) words="--fx --fy --cx --cy --color --encoding --unit-to --axes-to --keep-grid $input" ;;
        esac
        mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
        return
    fi
    mapfile -t COMPREPLY < <(compgen -f -- "$current")
}
complete -o filenames -F _velatool velatool
