# Sourced by the set-up scripts: installs the Debian packages that are not there yet.
# Quick when everything is installed already: it only asks dpkg.

ensure_packages() {
  local missing=()
  local package
  for package in "$@"; do
    if ! dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed"; then
      missing+=("$package")
    fi
  done
  if [[ ${#missing[@]} -eq 0 ]]; then
    return 0
  fi
  echo "Installing: ${missing[*]}"
  local sudo=()
  if [[ $(id -u) -ne 0 ]]; then
    sudo=(sudo)
  fi
  "${sudo[@]}" apt-get update -qq
  DEBIAN_FRONTEND=noninteractive "${sudo[@]}" apt-get install -y -qq --no-install-recommends \
    "${missing[@]}"
}
