#!/usr/bin/env bash
# Builds zorvat.dll for x86_64 and i686 with its test host, and runs every Wine test in
# a fresh Wine prefix: registration with regsvr32, dispatch and DISPIDs, raised errors,
# the Save dialog answered as a user would, the conformance corpus, names written in
# the ANSI code page (Windows-1252) one byte a letter, the QuickBooks
# export against the company simulator registered as the SDK's session manager
# (tests/qbsim, registered by the test host itself), DllCanUnloadNow,
# output files that cannot be written, 10,000 create/export/release cycles without a
# handle or memory kept (figures on "note:" lines), a scripting host (cscript with
# VBScript), unregistration, the DLLs' imports, and the setup forms and progress window
# worked as a user does (under Xvfb with screenshots).
#
#   hosts/com/tests/run-wine-tests.sh [--no-build] [--no-bench]
#
# The DLLs are built under build/ (build/mingw-x64, build/mingw-x86), or under the
# folder ZORVAT_WINE_BUILD names when it is set, so that two checkouts or two people
# can build side by side.
#
# Ends with the line "N passed, N failed" (", N skipped" when some were skipped) and
# exits non-zero when anything failed. Wine's exit codes are never trusted alone: each
# step must print its own positive result.
set -uo pipefail

source_dir=$(cd "$(dirname "${BASH_SOURCE[0]}")/../../.." && pwd)
build=1
bench=1
for argument in "$@"; do
  case "$argument" in
    --no-build) build=0 ;;
    --no-bench) bench=0 ;;
    *) echo "usage: $0 [--no-build] [--no-bench]" >&2; exit 2 ;;
  esac
done

source "$source_dir/scripts/wine-test-support.sh"

# --- Tools --------------------------------------------------------------------------
# The installer does nothing when every tool and the pugixml source the Windows builds
# compile are there already.
"$source_dir/scripts/install-deps.sh" windows || { fail "installing the Windows tools"; finish; }
wine64=/usr/lib/wine/wine64
[[ -x $wine64 ]] || wine64=$(command -v wine64 || true)
if [[ -z $wine64 ]]; then
  fail "wine64 is not installed"
  finish
fi
wine32=""
[[ -x /usr/lib/wine/wine ]] && wine32=/usr/lib/wine/wine

# --- Build --------------------------------------------------------------------------
build_root=${ZORVAT_WINE_BUILD:-$source_dir/build}
for preset in mingw-x64 mingw-x86; do
  if ((build)); then
    log="$build_root/$preset-build.log"
    mkdir -p "$build_root"
    if (cd "$source_dir" && cmake --preset "$preset" -B "$build_root/$preset" &&
        cmake --build "$build_root/$preset" -j 2 \
          --target zorvat_com zorvat_com_tests zorvat_form_tests) \
        >"$log" 2>&1; then
      pass "build of zorvat.dll and the test host ($preset)"
    else
      tail -n 30 "$log"
      fail "build ($preset), log in $log"
    fi
  fi
done

dll64="$build_root/mingw-x64/hosts/com/zorvat.dll"
host64="$build_root/mingw-x64/hosts/com/tests/zorvat_com_tests.exe"
dll32="$build_root/mingw-x86/hosts/com/zorvat.dll"
host32="$build_root/mingw-x86/hosts/com/tests/zorvat_com_tests.exe"

# --- Imports: only Windows system DLLs, the four undecorated exports ------------------
system_dlls='^(kernel32|user32|advapi32|ole32|oleaut32|comdlg32|msvcrt|gdi32|shell32|shlwapi|comctl32)\.dll$'
for arch in x86_64 i686; do
  dll=$dll64
  [[ $arch == i686 ]] && dll=$dll32
  if [[ ! -f $dll ]]; then
    fail "imports of zorvat.dll ($arch): not built"
    continue
  fi
  dump=$("$arch-w64-mingw32-objdump" -p "$dll")
  imports=$(grep 'DLL Name:' <<<"$dump" | awk '{print tolower($3)}' | sort -u | tr '\n' ' ')
  foreign=$(tr ' ' '\n' <<<"$imports" | grep -v -E "$system_dlls" | grep -v '^$' || true)
  if [[ -z $foreign ]]; then
    pass "zorvat.dll ($arch) imports only system DLLs: $imports"
  else
    fail "zorvat.dll ($arch) imports non-system DLLs: $foreign"
  fi
  exports=$(awk '/\[Ordinal\/Name Pointer\] Table/{on=1; next} on && NF==0{on=0} on{print $NF}' \
    <<<"$dump" | sort | tr '\n' ' ')
  if [[ $exports == "DllCanUnloadNow DllGetClassObject DllRegisterServer DllUnregisterServer " ]]; then
    pass "zorvat.dll ($arch) exports $exports"
  else
    fail "zorvat.dll ($arch) exports: $exports"
  fi
done

# --- A fresh Wine prefix, headless ------------------------------------------------------
prefix=$(mktemp -d "${TMPDIR:-/tmp}/zorvat-wine.XXXXXX")
# The prefix is en-US whatever the user's own locale (Wine takes it from LC_ALL): its
# ANSI code page, the one files are written in, is 1252, as the corpus expects.
export WINEPREFIX=$prefix WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml=" LC_ALL=C.UTF-8
unset DISPLAY WAYLAND_DISPLAY
cleanup() {
  timeout 30 wineserver -k >/dev/null 2>&1
  rm -rf "$prefix"
}
trap cleanup EXIT

if timeout 180 "$wine64" wineboot -i >/dev/null 2>&1 &&
   timeout 60 "$wine64" reg add 'HKCU\Software\Wine\Drivers' /v Graphics /d null /f \
     >/dev/null 2>&1 &&
   timeout 60 wineserver -w; then
  pass "fresh Wine prefix with the null graphics driver"
else
  fail "creating the Wine prefix $prefix"
  finish
fi

corpus=$(windows_path "$source_dir/tests/corpus")
work='C:\zorvat-tests'

# Runs the test host; counts its GoogleTest results. Arguments: label, wine, exe, args...
run_host() {
  local label=$1 wine=$2 exe=$3
  shift 3
  local output
  output=$(timeout 900 "$wine" "$exe" "$@" 2>&1 | tr -d '\r')
  print_gtest_results "$label" <<<"$output"
  if ! grep -q -E '^zorvat_[a-z_]+: finished with exit code' <<<"$output"; then
    echo "$output" | tail -n 20
    fail "$label: the test host did not finish"
    return
  fi
  local ok bad skipped_here
  ok=$(grep -oE '^\[  PASSED  \] [0-9]+' <<<"$output" | grep -oE '[0-9]+$' || echo 0)
  bad=$(grep -oE '^\[  FAILED  \] [0-9]+ tests?, listed below' <<<"$output" |
        grep -oE '[0-9]+' || echo 0)
  skipped_here=$(grep -oE '^\[  SKIPPED \] [0-9]+ tests?, listed below' <<<"$output" |
                 grep -oE '[0-9]+' || echo 0)
  if [[ -z $ok && -z $bad ]]; then
    fail "$label: no test results"
    return
  fi
  passed=$((passed + ${ok:-0}))
  failed=$((failed + ${bad:-0}))
  skipped=$((skipped + ${skipped_here:-0}))
  echo "$label: ${ok:-0} passed, ${bad:-0} failed, ${skipped_here:-0} skipped"
}

# Runs every Wine test of one architecture.
run_architecture() {
  local arch=$1 wine=$2 dll=$3 host=$4
  local dll_windows system='C:\windows\system32'
  # A 32-bit in-process server needs the 32-bit regsvr32 and cscript of the prefix.
  [[ $arch == i686 ]] && system='C:\windows\syswow64'
  dll_windows=$(windows_path "$dll")
  if [[ ! -f $dll || ! -f $host ]]; then
    fail "$arch: zorvat.dll or the test host was not built"
    return
  fi

  timeout 120 "$wine" "$system\\regsvr32.exe" /s "$dll_windows" >/dev/null 2>&1
  if timeout 60 "$wine" reg query 'HKCR\zorvat.Generic\Clsid' >/dev/null 2>&1; then
    pass "$arch: regsvr32 registers zorvat.dll"
  else
    fail "$arch: regsvr32 did not register zorvat.dll"
    return
  fi

  run_host "$arch" "$wine" "$host" "--dll=$dll_windows" "--corpus=$corpus" "--work=$work" \
    '--gtest_filter=-Unregistered.*'

  # The script goes through the classes of the DLL's type library, which the test host
  # reads from the DLL itself.
  local listing classes=()
  listing=$(timeout 120 "$wine" "$host" "--dll=$dll_windows" --list-classes 2>&1 | tr -d '\r')
  mapfile -t classes < <(sed -n 's/^class: //p' <<<"$listing")
  if ((${#classes[@]} > 0)); then
    pass "$arch: the type library of zorvat.dll lists its classes: ${classes[*]}"
  else
    fail "$arch: the test host listed no classes of zorvat.dll's type library: $listing"
  fi

  local script_output
  script_output=$(timeout 120 "$wine" "$system\\cscript.exe" //nologo \
    "$(windows_path "$source_dir/hosts/com/tests/scripting.vbs")" "${classes[@]}" 2>&1)
  while IFS= read -r line; do
    case "$line" in
      "ok - "*) pass "$arch: cscript: ${line#ok - }" ;;
      "not ok - "*) fail "$arch: cscript: ${line#not ok - }" ;;
    esac
  done <<<"$script_output"
  grep -q '^done' <<<"$script_output" || fail "$arch: the VBScript test did not finish: $script_output"

  if ((bench)); then
    local figures
    figures=$(timeout 300 "$wine" "$host" "--dll=$dll_windows" "--work=$work" --bench 2>&1)
    echo "$figures" | grep '^bench:' | sed "s/^/  [$arch] /"
    local rate
    rate=$(grep -oE '^bench: [0-9]+ cards/s' <<<"$figures" | grep -oE '[0-9]+' | head -n 1)
    if [[ -n $rate ]]; then
      pass "$arch: benchmark ran (100000-card Generic export through COM: $rate cards/s)"
      ((rate >= 500000)) || echo "  [$arch] note: below the target of 500000 cards/s on this run"
    else
      fail "$arch: benchmark did not complete"
    fi
  fi

  timeout 120 "$wine" "$system\\regsvr32.exe" /s /u "$dll_windows" >/dev/null 2>&1
  run_host "$arch unregistered" "$wine" "$host" "--dll=$dll_windows" "--work=$work" \
    '--gtest_filter=Unregistered.*'
}

run_architecture x86_64 "$wine64" "$dll64" "$host64"
if [[ -n $wine32 ]]; then
  run_architecture i686 "$wine32" "$dll32" "$host32"
else
  # The shipping DLL is the 32-bit one: not running it is a failure, never a pass.
  fail "i686: 32-bit Wine (/usr/lib/wine/wine, package wine32:i386) is missing after" \
    "scripts/install-deps.sh windows, so the shipping 32-bit zorvat.dll could not be run"
fi

# --- Registry views -------------------------------------------------------------------
# The two DLLs register the same CLSIDs, each in its own view of the registry: a 32-bit
# client finds the 32-bit DLL and never the 64-bit one, and the other way round. Both
# can be registered side by side, and unregistering one leaves the other working.
# Arguments: the step, then "32 yes|no" and "64 yes|no" for whether each client must
# create zorvat.Generic (the 32-bit and the 64-bit cscript).
creates() {
  local label=$1 expect32=$2 expect64=$3 output client wine system expect
  for client in 32 64; do
    if [[ $client == 32 ]]; then
      wine=$wine32 system='C:\windows\syswow64' expect=$expect32
    else
      wine=$wine64 system='C:\windows\system32' expect=$expect64
    fi
    output=$(timeout 120 "$wine" "$system\\cscript.exe" //nologo \
      "$(windows_path "$source_dir/hosts/com/tests/create_class.vbs")" zorvat.Generic 2>&1 | tr -d '\r')
    if [[ $expect == yes && $output == "created zorvat.Generic" ]]; then
      pass "registry views, $label: the $client-bit client creates zorvat.Generic"
    elif [[ $expect == no && $output == "not created zorvat.Generic: Err 429: "* ]]; then
      pass "registry views, $label: the $client-bit client cannot create zorvat.Generic (429)"
    else
      local wanted="created"
      [[ $expect == no ]] && wanted="Err 429"
      fail "registry views, $label: the $client-bit client: expected $wanted, got: $output"
    fi
  done
}
if [[ -n $wine32 && -f $dll32 && -f $dll64 ]]; then
  regsvr() { timeout 120 "$1" "$2\\regsvr32.exe" /s "${@:3}" >/dev/null 2>&1; }
  regsvr "$wine64" 'C:\windows\system32' "$(windows_path "$dll64")"
  creates "64-bit DLL registered alone" no yes
  regsvr "$wine64" 'C:\windows\system32' /u "$(windows_path "$dll64")"
  regsvr "$wine32" 'C:\windows\syswow64' "$(windows_path "$dll32")"
  creates "32-bit DLL registered alone" yes no
  regsvr "$wine64" 'C:\windows\system32' "$(windows_path "$dll64")"
  creates "both registered side by side" yes yes
  regsvr "$wine64" 'C:\windows\system32' /u "$(windows_path "$dll64")"
  creates "64-bit DLL unregistered, 32-bit kept" yes no
  regsvr "$wine64" 'C:\windows\system32' "$(windows_path "$dll64")"
  regsvr "$wine32" 'C:\windows\syswow64' /u "$(windows_path "$dll32")"
  creates "32-bit DLL unregistered, 64-bit kept" no yes
  regsvr "$wine64" 'C:\windows\system32' /u "$(windows_path "$dll64")"
  creates "both unregistered" no no
else
  fail "registry views: needs both DLLs and 32-bit Wine"
fi

# --- The forms on a screen ------------------------------------------------------------
# zorvat_form_tests shows every setup form and the progress window and works them as a
# user does. Under Xvfb (when installed) Wine runs with its X11 driver and unmanaged
# windows (Wine draws their captions, and no window manager is waited for), and a PNG of
# every form is written into $build_root/screenshots/ARCH; otherwise the same tests run
# under the null driver without screenshots.
run_form_tests() {
  local arch=$1 wine=$2 exe=$3
  if [[ ! -f $exe ]]; then
    fail "$arch: zorvat_form_tests was not built"
    return
  fi
  local shots="$build_root/screenshots/$arch"
  start_xvfb 91 120
  local display=$xvfb_display
  if [[ -z $display ]]; then
    run_host "$arch forms" "$wine" "$exe"
    skip "$arch: screenshots of the forms (Xvfb is not installed or did not start)"
    return
  fi
  timeout 60 "$wine" reg add 'HKCU\Software\Wine\Drivers' /v Graphics /d x11 /f >/dev/null 2>&1
  timeout 60 "$wine" reg add 'HKCU\Software\Wine\X11 Driver' /v Managed /d N /f >/dev/null 2>&1
  timeout 60 wineserver -k >/dev/null 2>&1
  timeout 60 wineserver -w
  # Wine's own TrueType fonts (fonts-wine) in the prefix: Tahoma for the dialog font
  # instead of a wider fallback.
  cp -n /usr/share/wine/fonts/*.ttf "$WINEPREFIX/drive_c/windows/Fonts/" 2>/dev/null
  rm -rf "$shots"
  mkdir -p "$shots"
  export DISPLAY=$display
  run_host "$arch forms (Xvfb $display)" "$wine" "$exe" "--screenshots=$(windows_path "$shots")"
  unset DISPLAY
  local pictures
  pictures=$(find "$shots" -name '*.png' -size +1k | wc -l)
  if ((pictures >= 10)); then
    pass "$arch: $pictures screenshots of the forms in $shots"
  else
    fail "$arch: only $pictures screenshots of the forms in $shots"
  fi
  timeout 60 wineserver -k >/dev/null 2>&1
  timeout 60 wineserver -w
  timeout 60 "$wine" reg add 'HKCU\Software\Wine\Drivers' /v Graphics /d null /f >/dev/null 2>&1
  stop_xvfb
}

run_form_tests x86_64 "$wine64" "$build_root/mingw-x64/hosts/com/tests/zorvat_form_tests.exe"
if [[ -n $wine32 ]]; then
  run_form_tests i686 "$wine32" "$build_root/mingw-x86/hosts/com/tests/zorvat_form_tests.exe"
else
  fail "i686: the forms could not be shown: 32-bit Wine is missing"
fi

timeout 60 wineserver -w
finish
