# Completion of quilloctl for bash: source this file, or put it where bash-completion looks.

_quilloctl() {
  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD-1]}
  local commands="settings journal entry reminder shortcut agent open-url post"
  local word command= sub= i
  COMPREPLY=()

  for ((i = 1; i < COMP_CWORD; i++)); do
    word=${COMP_WORDS[i]}
    case $word in
      --home) ((i++)) ;;
      -*) ;;
      *) if [ -z "$command" ]; then command=$word; elif [ -z "$sub" ]; then sub=$word; fi ;;
    esac
  done

  case $previous in
    --home) mapfile -t COMPREPLY < <(compgen -d -- "$current"); return ;;
    --type) mapfile -t COMPREPLY < <(compgen -W "bool int real string date data json" -- "$current"); return ;;
    --limit) return ;;
  esac

  local words=
  case $command:$sub in
    :) words="$commands --home --json --help --version" ;;
    settings:) words="list get set remove --help" ;;
    settings:list) words="--all" ;;
    settings:get|settings:set) words=$(quilloctl settings list --all 2>/dev/null | sed 's/ = .*//; s/ is not set.*//')
      [ "$sub" = set ] && words+=" --type --force" ;;
    settings:remove) words=$(quilloctl settings list 2>/dev/null | sed 's/ = .*//') ;;
    journal:) words="create set path check --help" ;;
    journal:create|journal:set) compopt -o filenames; mapfile -t COMPREPLY < <(compgen -d -- "$current"); return ;;
    entry:) words="list show add delete --help" ;;
    entry:list) words="--limit" ;;
    entry:show|entry:delete) words=$(quilloctl entry list 2>/dev/null | grep -oE '[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}')
      [ "$sub" = delete ] && words+=" --permanently" ;;
    reminder:) words="show set on off next --help" ;;
    reminder:set) words="--every --from --until --starting --zone" ;;
    reminder:next) words="-n --after --batch" ;;
    shortcut:) words="show set clear --help" ;;
    agent:) words="status enable disable start restart toggle --help" ;;
    open-url:*) _quilloctl_url; return ;;
    post:) words="com.quilloapp.QuilloJournalPackagePathDidChangeNotification
      com.quilloapp.QuilloMenuBarEntryShortcutDidChangeNotification
      com.quilloapp.QuilloReminderSettingsDidChangeNotification
      com.quilloapp.QuilloRemindersManagerValuesDidChangeNotification
      com.quilloapp.QuilloAgentManagerValuesDidChangeNotification" ;;
  esac
  # Of every command, and in the way until a dash is typed.
  [ "${current:0:1}" = - ] && words+=" --home --json --help"
  mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
}

# The shell takes ":" and "=" for ends of words, and each part of an URL for a word: the whole is completed, and what
# stands before the last part left out.
_quilloctl_url() {
  local typed=${COMP_LINE:0:COMP_POINT}
  typed=${typed##* }
  local before=${typed%"${typed##*[:=]}"}
  compopt -o nospace 2>/dev/null
  mapfile -t COMPREPLY < <(compgen -W "quillo://open quillo://preferences quillo://post quillo://edit?entryId=
    quillo://updatebookmarks" -- "$typed")
  COMPREPLY=("${COMPREPLY[@]#"$before"}")
}

complete -F _quilloctl quilloctl
