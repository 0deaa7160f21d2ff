#!/usr/bin/env bash
# check-sources.sh BUILD-FOLDER: holds the sources to .clang-format, and those that
# the folder compiles to .clang-tidy.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
build=$1

mapfile -d '' sources < <(find app views model platform tests benchmarks fuzz \
  \( -name '*.cpp' -o -name '*.h' \) -print0)
echo "clang-format: ${#sources[@]} files"
clang-format-19 --dry-run --Werror "${sources[@]}"

mapfile -t compiled < <(sed -n 's/^ *"file": "\(.*\)",\{0,1\}$/\1/p' "$build/compile_commands.json" |
  grep -v "/$build/" | sort -u)
echo "clang-tidy: ${#compiled[@]} files"
# Says how many warnings it suppressed in the system's headers, whatever it is told.
printf '%s\0' "${compiled[@]}" |
  xargs -0 -n 1 -P "$(nproc)" clang-tidy-19 -p "$build" --quiet \
    2> >(grep -v '^[0-9]* warnings\{0,1\} generated\.$' >&2)
