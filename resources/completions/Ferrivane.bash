# Completion of Ferrivane's command line in bash.
# shellcheck shell=bash
_Ferrivane() {
    local word=${COMP_WORDS[COMP_CWORD]}
    COMPREPLY=()
    case ${COMP_WORDS[COMP_CWORD - 1]} in
        --test | --from) return ;;
    esac
    case $word in
        -*)
            mapfile -t COMPREPLY < <(compgen -W \
                '--test --from --status --set-default --restore-default --help -h' -- "$word")
            ;;
        *)
            compopt -o filenames
            mapfile -t COMPREPLY < <(compgen -f -- "$word")
            ;;
    esac
}
complete -F _Ferrivane Ferrivane
