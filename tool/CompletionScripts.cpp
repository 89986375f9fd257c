#include <tool/Completion.h>

namespace orvo::tool {

// Each asks the tool with the words up to the cursor, and puts what it answers into the shell's
// form. `:files` in an answer stands for the names of files.

namespace {

// The words are read anew because bash splits them at "=" and ":", too; only what stands behind
// the last of these is replaced by a candidate.
const char* const kBash = R"shell(_orvo() {
  local typed=${COMP_LINE:0:COMP_POINT} candidate words=()
  read -a words <<<"$typed"
  [[ $typed != *[[:space:]] ]] || words+=("")
  local word=${words[-1]}
  local kept=${word%"${word##*[=:]}"}
  COMPREPLY=()
  while IFS=$'\t' read -r candidate _; do
    if [[ $candidate == :files ]]; then
      compopt -o default
      continue
    fi
    candidate=${candidate#"$kept"}
    [[ $candidate != *[^a-zA-Z0-9_.,:/@%+-]* ]] || candidate=$(printf %q "$candidate")
    COMPREPLY+=("$candidate")
  done < <("${1/#\~\//$HOME/}" complete "${words[@]}" 2>/dev/null)
}
complete -F _orvo orvo
)shell";

const char* const kZsh = R"shell(#compdef orvo
_orvo() {
  local line files
  local -a candidates
  for line in "${(@f)$(_call_program orvo orvo complete "${(@q)${(@Q)words[1,CURRENT-1]}}" \
    ${(qq)${(Q)PREFIX}} 2>/dev/null)}"; do
    if [[ $line == :files ]]; then
      files=1
    elif [[ $line == *$'\t'* ]]; then
      candidates+=("${${line%%$'\t'*}//:/\\:}:${line#*$'\t'}")
    elif [[ -n $line ]]; then
      candidates+=("${line//:/\\:}")
    fi
  done
  (( ! $#candidates )) || _describe -V orvo candidates
  [[ -z $files ]] || _files
}
if [[ $funcstack[1] == _orvo ]]; then
  _orvo "$@"
else
  compdef _orvo orvo
fi
)shell";

const char* const kFish = R"shell(function __orvo_complete
    set -l words (commandline -opc)
    set -l typed (commandline -ct)
    for line in (orvo complete $words "$typed" 2>/dev/null)
        if test "$line" = :files
            __fish_complete_path "$typed"
        else
            printf '%s\n' "$line"
        end
    end
end
complete -c orvo -f -a '(__orvo_complete)'
)shell";

}  // namespace

std::string completionScript(const std::string& shell) {
  return shell == "bash" ? kBash : shell == "zsh" ? kZsh : kFish;
}

Values completionShells() { return anyOf({"bash", "zsh", "fish"}); }

}  // namespace orvo::tool
