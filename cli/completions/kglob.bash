# Completion of kglob for bash.

_kglob() {
  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]} word
  COMPREPLY=()
  for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
    [[ $word == -- ]] && return
  done
  case $previous in
    -r | --root-folder)
      compopt -o filenames
      mapfile -t COMPREPLY < <(compgen -d -- "$current")
      ;;
    --library)
      compopt -o filenames
      mapfile -t COMPREPLY < <(compgen -f -- "$current")
      ;;
    *)
      [[ $current == -* ]] || return 0
      mapfile -t COMPREPLY < <(compgen -W '-r --root-folder -d --include-dot-files -0 --null --stats --library -h --help
        --version --' -- "$current")
      ;;
  esac
}

# Patterns are completed as file names.
complete -o default -F _kglob kglob
