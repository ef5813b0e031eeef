# SPDX-License-Identifier: Apache-2.0
# Sourced by `run` and `test`: the packages that they need, and the configuration of a build.
# Expects to run in the root of the tree.

export LC_ALL=C.UTF-8 DEBIAN_FRONTEND=noninteractive
mkdir -p build/logs
# Without a home folder the compiler's cache lives with the build.
[[ -w "${HOME:-}" ]] || export CCACHE_DIR="$PWD/build/ccache"
# What the cache must overlook to know a precompiled header again, which is made just before its use.
export CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime
# What it does not know yet is compiled at once, not preprocessed first.
export CCACHE_DEPEND=1

# Lines of a log that only say that something went well.
chatter='^\[[0-9]+/[0-9]+\] |^ +Start +[0-9]+: |^ *[0-9]+/[0-9]+ Test .* Passed +[0-9.]+ sec$'

# What a log says last, in one line of the terminal that goes when there is no more to say.
last_line() {
  local line
  while IFS= read -r line; do printf '\r\033[K%.76s' "$line"; done
  printf '\r\033[K'
}

# quietly LOG COMMAND…: the output goes to a log, of which the end is shown on failure; on a terminal
# its last line is to be seen meanwhile. With pipefail, as all have it that come here.
quietly() {
  local log="build/logs/$1.log" status=0
  shift
  if [[ -t 2 ]]; then
    # As a condition: a caller that ends at its first failure is not to end before it is told.
    "$@" 2>&1 </dev/null | tee "$log" | last_line >&2 || status=${PIPESTATUS[0]}
  else
    "$@" >"$log" 2>&1 </dev/null || status=$?
  fi
  ((status)) || return 0
  grep -vE "$chatter" "$log" | tail -n 80 >&2 || true
  echo "FAILED: $* (all of the output: $log)" >&2
  return 1
}

# missing_packages NEED…: the packages of these rows of packages.txt that are not installed.
missing_packages() {
  local name need installed wanted=()
  while read -r name need _; do
    case "$name" in '' | '#'*) continue ;; esac
    [[ " $* " == *" $need "* ]] && wanted+=("$name")
  done <packages.txt
  installed=$(dpkg-query -W -f='${db:Status-Status} ${Package}\n' "${wanted[@]}" 2>/dev/null) ||
    true  # it fails where it does not know one of them
  for name in "${wanted[@]}"; do
    grep -qxF "installed $name" <<<"$installed" || echo "$name"
  done
}

# install_packages NEED…
install_packages() {
  local missing as_root=() apt_get=(apt-get -o DPkg::Lock::Timeout=600 -y)
  if ! command -v dpkg-query >/dev/null; then
    echo "This is no Debian system: the packages of packages.txt are taken to be there."
    return
  fi
  mapfile -t missing < <(missing_packages "$@")
  ((${#missing[@]})) || return 0
  if ((EUID != 0)); then
    if ! command -v sudo >/dev/null; then
      echo "Please install these packages as root, then start again:" >&2
      echo "  apt-get install ${missing[*]}" >&2
      return 1
    fi
    as_root=(sudo DEBIAN_FRONTEND=noninteractive)
    sudo -v || return
  fi
  echo "Installing ${#missing[@]} packages: ${missing[*]}"
  quietly packages-update "${as_root[@]}" "${apt_get[@]}" update || return
  quietly packages-install "${as_root[@]}" "${apt_get[@]}" install --no-install-recommends \
    "${missing[@]}" || return
  touch build/packages-changed
}

# configure PRESET: only if it was never done, or its inputs changed in a way that the build system
# does not see by itself.
configure() {
  local stamp="build/$1/configured"
  [[ -e "$stamp" && "$stamp" -nt CMakePresets.json && ! build/packages-changed -nt "$stamp" ]] &&
    return
  cmake --preset "$1" && touch "$stamp"
}
