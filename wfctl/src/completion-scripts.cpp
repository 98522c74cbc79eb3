// What the shells run: they ask `wfctl --complete`, and hand out what it says.

#include "completion.h"

namespace Wfctl {

namespace {

constexpr char kBash[] = R"(# bash completion for wfctl
# Bash takes words apart at "=", "@" and ":", which belong to words of wfctl: $words are whole, up to the cursor.
# The last is split further: of it bash takes what stands behind $head.
_wfctl_words()
{
    local rest=${COMP_LINE:0:COMP_POINT} part i
    rest=${rest#*"${COMP_WORDS[0]}"}
    for ((i = 1; i <= COMP_CWORD; i++)); do
        if [[ $rest == [[:space:]]* ]]; then
            rest=${rest#"${rest%%[![:space:]]*}"}
            words+=("")
        fi
        part=${COMP_WORDS[i]}
        [[ $rest == "$part"* ]] || part=$rest
        rest=${rest#"$part"}
        [ "$i" -lt "$COMP_CWORD" ] || head=${words[${#words[@]}-1]}
        words[${#words[@]}-1]+=$part
    done
    case $part in
        [\'\"]*) quote=${part:0:1} ;;
        [=@:]*) head+=$part ;;
    esac
    # A "@" in front of a word bash takes as its first letter.
    [ -n "$quote" ] || head=${head%@}
    for i in "${!words[@]}"; do _wfctl_unquote "${words[i]}" "words[$i]"; done
    _wfctl_unquote "$head" head
}
# What a word is without its quotes, into the variable $2.
_wfctl_unquote()
{
    local i c in= plain=
    for ((i = 0; i < ${#1}; i++)); do
        c=${1:i:1}
        if [[ $c == "$in" ]]; then
            in=
        elif [[ -z $in && $c == [\'\"] ]]; then
            in=$c
        elif [[ $in != "'" && $c == '\' ]]; then
            i=$((i + 1))
            plain+=${1:i:1}
        else
            plain+=$c
        fi
    done
    printf -v "$2" %s "$plain"
}
_wfctl()
{
    local line typed i files= head= quote=
    local -a words=()
    _wfctl_words
    typed=${words[${#words[@]}-1]}
    COMPREPLY=()
    while IFS= read -r line; do
        if [ "$line" = ":files" ]; then files=1; else COMPREPLY+=("${line%%$'\t'*}"); fi
    done < <("${COMP_WORDS[0]}" --complete "${words[@]}" 2>/dev/null)
    if [ -n "$files" ]; then
        compopt -o filenames 2>/dev/null
        mapfile -t -O "${#COMPREPLY[@]}" COMPREPLY < <(compgen -f -- "$typed")
    fi
    for i in "${!COMPREPLY[@]}"; do
        line=${COMPREPLY[i]:${#head}}
        [[ $line == *[=@:] && ${#COMPREPLY[@]} -eq 1 ]] && compopt -o nospace 2>/dev/null
        # Files, and what stands between quotes, bash quotes itself.
        [[ -n $files$quote || $line != *[!A-Za-z0-9_.,/=@:+%-]* ]] || printf -v line %q "$line"
        COMPREPLY[i]=$line
    done
}
complete -F _wfctl wfctl
)";

constexpr char kZsh[] = R"(#compdef wfctl
# zsh completion for wfctl
_wfctl()
{
    local line word entry
    local -a described begun
    local files=
    while IFS= read -r line; do
        if [[ $line == ":files" ]]; then
            files=1
        else
            word=${line%%$'\t'*}
            entry=${word//:/\\:}
            [[ $line == *$'\t'* ]] && entry+=:${line#*$'\t'}
            if [[ $word == *[=@:] ]]; then begun+=("$entry"); else described+=("$entry"); fi
        fi
    done < <("${words[1]}" --complete "${(@Q)words[2,CURRENT-1]}" "${(Q)PREFIX}" 2>/dev/null)
    (( ${#described} )) && _describe wfctl described
    (( ${#begun} )) && _describe wfctl begun -S ''
    [[ -n $files ]] && _files
    return 0
}
if [[ ${funcstack[1]} == _wfctl ]]; then _wfctl "$@"; else compdef _wfctl wfctl; fi
)";

constexpr char kFish[] = R"(# fish completion for wfctl
function __wfctl_complete
    set -l words (commandline -opc) (commandline -ct)
    for line in (command $words[1] --complete $words[2..-1] 2>/dev/null)
        if test "$line" = ":files"
            __fish_complete_path (commandline -ct)
        else
            printf '%s\n' $line
        end
    end
end
complete -c wfctl -f -a '(__wfctl_complete)'
)";

struct Script {
    std::string_view shell;
    const char* text;
};
constexpr Script kScripts[] = {
    {"bash", kBash},
    {"zsh",  kZsh },
    {"fish", kFish},
};

}  // namespace

const char* CompletionScript(std::string_view shell)
{
    for (const Script& script : kScripts) {
        if (script.shell == shell) return script.text;
    }
    return nullptr;
}

}  // namespace Wfctl
