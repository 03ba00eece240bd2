# Completion of quilloctl for bash: source this file, or put it where bash-completion looks. The program itself knows
# what can follow.

_quilloctl() {
  local program=${COMP_WORDS[0]/#\~/$HOME} words=() i word line colon
  # The shell takes ":" and "=" for ends of words; here they are parts of one.
  for ((i = 0; i <= COMP_CWORD; i++)); do
    word=${COMP_WORDS[i]}
    if ((i > 1)) && [[ ($word == [:=]* || ${COMP_WORDS[i-1]} == *[:=]) && ${COMP_WORDS[i-1]} != -* ]]; then
      words[-1]+=$word
    else
      words+=("$word")
    fi
  done
  # As the program would get them.
  for i in "${!words[@]}"; do
    word=${words[i]#[\"\']}
    word=${word%[\"\']}
    words[i]=${word//\\/}
  done

  COMPREPLY=()
  word=${words[-1]}
  # What the shell takes for earlier words is not to be replaced.
  colon=${word%"${word##*[:=]}"}
  while IFS=$'\t' read -r line _; do
    if [[ $line == :directories || $line == :files ]]; then
      compopt -o filenames 2>/dev/null
      [[ $line == :files ]] && i=-f || i=-d
      mapfile -t COMPREPLY < <(compgen "$i" -- "$word")
      return
    fi
    [[ $line == *[:=] ]] && compopt -o nospace 2>/dev/null
    line=${line#"$colon"}
    [[ $line == *[[:space:]]* ]] && printf -v line %q "$line"
    COMPREPLY+=("$line")
  done < <("$program" complete "${words[@]}" 2>/dev/null)
  # In the order in which the program names them: entries by their age.
  compopt -o nosort 2>/dev/null
}

complete -F _quilloctl quilloctl
