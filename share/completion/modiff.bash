# Completion of modiff for bash, to be read as /usr/share/bash-completion/completions/modiff. What may follow is what
# the program itself says.

_modiff() {
    local cur words cword line quoting=%q
    _get_comp_words_by_ref -n : cur words cword
    [[ $cur == [\"\']* ]] && quoting=%s # the quotation mark that stands there already is enough
    COMPREPLY=()
    while IFS= read -r line; do
        case $line in
            $'\tfiles') compopt -o filenames && mapfile -t COMPREPLY < <(compgen -f -- "$cur") ;;
            $'\tdirectories') compopt -o filenames && mapfile -t COMPREPLY < <(compgen -d -- "$cur") ;;
            *) printf -v line "$quoting" "${line%%$'\t'*}" && COMPREPLY+=("$line") ;;
        esac
    done < <("$1" --complete "${words[@]:1:cword-1}" "${cur//[\"\'\\]/}" 2>/dev/null)
    [[ $quoting == %s ]] || __ltrim_colon_completions "$cur" # bash takes a colon for the beginning of a word
}

complete -F _modiff modiff
