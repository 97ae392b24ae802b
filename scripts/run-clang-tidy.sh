#!/usr/bin/env bash
# Runs clang-tidy, with the checks in .clang-tidy, over the project's own native sources
# in a build's compile database, and fails on any finding.
#   scripts/run-clang-tidy.sh BUILD_DIR     e.g. scripts/run-clang-tidy.sh build/ci
# The sources are those of framework/, formats/, reconcile/, quickbooks/, hosts/cli/,
# hosts/scripted/, tests/ and bench/ (hosts/com/ and hosts/win32/ are cross-built only and
# are not in a native build); the headers reported on are theirs too, so the files a build
# generates under build/ are left out.
set -euo pipefail
cd "$(dirname "$0")/.."

build=${1:?usage: scripts/run-clang-tidy.sh BUILD_DIR}
database="$build/compile_commands.json"
[[ -f $database ]] || {
  echo "run-clang-tidy: no $database (configure the build first)" >&2
  exit 2
}
# The checkout as the build names it (the paths in the database and in its diagnostics).
root=$(sed -n 's/^CMAKE_HOME_DIRECTORY:INTERNAL=//p' "$build/CMakeCache.txt" 2>/dev/null || true)
[[ -n $root ]] || root=$(pwd -P)
jobs=$(nproc 2>/dev/null || echo 2)

# Files left out of the run, relative to the root: sources still to be cleaned. Each
# is taken off this list once clang-tidy passes it.
pending=()

# A path as an extended regular expression (clang-tidy's and Python's alike).
quote() { sed -e 's/[][\\.*^$+?(){}|]/\\&/g' <<<"$1"; }
here=$(quote "$root")
folders='framework|formats|reconcile|quickbooks|hosts/cli|hosts/scripted|tests|bench'

# The sources to run on (a Python regular expression, matched against the database's
# absolute paths) and the headers whose findings count (clang-tidy's, which has no
# look-ahead: with files left out, it names every other header).
sources="^$here/($folders)/"
headers="^$here/($folders)/"
if ((${#pending[@]} > 0)); then
  echo "run-clang-tidy: left out until cleaned: ${pending[*]}" >&2
  left_out=$(for file in "${pending[@]}"; do quote "$file"; done | paste -sd '|')
  sources="^$here/(?!($left_out)\$)($folders)/"
  IFS='|' read -ra folder_list <<<"$folders"
  kept=$(find "${folder_list[@]}" -type f \( -name '*.h' -o -name '*.hpp' \) |
           grep -vxF -f <(printf '%s\n' "${pending[@]}") |
           while read -r file; do quote "$file"; done | paste -sd '|')
  headers="^$here/($kept)\$"
fi

# The database is GCC's: clang is told to pass over the warning options it does not know.
# run-clang-tidy prints each file's command and clang's count of the warnings it held
# back (those outside the project's files); only the findings are worth reading, without
# the colour it asks for.
run-clang-tidy -quiet -j "$jobs" -p "$build" -header-filter "$headers" \
  -extra-arg=-Wno-unknown-warning-option "$sources" 2>&1 |
  sed -u -E -e 's/\x1b\[[0-9;]*m//g' -e '/^clang-tidy(-[0-9]+)? /d' \
    -e '/^[0-9]+ warnings? (and [0-9]+ errors? )?generated\.$/d'
echo "run-clang-tidy: no findings"
