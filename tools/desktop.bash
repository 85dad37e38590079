# For scripts that drive our windows on a display: waiting, pictures, menus. They set `folder`, for
# the pictures, and `main_window`.
# shellcheck shell=bash
# Not every script uses all that is set here, and those two are theirs.
# shellcheck disable=SC2034,SC2154

fail() {
  printf '%s: %s\n' "${0##*/}" "$*" >&2
  exit 1
}

# ---- waiting

# until_true COMMAND...: repeats the command until it succeeds, for ten seconds at most.
until_true() {
  local tries
  for ((tries = 0; tries < 200; tries++)); do
    if "$@"; then return 0; fi
    sleep 0.05
  done
  fail "not true within ten seconds: $*"
}

# Waits for a visible window with exactly that title and prints it.
window_titled() {
  local tries
  # A window that disappears during the search ends it.
  for ((tries = 0; tries < 5; tries++)); do
    if timeout 20 xdotool search --sync --onlyvisible --name "^$1\$" | tail -n 1; then return; fi
  done
  fail "no window with the title $1"
}

is_gone() { ! xdotool search --onlyvisible --name "^$1\$" >/dev/null 2>&1; }

is_active() { [[ $(xdotool getactivewindow 2>/dev/null) == "$1" ]]; }

# Menus are the windows of our programs without a frame, so they are children of the root window.
# Sets menu.
find_menu() {
  local window
  for window in $(xwininfo -root -children | awk '/\("corvane-/ { print $1 }'); do
    if xwininfo -id "$window" 2>/dev/null | grep -q 'Map State: IsViewable'; then
      menu=$window
      return 0
    fi
  done
  return 1
}

no_menu() { ! find_menu; }

# ---- pictures

# bounds WINDOW: prints left, top, right and bottom of the window with its frame.
bounds() {
  local left top width height frame=(0 0 0 0)
  read -r left top width height < <(xwininfo -id "$1" | awk '
    /Absolute upper-left X/ { x = $NF } /Absolute upper-left Y/ { y = $NF }
    /^  Width/ { w = $NF } /^  Height/ { print x, y, w, $NF }')
  IFS=', ' read -ra frame < <(xprop -id "$1" _NET_FRAME_EXTENTS | sed -n 's/.*= //p') || true
  echo "$((left - ${frame[0]:-0})) $((top - ${frame[2]:-0}))" \
    "$((left + width + ${frame[1]:-0})) $((top + height + ${frame[3]:-0}))"
}

# area WINDOW...: prints the part of the screen that shows the windows.
area() {
  local window
  for window; do bounds "$window"; done | awk '
    NR == 1 { l = $1; t = $2; r = $3; b = $4 }
    { l = $1 < l ? $1 : l; t = $2 < t ? $2 : t; r = $3 > r ? $3 : r; b = $4 > b ? $4 : b }
    END { l = l < 0 ? 0 : l; t = t < 0 ? 0 : t; printf "%dx%d+%d+%d", r - l, b - t, l, t }'
}

# snap NAME WINDOW...: takes a picture of the windows as they are now. With 256 colours it looks the
# same and is a third as large.
snap() {
  import -window root -crop "$(area "${@:2}")" +repage -strip +dither -colors 256 \
    -define png:compression-level=9 "PNG8:$folder/$1.png"
}

# capture NAME WINDOW...: takes a picture of the windows once they no longer change.
capture() {
  local name=$1 before='' now='' tries
  for ((tries = 0; tries < 50; tries++)); do
    snap "$@"
    now="$(area "${@:2}") $(identify -format '%#' "$folder/$name.png")"
    [[ $now != "$before" ]] || return 0
    before=$now
    sleep 0.15
  done
  fail "$name keeps changing"
}

# dialog TITLE NAME [ACTION...]: waits for the dialog, lets the action fill it, takes its picture
# and closes it. `main_window` is active then.
dialog() {
  local title=$1 name=$2 window
  shift 2
  window=$(window_titled "$title")
  until_true is_active "$window"
  if (($# > 0)); then "$@"; fi
  capture "$name" "$window"
  xdotool key Escape
  until_true is_gone "$title"
  until_true is_active "$main_window"
}

text() { xdotool type --delay 5 -- "$1"; }

# ---- menus

# show_menu KEY|at...: opens a menu and waits for it.
show_menu() {
  until_true no_menu
  "$@"
  until_true find_menu
}

# choose STEPS: chooses the item that many steps down the open menu.
choose() {
  local step
  for ((step = 0; step < $1; step++)); do xdotool key Down; done
  xdotool key Return
  until_true no_menu
}
