# Completion of kesto's command line for bash. What there is to complete comes from the command's own help.
_kesto() {
    local kesto=${COMP_WORDS[0]} subcommand=${COMP_WORDS[1]} word=${COMP_WORDS[COMP_CWORD]} words=
    local option='(^|[ ,])--[a-z-]+'
    case $COMP_CWORD:$subcommand:${COMP_WORDS[COMP_CWORD - 1]}:$word in
        1:*) words=$("$kesto" --help | grep -oE "$option|^  [a-z]+") ;;
        *:--record:*) words="all none" ;;
        *:--format:*) words="csv netcdf" ;;
        *:--accept:*) words=$("$kesto" codes | sed -n 's/ \+warning .*//p') ;;
        *:-*) words=$("$kesto" "$subcommand" --help 2>/dev/null | grep -oE "$option") ;;
        *:types:*) words=$("$kesto" types | cut -d ' ' -f 1) ;;
    esac
    mapfile -t COMPREPLY < <(compgen -W "${words//,/ }" -- "$word")
}
complete -o default -F _kesto kesto
