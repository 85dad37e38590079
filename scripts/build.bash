# For the scripts that build: the Debian packages that are needed, configuring and compiling. They
# run in the tree's root.
# shellcheck shell=bash
# Not every script uses every list.
# shellcheck disable=SC2034

say() { printf '== %s\n' "$*"; }

fail() {
  printf '%s: %s\n' "${0##*/}" "$*" >&2
  exit 1
}

# shellcheck source=scripts/progress.bash
. scripts/progress.bash

# ---- packages

build_packages=(g++ cmake ninja-build qt6-base-dev libsqlite3-dev libxml2-dev libpng-dev
  libmaxminddb-dev)
data_packages=(sqlite3 python3)
test_packages=(libgtest-dev libgmock-dev)
desktop_packages=(xvfb openbox trayer xdotool x11-utils imagemagick fonts-dejavu-core)
deb_packages=(dpkg-dev file lintian appstream)
# tcl makes SQLite's one-file form, pkgconf is what Qt's configuration asks for.
windows_packages=(g++-mingw-w64-x86-64-posix dpkg-dev tcl pkgconf qt6-base-dev-tools nsis zip)
wine_packages=(wine wine64 fonts-wine)
# llvm for llvm-symbolizer, without which leaks cannot be told apart by function.
clang_packages=(clang libclang-rt-14-dev llvm)
lint_packages=(git python3 clang-format clang-tidy shellcheck)

need() {
  local package missing=() as_root=()
  for package; do
    [[ $(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null) == installed* ]] ||
      missing+=("$package")
  done
  ((${#missing[@]} > 0)) || return 0
  say "installing ${missing[*]}"
  ((EUID == 0)) || as_root=(sudo)
  with_progress "reading the lists of packages" "${as_root[@]}" apt-get -q update
  with_progress "installing" "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
    apt-get -q install -y --no-install-recommends "${missing[@]}"
}

# What a preset needs to build all that it turns on.
need_for_preset() {
  case $1 in
    dev | debug) need "${build_packages[@]}" "${test_packages[@]}" ;;
    sanitizers) need "${build_packages[@]}" "${test_packages[@]}" "${clang_packages[@]}" ;;
    release) need "${build_packages[@]}" ;;
    windows) need "${build_packages[@]}" "${windows_packages[@]}" ;;
    *) fail "no such preset: $1 (dev, sanitizers, debug, release or windows)" ;;
  esac
}

# ---- building

if command -v ccache >/dev/null; then
  export CMAKE_CXX_COMPILER_LAUNCHER=ccache
  # It keeps nothing that was made with precompiled headers otherwise.
  export CCACHE_SLOPPINESS=pch_defines,time_macros
fi

# Outside of the tree, so that they are built once on a machine.
windows_libraries=${XDG_CACHE_HOME:-$HOME/.cache}/corvane-windows-libraries

# configure PRESET [CMAKE ARGS]
configure() {
  local more=()
  need_for_preset "$1"
  if [[ $1 == windows ]]; then
    packaging/windows/build-libraries "$windows_libraries"
    more=("-DCORVANE_WINDOWS_LIBRARIES=$windows_libraries")
  fi
  with_progress "configuring $1" cmake --preset "$@" "${more[@]}"
}

# compile PRESET [TARGET...]
compile() {
  local preset=$1
  shift
  with_progress "building $preset" \
    cmake --build "build/$preset" --parallel "$(nproc)" ${1:+--target "$@"}
}

# full_version PRESET: of what was configured.
full_version() { sed -n 's/^CORVANE_FULL_VERSION:INTERNAL=//p' "build/$1/CMakeCache.txt"; }
