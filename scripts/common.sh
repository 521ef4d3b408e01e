# Shared by the scripts beside it; sourced, not run. Leaves the shell in the project's top folder.

set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
export LC_ALL=C.UTF-8

say() { printf '\n== %s\n' "$*"; }

die() {
  printf '%s: %s\n' "$0" "$*" >&2
  exit 1
}

as_root() {
  if [ "$(id -u)" -eq 0 ]; then
    "$@"
  elif command -v sudo >/dev/null; then
    sudo "$@"
  else
    die "packages are missing; become root or install sudo, then start this again"
  fi
}

wanted_packages() { sed -e 's/#.*//' -e '/^[[:space:]]*$/d' scripts/packages; }

installed_packages() {
  # dpkg-query fails when it does not know one of the names; that one is simply missing.
  wanted_packages | xargs dpkg-query --show --showformat='${db:Status-Status} ${Package}\n' 2>/dev/null |
    sed -n 's/^installed //p' || true
}

missing_packages() { comm -23 <(wanted_packages | sort -u) <(installed_packages | sort -u); }

# Asks apt for nothing when nothing is missing, so that a second call starts at once and works offline.
install_missing_packages() {
  command -v dpkg-query >/dev/null || die "this needs Debian 12 or a relative of it"
  local missing
  missing=$(missing_packages)
  [ -n "$missing" ] || return 0
  say "Installing:" $missing
  as_root apt-get update </dev/null
  as_root env DEBIAN_FRONTEND=noninteractive \
    apt-get install --yes --no-install-recommends $missing </dev/null
}

# build PRESET [TARGET]: configures and builds in build/PRESET.
build() {
  local preset=$1 target=${2:-all}
  say "Building $target ($preset)"
  cmake --preset "$preset"
  cmake --build --preset "$preset" --target "$target"
}
