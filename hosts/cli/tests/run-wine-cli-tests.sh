#!/usr/bin/env bash
# Builds zorvat.exe for x86_64 and i686 and runs it under Wine as a Windows user does,
# in a fresh Wine prefix: its imports (only Windows system DLLs, the C++ runtime linked
# in), the whole conformance corpus (exit status, report and the written bytes), a cards
# file with a UTF-8 byte-order mark, the file written in the prefix's ANSI code page
# (Windows-1252) and with --code-page utf-8, drive-letter, backslash and relative paths, the
# safe file step over existing and read-only files, cards on standard input (read in
# binary) and the settings string in a file written back, reconcile and export --check,
# QB2000 against the simulated company, and on a console the Windows Save
# dialog and the setup forms worked as a user does (zorvat_cli_tests.exe starts
# zorvat.exe on its console and drives its windows). With Xvfb installed, the console
# tests run on an X display with Wine's X11 driver; otherwise under the null driver.
#
#   hosts/cli/tests/run-wine-cli-tests.sh [--no-build]
#
# Builds under build/ (build/mingw-x64, build/mingw-x86), or under the folder
# ZORVAT_WINE_BUILD names. Both architectures must run: a missing 32-bit Wine is a
# failure, not a skip. Ends with "N passed, N failed" and exits non-zero on any failure.
set -uo pipefail

source_dir=$(cd "$(dirname "${BASH_SOURCE[0]}")/../../.." && pwd)
build=1
for argument in "$@"; do
  case "$argument" in
    --no-build) build=0 ;;
    *) echo "usage: $0 [--no-build]" >&2; exit 2 ;;
  esac
done

source "$source_dir/scripts/wine-test-support.sh"

# --- Tools --------------------------------------------------------------------------
# The installer does nothing when every tool and the pugixml source the Windows builds
# compile are there already.
"$source_dir/scripts/install-deps.sh" windows || fail "installing the Windows tools"
declare -A wine_of=([x86_64]=/usr/lib/wine/wine64 [i686]=/usr/lib/wine/wine)
declare -A preset_of=([x86_64]=mingw-x64 [i686]=mingw-x86)
architectures=()
for arch in x86_64 i686; do
  if [[ -x ${wine_of[$arch]} ]]; then
    architectures+=("$arch")
  else
    fail "$arch: ${wine_of[$arch]} is not installed, so zorvat.exe ($arch) cannot run" \
      "(scripts/install-deps.sh windows installs it)"
  fi
done

# --- Build --------------------------------------------------------------------------
build_root=${ZORVAT_WINE_BUILD:-$source_dir/build}
for arch in x86_64 i686; do
  preset=${preset_of[$arch]}
  ((build)) || continue
  log="$build_root/$preset-cli-build.log"
  mkdir -p "$build_root"
  if (cd "$source_dir" && cmake --preset "$preset" -B "$build_root/$preset" &&
      cmake --build "$build_root/$preset" -j 2 --target zorvat zorvat_cli_tests) >"$log" 2>&1; then
    pass "$arch: build of zorvat.exe and its Wine test driver"
  else
    tail -n 30 "$log"
    fail "$arch: build ($preset), log in $log"
  fi
done

# --- Imports: only Windows system DLLs ------------------------------------------------
system_dlls='^(kernel32|user32|advapi32|ole32|oleaut32|comdlg32|msvcrt|gdi32|shell32|shlwapi|comctl32)\.dll$'
for arch in x86_64 i686; do
  exe="$build_root/${preset_of[$arch]}/hosts/cli/zorvat.exe"
  if [[ ! -f $exe ]]; then
    fail "$arch: zorvat.exe was not built"
    continue
  fi
  imports=$("$arch-w64-mingw32-objdump" -p "$exe" | grep 'DLL Name:' | awk '{print tolower($3)}' |
            sort -u | tr '\n' ' ')
  foreign=$(tr ' ' '\n' <<<"$imports" | grep -v -E "$system_dlls" | grep -v '^$' || true)
  if [[ -n $imports && -z $foreign ]]; then
    pass "$arch: zorvat.exe imports only system DLLs: $imports"
  else
    fail "$arch: zorvat.exe imports non-system DLLs: ${foreign:-(no imports read)}"
  fi
done

((${#architectures[@]} > 0)) || finish

# --- A fresh Wine prefix --------------------------------------------------------------
prefix=$(mktemp -d "${TMPDIR:-/tmp}/zorvat-wine-cli.XXXXXX")
# The prefix is en-US whatever the user's own locale (Wine takes it from LC_ALL): its
# ANSI code page, the one files are written in, is 1252, as the corpus expects.
export WINEPREFIX=$prefix WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml=" LC_ALL=C.UTF-8
unset DISPLAY WAYLAND_DISPLAY
cleanup() {
  timeout 30 wineserver -k >/dev/null 2>&1
  stop_xvfb
  rm -rf "$prefix"
}
trap cleanup EXIT

start_xvfb 121 150
display=$xvfb_display
driver=null
[[ -n $display ]] && driver=x11
if timeout 180 "${wine_of[x86_64]}" wineboot -i >/dev/null 2>&1 &&
   timeout 60 "${wine_of[x86_64]}" reg add 'HKCU\Software\Wine\Drivers' /v Graphics /d "$driver" \
     /f >/dev/null 2>&1 &&
   timeout 60 "${wine_of[x86_64]}" reg add 'HKCU\Software\Wine\X11 Driver' /v Managed /d N /f \
     >/dev/null 2>&1 &&
   timeout 60 wineserver -w; then
  pass "fresh Wine prefix with the $driver graphics driver${display:+ (Xvfb $display)}"
else
  fail "creating the Wine prefix $prefix"
  finish
fi
[[ -n $display ]] && export DISPLAY=$display

for arch in "${architectures[@]}"; do
  dir="$build_root/${preset_of[$arch]}/hosts/cli"
  if [[ ! -f $dir/zorvat.exe || ! -f $dir/tests/zorvat_cli_tests.exe ]]; then
    fail "$arch: zorvat.exe or zorvat_cli_tests.exe was not built"
    continue
  fi
  shots="$build_root/screenshots/cli-$arch"
  rm -rf "$shots"
  shot_option=()
  [[ -n $display ]] && shot_option=("--screenshots=$(windows_path "$shots")")
  output=$(timeout 900 "${wine_of[$arch]}" "$dir/tests/zorvat_cli_tests.exe" \
    "--cli=$(windows_path "$dir/zorvat.exe")" "--corpus=$(windows_path "$source_dir/tests/corpus")" \
    "--work=C:\\zorvat-cli-tests-$arch" "${shot_option[@]}" 2>&1)
  while IFS= read -r line; do
    case "$line" in
      "ok - "*) pass "$arch: ${line#ok - }" ;;
      "not ok - "*) fail "$arch: ${line#not ok - }" ;;
      "  "*) echo "  [$arch] $line" ;;
    esac
  done <<<"$output"
  grep -q '^done' <<<"$output" || {
    tail -n 20 <<<"$output"
    fail "$arch: zorvat_cli_tests.exe did not finish"
  }
  if [[ -n $display ]]; then
    pictures=$(find "$shots" -name '*.png' -size +1k 2>/dev/null | wc -l)
    if ((pictures == 2)); then
      pass "$arch: screenshots of the setup forms zorvat.exe showed, in $shots"
    else
      fail "$arch: $pictures of 2 screenshots of the setup forms in $shots"
    fi
  fi
done

timeout 60 wineserver -w
finish
