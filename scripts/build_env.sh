# Sourced by ./run and ./test: installs what is missing, and builds with the output in a log.

quastel_root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
quastel_logs=$quastel_root/build/logs

note() { echo "$*" >&2; }

# logged NAME COMMAND...: runs the command with its output in build/logs/NAME.log, and shows the end
# of that log when it fails.
logged() {
  local log=$quastel_logs/$1.log
  shift
  mkdir -p "$quastel_logs"
  if ! "$@" </dev/null >"$log" 2>&1; then
    note "failed: $*"
    tail -n 60 "$log" >&2
    note "(all of it: $log)"
    return 1
  fi
}

missing_packages=()

# want_command COMMAND PACKAGE, want_file FILE PACKAGE, want_package PACKAGE
want_command() { command -v "$1" >/dev/null 2>&1 || missing_packages+=("$2"); }
want_file() { [[ -e $1 ]] || missing_packages+=("$2"); }
want_package() {
  dpkg-query -W -f '${Status}' "$1" 2>/dev/null | grep -q ' installed$' || missing_packages+=("$1")
}

install_missing() {
  ((${#missing_packages[@]})) || return 0
  local sudo=()
  if ((EUID != 0)); then
    sudo=(sudo)
  fi
  if ! command -v apt-get >/dev/null; then
    note "please install: ${missing_packages[*]}"
    return 1
  fi
  note "installing: ${missing_packages[*]} ..."
  logged apt-update "${sudo[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -q update
  logged apt-install "${sudo[@]}" env DEBIAN_FRONTEND=noninteractive \
    apt-get -q -y --no-install-recommends install "${missing_packages[@]}"
  missing_packages=()
}

# What the DLL, the client and Wine need.
install_for_windows() {
  want_command cmake cmake
  want_command ninja ninja-build
  want_command x86_64-w64-mingw32-g++-posix g++-mingw-w64-x86-64-posix
  want_command x86_64-w64-mingw32-gcc-posix gcc-mingw-w64-x86-64-posix
  want_command x86_64-w64-mingw32-windres binutils-mingw-w64-x86-64
  want_command wine wine
  want_command wineserver wine
  # The command is there without the loader for 64-bit programs as well.
  [[ -x /usr/lib/wine/wine64 || -x /usr/bin/wine64 ]] || want_package wine64
  want_command python3 python3
  want_command taskset util-linux
  want_command pkg-config pkgconf
  want_file /usr/src/googletest/CMakeLists.txt googletest
  want_file /usr/include/CLI/CLI.hpp libcli11-dev
  want_file /usr/include/nlohmann/json.hpp nlohmann-json3-dev
  install_missing
}

# What the tests on the host need besides.
install_for_host() {
  want_command g++ g++
  want_command gcc gcc
  want_command clang++ clang
  want_command xxhsum xxhash
  want_command valgrind valgrind
  want_file /usr/include/expat.h libexpat1-dev
  want_file /usr/include/assert.h libc6-dev
  install_missing
  # The sanitizers' runtime is a package of its own on some releases, named after clang's version.
  mkdir -p "$quastel_logs"
  if ! echo 'int main() { return 0; }' |
      clang++ -fsanitize=address -x c++ - -o "$quastel_logs/sanitizer_probe" 2>/dev/null; then
    missing_packages+=("libclang-rt-$(clang -dumpversion | cut -d. -f1)-dev")
    install_missing
  fi
}

# What the tests of the bindings for other languages need besides. npm fetches what they run; see
# scripts/fetch_packages.py.
install_for_bindings() {
  want_command npm npm
  want_command mcs mono-mcs
  want_command mono mono-runtime
  install_missing
}

# What the static checks need.
install_for_checks() {
  want_command cppcheck cppcheck
  if ! command -v clang-tidy-14 >/dev/null; then
    # The checks were chosen for this version; where there is no such package any one has to do.
    if apt-cache show clang-tidy-14 >/dev/null 2>&1; then
      missing_packages+=(clang-tidy-14)
    else
      want_command clang-tidy clang-tidy
    fi
  fi
  install_missing
}

# What the tests of the client's pages need: a browser, and a way to drive it.
install_for_html() {
  want_command chromium chromium
  want_command chromedriver chromium-driver
  want_package python3-selenium
  install_missing
}

# What the tests of the documents need: the pages about the interface, and the schema of the reports.
install_for_docs() {
  want_command doxygen doxygen
  want_package python3-jsonschema
  install_missing
}

# build_preset PRESET [TARGET...]: configures once, then builds; all targets when none is named.
build_preset() {
  local preset=$1 tree=$quastel_root/build/$1
  shift
  local targets=()
  if (($#)); then
    targets=(--target "$@")
  fi
  if [[ ! -e $tree/build.ninja ]]; then
    logged "configure-$preset" cmake -S "$quastel_root" --preset "$preset"
  fi
  # A dry run says whether there is anything to say.
  if ! ninja -C "$tree" -n "$@" 2>/dev/null | grep -q 'no work to do'; then
    note "building ($preset) ..."
    logged "build-$preset" cmake --build "$tree" "${targets[@]}"
  fi
}
