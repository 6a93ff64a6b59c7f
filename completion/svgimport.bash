# Completion of svgimport and svgimport-ops for bash. Commands and options come from the programs' own help.

_svgimport() {
  local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} help=("${COMP_WORDS[0]}") command=
  if [[ ${COMP_WORDS[0]##*/} == svgimport ]]; then
    if ((COMP_CWORD > 1)) && [[ ${COMP_WORDS[1]} != -* ]]; then
      command=${COMP_WORDS[1]}
      help+=("$command")
    fi
  fi
  local text
  text=$("${help[@]}" --help 2>/dev/null) || return
  COMPREPLY=()
  if [[ $before == -* ]]; then
    # The value of an option, when its help names the values as one|another.
    local values
    values=$(sed -nE "s/^ +(-[A-Za-z],)?$before ([a-z]+(\|[a-z]+)+).*/\2/p" <<<"$text")
    if [[ -n $values ]]; then
      mapfile -t COMPREPLY < <(compgen -W "${values//|/ }" -- "$word")
      return
    fi
  fi
  if [[ $word == -* ]]; then
    mapfile -t COMPREPLY < <(compgen -W "$(sed -nE 's/^ +(-[A-Za-z0-9],)?(--[a-z-]+).*/\2/p' <<<"$text")" -- "$word")
  elif [[ ${COMP_WORDS[0]##*/} == svgimport && -z $command ]]; then
    mapfile -t COMPREPLY < <(compgen -W "$(sed -nE '/^Subcommands:/,/^$/s/^  ([a-z]+).*/\1/p' <<<"$text")" -- "$word")
  else
    compopt -o filenames 2>/dev/null
    mapfile -t COMPREPLY < <(compgen -f -- "$word")
  fi
}
complete -F _svgimport svgimport svgimport-ops
