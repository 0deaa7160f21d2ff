# shellcheck shell=bash
# Sourced by scripts of several steps: says at the end where the minutes went.

_steps=()
trap 'printf "%s\n" "" "Minutes:" "${_steps[@]}"' EXIT

# step NAME COMMAND…: runs a command and takes its time. Returns what it returns; to be called
# where errors end the script, as they end a command that is a function.
step() {
  local name=$1 begun=$SECONDS status taken
  shift
  set +e
  (
    set -e
    "$@"
  )
  status=$?
  set -e
  taken=$((SECONDS - begun))
  _steps+=("$(printf '%4d:%02d  %s' $((taken / 60)) $((taken % 60)) "$name")")
  return "$status"
}
