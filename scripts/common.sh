# Shared by the scripts beside it; sourced, not run. Leaves the shell in the project's top folder.

set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
export LC_ALL=C.UTF-8

say() { printf '\n== %s\n' "$*"; }

die() {
  printf '%s: %s\n' "$0" "$*" >&2
  exit 1
}

# The packages that these lists of scripts/packages name.
wanted_packages() { (cd scripts/packages && sed -e 's/#.*//' -e '/^[[:space:]]*$/d' "$@" | sort -u); }

installed_packages() {
  # dpkg-query fails when it does not know one of the names; that one is simply missing.
  xargs dpkg-query --show --showformat='${db:Status-Status} ${Package}\n' 2>/dev/null | sed -n 's/^installed //p' || true
}

# What is installed is named twice.
missing_packages() {
  { wanted_packages "$@"; wanted_packages "$@" | installed_packages; } | sort | uniq --unique
}

# How much apt would install, in its own words; no lock, so that it can be asked without being root.
amount_of() {
  apt-get --option Debug::NoLocking=true install --assume-no --no-install-recommends "$@" 2>/dev/null </dev/null |
    grep -E '^([0-9]+ upgraded|Need to get|After this operation)' || true
}

install_packages() {
  local as_root=() by_hand="As root:
  apt-get update && apt-get install --no-install-recommends $*"
  if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || die "packages are missing, and there is no sudo to install them with. $by_hand"
    as_root=(sudo)
  fi
  say "Missing: $*"
  "${as_root[@]}" apt-get update </dev/null || die "the lists of packages could not be fetched. $by_hand"
  say "Installing them, and what they need"
  amount_of "$@"
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
    apt-get install --yes --no-install-recommends "$@" </dev/null ||
    die "the packages could not be installed. $by_hand"
}

# install_missing_packages LIST...: what is missing of these lists of scripts/packages. Asks apt for nothing when nothing
# is, so that a second call starts at once and works offline.
install_missing_packages() {
  command -v dpkg-query >/dev/null || die "this needs Debian 12 or 13, or a relative; CONTRIBUTING.md names packages of others"
  local missing
  missing=$(missing_packages "$@")
  [ -z "$missing" ] || install_packages $missing
}

# build PRESET [TARGET [OPTION...]]: configures, with these options of cmake, and builds in build/PRESET.
build() {
  local preset=$1 target=${2:-all}
  say "Building $target ($preset)"
  mkdir -p "build/$preset" 2>/dev/null && [ -w "build/$preset" ] ||
    die "$(id -un) may not write to $PWD/build/$preset; start this in a copy of your own"
  cmake --preset "$preset" "${@:3}"
  cmake --build --preset "$preset" --target "$target"
}

# Without what only tests and benchmarks need, unless they are being built in the same folder already.
build_application() {
  local options=(-D BUILD_TESTING=OFF -D DUNMERE_BUILD_BENCH=OFF)
  ! grep -qs '^BUILD_TESTING:.*=ON' build/release/CMakeCache.txt || options=()
  build release "$1" "${options[@]}"
}
