# For scripts that take minutes: shows the progress of a step, on a terminal in one line that is
# rewritten, and keeps all output of its programs in build/log.txt.
# shellcheck shell=bash

log=build/log.txt
mkdir -p build
: >"$log"

# with_progress WORDS COMMAND...: fails if the command does, after printing the relevant part of the
# log and where the rest is.
with_progress() {
  local words=$1 begin
  shift
  begin=$(wc -l <"$log")
  if ! "$@" </dev/null 2>&1 | tee -a "$log" | steps | show_steps "$words"; then
    {
      tail -n "+$((begin + 1))" "$log" | grep -vE "$routine" | head -n 150
      printf '%s: %s failed; the full log is %s\n' "${0##*/}" "$words" "$log"
    } >&2
    return 1
  fi
}

# Routine output of apt-get, ninja, cmake, GoogleTest, Qt and ctest.
routine='^(Get:|Hit:|Reading |Selecting |Preparing |Unpacking |Setting up |Processing |\(Reading )'
routine+='|^(\[[0-9]+/[0-9]+\]|--) |^\[( RUN| +OK|---|===)|^QStandardPaths|propagateSizeHints'
routine+='|^ *$|^Test project|^ +Start +[0-9]|Test +#.* Passed '

# Filters the output of apt-get, ninja and ctest down to the steps: "12/94 net_tests".
steps() {
  sed -unE '
    s,^\[([0-9]+/[0-9]+)\] .* ([^ ]+)$,\1 \2,
    t edge
    s,^ *([0-9]+/[0-9]+) Test +#[0-9]+: ([^ ]+) \.+ *(Passed|\*\*\*[A-Za-z]+) .*,\1 \2 \3,
    s, Passed$,,p
    s,\*\*\*(.*),\1,p
    s,^(Unpacking|Setting up) ([^ ]+).*,\1 \2,p
    d
    :edge
    s,[^ ]*CMakeFiles/([^/]*)\.dir/.*,\1,
    p'
}

show_steps() {
  local step rewrite='' end='\n'
  if [[ -t 1 ]]; then rewrite='\r\e[K' end=''; fi
  say_step() {
    printf "$rewrite== %s (%d:%02d)$end" "$1" $((SECONDS / 60)) $((SECONDS % 60))
  }
  say_step "$1"
  while read -r step; do say_step "$1: $step"; done
  if [[ -t 1 ]]; then printf '\n'; fi
}
