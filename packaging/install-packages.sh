# shellcheck shell=bash
# Sourced by every script that needs Debian packages.

# install_packages GROUP…: installs what is missing of those groups of the list
# beside this file, saying which, as root or through sudo. Touches neither the
# network nor sudo when nothing is missing.
install_packages() {
  local list wanted missing apt group
  list=$(dirname "${BASH_SOURCE[0]}")/dependencies
  wanted=()
  for group in "$@"; do
    # shellcheck disable=SC2207
    wanted+=($(sed -n "s/^$group  *//p" "$list"))
  done

  missing=()
  local package
  for package in "${wanted[@]}"; do
    dpkg-query -W -f '${db:Status-Status}\n' "$package" 2>/dev/null | grep -qx installed ||
      missing+=("$package")
  done
  [ ${#missing[@]} -gt 0 ] || return 0

  echo "Installing Debian packages: ${missing[*]}"
  apt=(env DEBIAN_FRONTEND=noninteractive apt-get --quiet --option Dpkg::Use-Pty=0)
  if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || {
      echo "Neither root nor sudo: have these packages installed, then come back." >&2
      return 1
    }
    apt=(sudo "${apt[@]}")
  fi
  "${apt[@]}" update
  "${apt[@]}" install --yes --no-install-recommends "${missing[@]}"
}
