# bash completion for qvdb: commands, each command's options, and the field names of the
# database named on the line (read with `qvdb info --format json`, never asking for a password).

_qvdb_fields() {
  local file=$1
  [[ -f $file ]] || return
  QUORVANT_PASSWORD= qvdb info "$file" --format json </dev/null 2>/dev/null |
    sed -n 's/.*"name": "\([^"]*\)", "type".*/\1/p'
}

_qvdb() {
  local cur prev words cword
  _init_completion 2>/dev/null || {
    cur=${COMP_WORDS[COMP_CWORD]}
    prev=${COMP_WORDS[COMP_CWORD - 1]}
    words=("${COMP_WORDS[@]}")
    cword=$COMP_CWORD
  }
  if ((cword == 1)); then
    COMPREPLY=($(compgen -W "$(qvdb help 2>/dev/null | sed -n 's/^  qvdb \([a-z]*\).*/\1/p' | sort -u) help" -- "$cur"))
    return
  fi
  local command=${words[1]} file=${words[2]}
  local IFS=$'\n'
  case $prev in
    --field | --fields | --sort | --where)
      if [[ $command != new ]]; then
        COMPREPLY=($(compgen -W "$(_qvdb_fields "$file")" -- "$cur"))
        return
      fi
      ;;
    --format)
      COMPREPLY=($(compgen -W $'text\ntsv\ncsv\njson\njsonl' -- "$cur"))
      return
      ;;
    --encoding)
      COMPREPLY=($(compgen -W $'utf-8\ncp1252' -- "$cur"))
      return
      ;;
    --password-file | --new-password-file | --from-csv)
      COMPREPLY=($(compgen -f -- "$cur"))
      return
      ;;
  esac
  if [[ $cur == -* ]]; then
    COMPREPLY=($(compgen -W "$(qvdb "$command" --help 2>/dev/null | grep -o -- '--[a-z-]*' | sort -u)" -- "$cur"))
  elif ((cword == 2)); then
    COMPREPLY=($(compgen -f -- "$cur" | grep -i '\.pdb$') $(compgen -d -- "$cur"))
    [[ $command == alarm ]] && COMPREPLY+=($(compgen -W $'list\ndue' -- "$cur"))
  elif [[ $command == alarm ]]; then
    ((cword == 3)) && [[ $file != list && $file != due ]] &&
      COMPREPLY=($(compgen -W $'set\nclear' -- "$cur"))
  elif [[ $command == plugin ]]; then
    case $cword in
      3) COMPREPLY=($(compgen -W "$(_qvdb_fields "$file")" -- "$cur")) ;;
      4) COMPREPLY=($(compgen -W $'configure\ncall' -- "$cur")) ;;
      5) [[ $prev == call ]] && COMPREPLY=($(compgen -W $'init\nsave\nselect' -- "$cur")) ;;
    esac
  elif [[ $command == link ]] && ((cword == 4)); then
    COMPREPLY=($(compgen -W "$(_qvdb_fields "$file")" -- "$cur"))
  elif [[ $command == add || $command == set ]]; then
    COMPREPLY=($(compgen -S = -W "$(_qvdb_fields "$file")" -- "$cur"))
    compopt -o nospace 2>/dev/null
  else
    COMPREPLY=($(compgen -f -- "$cur"))
  fi
}
complete -F _qvdb qvdb
