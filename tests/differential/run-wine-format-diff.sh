#!/usr/bin/env bash
# The Format engine and the classic conversions held to Wine's implementation of the
# Windows automation library: oleaut_oracle.c, built with MinGW for x86_64 and i686,
# answers the generated cases through VarFormat, VarR8FromStr, VarBstrFromR8 and
# VarDateFromStr under /usr/lib/wine/wine64 and /usr/lib/wine/wine; the project's
# engine, run natively by zorvat_format_diff, must give the same answers but for the
# short list of known Wine deviations kept in format_diff.cpp.
#
#   tests/differential/run-wine-format-diff.sh
#
# Builds zorvat_format_diff in the ci build tree (build/ci, or $ZORVAT_NATIVE_BUILD),
# the oracle under $ZORVAT_WINE_BUILD (default build/). Ends with "N passed, N failed"
# and exits non-zero when anything failed; a missing 32-bit Wine is a failure.
set -uo pipefail

source_dir=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
native_build=${ZORVAT_NATIVE_BUILD:-$source_dir/build/ci}
build_root=${ZORVAT_WINE_BUILD:-$source_dir/build}
work="$build_root/format-diff"

source "$source_dir/scripts/wine-test-support.sh"

need_install=0
for tool in x86_64-w64-mingw32-gcc i686-w64-mingw32-gcc wineserver; do
  command -v "$tool" >/dev/null || need_install=1
done
[[ -x /usr/lib/wine/wine64 && -x /usr/lib/wine/wine ]] || need_install=1
if ((need_install)); then
  "$source_dir/scripts/install-deps.sh" windows || { fail "installing the Windows tools"; finish; }
fi

mkdir -p "$work"
if [[ ! -f $native_build/CMakeCache.txt ]]; then
  (cd "$source_dir" && cmake --preset ci >/dev/null) || { fail "configuring build/ci"; finish; }
fi
if cmake --build "$native_build" -j 2 --target zorvat_format_diff >"$work/native-build.log" 2>&1; then
  pass "build of zorvat_format_diff"
else
  tail -n 30 "$work/native-build.log"
  fail "build of zorvat_format_diff, log in $work/native-build.log"
  finish
fi
diff_tool="$native_build/tests/differential/zorvat_format_diff"

cases="$work/cases.txt"
if "$diff_tool" generate >"$cases" 2>"$work/generate.log"; then
  pass "$(cat "$work/generate.log")"
else
  fail "generating the cases"
  finish
fi

prefix=$(mktemp -d "${TMPDIR:-/tmp}/zorvat-format-diff.XXXXXX")
export WINEPREFIX=$prefix WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml="
unset DISPLAY WAYLAND_DISPLAY
cleanup() {
  timeout 30 wineserver -k >/dev/null 2>&1
  rm -rf "$prefix"
}
trap cleanup EXIT
if timeout 300 /usr/lib/wine/wine64 wineboot -i >/dev/null 2>&1 && timeout 60 wineserver -w; then
  pass "fresh Wine prefix"
else
  fail "creating the Wine prefix $prefix"
  finish
fi


for arch in x86_64 i686; do
  wine=/usr/lib/wine/wine64
  [[ $arch == i686 ]] && wine=/usr/lib/wine/wine
  if [[ ! -x $wine ]]; then
    fail "$arch: $wine is not installed"
    continue
  fi
  oracle="$work/oleaut_oracle-$arch.exe"
  if ! "$arch-w64-mingw32-gcc" -O2 -Wall -Wextra -Werror -o "$oracle" \
      "$source_dir/tests/differential/oleaut_oracle.c" -loleaut32 2>"$work/oracle-$arch.log"; then
    cat "$work/oracle-$arch.log"
    fail "$arch: build of oleaut_oracle.exe"
    continue
  fi
  answers="$work/answers-$arch.txt"
  rm -f "$answers"
  timeout 900 "$wine" "$oracle" "$(windows_path "$cases")" "$(windows_path "$answers")" \
    >"$work/oracle-$arch.out" 2>&1
  if [[ ! -s $answers ]] || ! tail -n 1 "$answers" | grep -q '^end'; then
    fail "$arch: oleaut_oracle.exe under $wine wrote no complete answers"
    continue
  fi
  report=$("$diff_tool" compare "$cases" "$answers")
  status=$?
  echo "$report" | grep -v -E '^[0-9]+ passed, [0-9]+ failed$' | sed "s/^/  [$arch] /"
  counts=$(tail -n 1 <<<"$report")
  ok=$(grep -oE '^[0-9]+' <<<"$counts")
  bad=$(grep -oE '[0-9]+ failed' <<<"$counts" | grep -oE '[0-9]+')
  if [[ -z $ok || -z $bad ]]; then
    fail "$arch: no comparison result"
    continue
  fi
  passed=$((passed + ok))
  failed=$((failed + bad))
  ((status == 0 && bad == 0)) || [[ $bad -gt 0 ]] || fail "$arch: comparison exited $status"
  echo "$arch: $ok passed, $bad failed"
done
finish
