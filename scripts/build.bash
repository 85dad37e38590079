# For scripts that build: needed Debian packages, configuring and compiling. They run in the root of
# the tree.
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
  libmaxminddb-dev libmicrohttpd-dev)
data_packages=(sqlite3 python3)
leaflet_packages=(libjs-leaflet)
test_packages=(libgtest-dev libgmock-dev openssl "${leaflet_packages[@]}")
browser_packages=(chromium chromium-driver python3-selenium)
proxy_packages=(stunnel4 haproxy)
container_packages=(mmdebstrap buildah)
desktop_packages=(xvfb openbox trayer xdotool x11-utils imagemagick fonts-dejavu-core openssl)
deb_packages=(dpkg-dev file lintian appstream)
# SQLite's one-file form needs tcl, Qt's configuration pkgconf.
windows_packages=(g++-mingw-w64-x86-64-posix dpkg-dev tcl pkgconf qt6-base-dev-tools nsis zip
  "${leaflet_packages[@]}")
wine_packages=(wine wine64 fonts-wine curl)
# llvm has llvm-symbolizer, which names the functions of a leak.
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
  with_progress "reading the package lists" "${as_root[@]}" apt-get -q update
  with_progress "installing" "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
    apt-get -q install -y --no-install-recommends "${missing[@]}"
}

# Installs what a preset needs.
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
  # Otherwise it caches nothing that uses precompiled headers.
  export CCACHE_SLOPPINESS=pch_defines,time_macros
fi

# Outside the tree, so that they are built once per machine.
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

# full_version PRESET: the version that was configured.
full_version() { sed -n 's/^CORVANE_FULL_VERSION:INTERNAL=//p' "build/$1/CMakeCache.txt"; }
