// completion: the scripts that complete kel4x in a shell. Verbs and flags are written into them, the names of
// members are asked for while completing.
#include <algorithm>

#include "terminal.h"
#include "verbs.h"

namespace kel4x {
namespace {

std::string Quote(std::string_view text) {
  std::string quoted;
  for (const char c : text) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return quoted;
}

std::string Joined(const std::vector<std::string>& words) {
  std::string joined;
  for (const std::string& word : words) joined += (joined.empty() ? "" : " ") + word;
  return joined;
}

constexpr char kBash[] = R"sh(# Completion of kel4x for bash: source <(kel4x completion bash)
_kel4x() {
  local word=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD-1]} verb= at
  for ((at = 1; at < COMP_CWORD; ++at)); do
    case ${COMP_WORDS[at]} in
      --resource|--timeout|--setting|--config|--trace-file) ((++at)) ;;
      -*) ;;
      *) verb=${COMP_WORDS[at]}; break ;;
    esac
  done
  case $previous in
    --config|--trace-file|--report|--csv|--pty) COMPREPLY=($(compgen -f -- "$word")); return ;;
    --resource) COMPREPLY=($(compgen -W 'SIM' -- "$word")); return ;;
  esac
  if [ -z "$verb" ]; then
    COMPREPLY=($(compgen -W '@VERBS@ @COMMON@' -- "$word"))
    return
  fi
  if [[ $word == -* ]]; then
    case $verb in
@FLAGS@
    esac
    return
  fi
  case $verb in
    get|watch) COMPREPLY=($(compgen -W "$(kel4x members --names 2>/dev/null)" -- "$word")) ;;
    set)
      if ((COMP_CWORD == at + 1)); then
        COMPREPLY=($(compgen -W "$(kel4x members --names 2>/dev/null)" -- "$word"))
      elif ((COMP_CWORD == at + 2)); then
        COMPREPLY=($(compgen -W "$(kel4x members "${COMP_WORDS[at+1]}" --names 2>/dev/null)" -- "$word"))
      fi ;;
    call|members) COMPREPLY=($(compgen -W "$(kel4x members --names --all 2>/dev/null)" -- "$word")) ;;
    screenshot|replay) COMPREPLY=($(compgen -f -- "$word")) ;;
    completion) COMPREPLY=($(compgen -W 'bash zsh fish' -- "$word")) ;;
  esac
}
complete -F _kel4x kel4x
)sh";

constexpr char kZsh[] = R"sh(#compdef kel4x
# Completion of kel4x for zsh: kel4x completion zsh > a folder of $fpath/_kel4x
_kel4x() {
  local -a verbs
  verbs=(
@VERBS@
  )
  local verb= at
  for ((at = 2; at < CURRENT; ++at)); do
    case ${words[at]} in
      --resource|--timeout|--setting|--config|--trace-file) ((++at)) ;;
      -*) ;;
      *) verb=${words[at]}; break ;;
    esac
  done
  if [[ -z $verb ]]; then
    if [[ ${words[CURRENT]} == -* ]]; then compadd -- @COMMON@; else _describe verb verbs; fi
    return
  fi
  if [[ ${words[CURRENT]} == -* ]]; then
    case $verb in
@FLAGS@
    esac
    return
  fi
  case $verb in
    get|watch) compadd -- ${(f)"$(kel4x members --names 2>/dev/null)"} ;;
    set)
      if ((CURRENT == at + 1)); then compadd -- ${(f)"$(kel4x members --names 2>/dev/null)"}
      else compadd -- ${(f)"$(kel4x members ${words[at+1]} --names 2>/dev/null)"}; fi ;;
    call|members) compadd -- ${(f)"$(kel4x members --names --all 2>/dev/null)"} ;;
    screenshot|replay) _files ;;
    completion) compadd -- bash zsh fish ;;
  esac
}
if [[ ${funcstack[1]} == _kel4x ]]; then _kel4x "$@"; else compdef _kel4x kel4x; fi
)sh";

constexpr char kFish[] =
    R"sh(# Completion of kel4x for fish: kel4x completion fish > ~/.config/fish/completions/kel4x.fish
complete -c kel4x -f
)sh";

std::string Replaced(std::string text, std::string_view mark, std::string_view by) {
  for (auto at = text.find(mark); at != std::string::npos; at = text.find(mark, at + by.size())) {
    text.replace(at, mark.size(), by);
  }
  return text;
}

std::string FishScript(const std::vector<VerbSummary>& verbs) {
  std::string script = kFish;
  for (const VerbSummary& verb : verbs) {
    script +=
        "complete -c kel4x -n __fish_use_subcommand -a " + verb.name + " -d '" + Quote(verb.sentence) + "'\n";
    for (const std::string& flag : verb.flags) {
      script +=
          "complete -c kel4x -n '__fish_seen_subcommand_from " + verb.name + "' -l " + flag.substr(2) + "\n";
    }
  }
  script +=
      "complete -c kel4x -n '__fish_seen_subcommand_from get set watch' -a '(kel4x members --names)'\n"
      "complete -c kel4x -n '__fish_seen_subcommand_from call members' -a '(kel4x members --names --all)'\n"
      "complete -c kel4x -n '__fish_seen_subcommand_from completion' -a 'bash zsh fish'\n"
      "complete -c kel4x -n '__fish_seen_subcommand_from screenshot replay' -F\n";
  return script;
}

}  // namespace

ExitCode Completion(const Arguments& arguments) {
  const std::vector<VerbSummary> verbs = SummariseVerbs();
  const std::string& shell = arguments.words.at(0);
  if (shell == "fish") {
    terminal::WriteOutput(FishScript(verbs));
    return kDone;
  }
  std::vector<std::string> names;
  std::string described;
  std::string flags;
  const bool bash = shell == "bash";
  // What every verb takes may also stand before the verb.
  std::vector<std::string> common = verbs.front().flags;
  for (const VerbSummary& verb : verbs) {
    names.push_back(verb.name);
    described += "    '" + verb.name + ":" + Quote(verb.sentence) + "'\n";
    flags += "      " + verb.name + ") " +
             (bash ? "COMPREPLY=($(compgen -W '" + Joined(verb.flags) + "' -- \"$word\")) ;;\n"
                   : "compadd -- " + Joined(verb.flags) + " ;;\n");
    std::erase_if(common, [&](const std::string& flag) {
      return std::find(verb.flags.begin(), verb.flags.end(), flag) == verb.flags.end();
    });
  }
  if (!flags.empty()) flags.pop_back();
  if (!described.empty()) described.pop_back();
  std::string script = Replaced(bash ? kBash : kZsh, "@VERBS@", bash ? Joined(names) : described);
  script = Replaced(std::move(script), "@COMMON@", Joined(common));
  script = Replaced(std::move(script), "@FLAGS@", flags);
  terminal::WriteOutput(script);
  return kDone;
}

}  // namespace kel4x
