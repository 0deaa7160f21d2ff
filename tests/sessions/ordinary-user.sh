# shellcheck shell=bash
# Sourced by what works Quibel on the desktops of people.

# as_ordinary_user BUILD RESULTS COMMAND…: runs a command in the folder of these
# scenarios with QUIBEL_BUILD as the folder of the programs, and leaves what it writes
# into QUIBEL_RESULTS in RESULTS. For root it does so as nobody, with copies of all that
# it takes, as root's folders may be closed to others.
as_ordinary_user() {
  local build results stage status=0 user=()
  build=$(realpath "$1")
  mkdir -p "$2"
  results=$(realpath "$2")
  shift 2

  stage=$(mktemp -d /tmp/quibel-desktops-XXXXXX)
  # shellcheck disable=SC2064
  trap "rm -rf '$stage'" EXIT
  mkdir "$stage/build" "$stage/results"
  cp "$build"/quibel* "$stage/build"
  cp -r tests/program tests/sessions "$stage"
  if [ "$(id -u)" -eq 0 ]; then
    chmod 755 "$stage"
    chown nobody:nogroup "$stage/results"
    user=(setpriv --reuid=nobody --regid=nogroup --clear-groups --bounding-set=-sys_nice)
  fi

  (
    cd "$stage/sessions"
    "${user[@]}" env HOME="$stage/results" PYTHONPATH="$stage/program" QUIBEL_BUILD="$stage/build" \
      QUIBEL_RESULTS="$stage/results" QUIBEL_TEST_PATIENCE="${QUIBEL_TEST_PATIENCE:-3}" "$@"
  ) || status=$?
  cp -r "$stage/results/." "$results"
  return "$status"
}
