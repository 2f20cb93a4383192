# Sourced by the two commands at the root.

# need PACKAGE[:FILE]... installs the Debian packages whose command or file (a pattern) is missing; as root, or with sudo.
need() {
  local missing=() item package witness
  for item in "$@"; do
    package=${item%%:*}
    witness=${item#*:}
    case $witness in
      /*) compgen -G "$witness" >/dev/null || missing+=("$package") ;;
      *) command -v "$witness" >/dev/null 2>&1 || missing+=("$package") ;;
    esac
  done
  [ ${#missing[@]} -eq 0 ] && return
  local sudo=()
  [ "$(id -u)" -eq 0 ] || sudo=(sudo)
  echo "installing ${missing[*]}" >&2
  "${sudo[@]}" apt-get update -qq >&2
  DEBIAN_FRONTEND=noninteractive "${sudo[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}" >&2
}
