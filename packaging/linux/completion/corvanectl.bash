# Completion of corvanectl for bash: the program itself lists the candidates.
_corvanectl() {
  local current=${COMP_WORDS[COMP_CWORD]} line
  COMPREPLY=()
  while IFS= read -r line; do
    case $line in
      :files)
        compopt -o filenames
        mapfile -t COMPREPLY < <(compgen -f -- "$current")
        ;;
      :folders)
        compopt -o filenames
        mapfile -t COMPREPLY < <(compgen -d -- "$current")
        ;;
      *) COMPREPLY+=("${line%%$'\t'*}") ;;
    esac
  done < <(corvanectl complete -- "${COMP_WORDS[@]:1:COMP_CWORD}" 2>/dev/null)
}
complete -F _corvanectl corvanectl
