# Sourced by demo.sh and test.sh: installs the packages of tools/packages that are missing, and
# builds. Needs Debian 12 (or a later release with the same packages).

# zel_missing_packages LIST: the packages of a list that this architecture has and that are not
# installed.
zel_missing_packages() {
  local package architectures
  grep -v '^#' "$1" | while read -r package architectures; do
    [[ -z $architectures || " $architectures " == *" $(dpkg --print-architecture) "* ]] || continue
    [ "$(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null)" = installed ] ||
      echo "$package"
  done
}

# zel_install [LIST]: installs them (of tools/packages), as root or through sudo; otherwise says what
# is missing and stops.
zel_install() {
  local missing
  missing=$(zel_missing_packages "${1:-tools/packages}" | tr '\n' ' ')
  [ -n "$missing" ] || return 0
  local as_root=""
  if [ "$(id -u)" -ne 0 ]; then
    if command -v sudo >/dev/null && sudo -n true 2>/dev/null; then
      as_root="sudo"
    else
      echo "These Debian packages are missing; please have them installed, then run this again:" >&2
      echo "  apt-get install $missing" >&2
      exit 1
    fi
  fi
  echo "Installing: $missing" >&2
  $as_root apt-get update -qq >&2
  # shellcheck disable=SC2086
  $as_root env DEBIAN_FRONTEND=noninteractive \
    apt-get install -y -qq --no-install-recommends $missing >&2
}

# zel_build PRESET [target ...]: configures build/PRESET and builds all, or these targets.
zel_build() {
  local preset=$1
  shift
  local log
  log=$(mktemp)
  if ! cmake --preset "$preset" >"$log" 2>&1; then
    cat "$log" >&2
    exit 1
  fi
  rm -f "$log"
  cmake --build --preset "$preset" ${1:+--target "$@"} >&2
}
