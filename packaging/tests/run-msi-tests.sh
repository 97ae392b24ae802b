#!/usr/bin/env bash
# The Windows release as a user meets it, under Wine in fresh 64-bit prefixes (WoW64: the
# 32-bit side runs with Debian's 32-bit loader and the prefix's syswow64 tools):
#  - the installers (packaging/msi): msiexec /i ... /qn of the x64 package over one with a
#    lower version (a major upgrade: exactly one product and one registration left, and
#    the lower version refused over the higher one); a 32-bit client (create_class.exe
#    and the COM test host) and a 64-bit client create every class by its ProgIDs and
#    CLSID, each from its own DLL; the test host's
#    registration, type library and corpus tests; the 32-bit cscript creates every class
#    and runs a corpus export; msiexec /x ... /qn, after which creating a class fails with
#    "class not registered", the install folders are gone and the registry holds nothing
#    of zorvat while every key it held before is still there; the 32-bit package, whose
#    registration is compared line by line with the DLL's own DllRegisterServer and which
#    the 64-bit side must not see, also in a 32-bit prefix (32-bit Windows);
#  - the release of ./project package: dist/ and the zip's contents; the zip unpacked into
#    a fresh prefix, its zorvat.exe (both) run, its DLLs registered with regsvr32 (32- and
#    64-bit side by side, each seen only by its own side, unregistering one leaves the
#    other working) and used by an export from a scripting host.
#
#   packaging/tests/run-msi-tests.sh [--no-build]
#
# Builds what it needs under build/ (or the folder ZORVAT_WINE_BUILD names): zorvat.dll
# and the COM test host with the presets mingw-x86 and mingw-x64. Ends with the line
# "N passed, N failed" (", N skipped" when some were skipped) and exits non-zero when
# anything failed. 32-bit Wine is required: without it the run fails.
set -uo pipefail

source_dir=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
build=1
for argument in "$@"; do
  case "$argument" in
    --no-build) build=0 ;;
    *) echo "usage: $0 [--no-build]" >&2; exit 2 ;;
  esac
done

source "$source_dir/scripts/wine-test-support.sh"

# --- Tools ----------------------------------------------------------------------------
# The installer does nothing when every tool and the pugixml source the Windows builds
# compile are there already.
"$source_dir/scripts/install-deps.sh" windows || { fail "installing the Windows tools"; finish; }
wine64=/usr/lib/wine/wine64
wine32=/usr/lib/wine/wine
[[ -x $wine64 ]] || { fail "64-bit Wine (/usr/lib/wine/wine64) is not installed"; finish; }
[[ -x $wine32 ]] || { fail "32-bit Wine (/usr/lib/wine/wine, package wine32:i386) is not installed"; finish; }
command -v wixl >/dev/null || { fail "wixl is not installed"; finish; }

# --- Build ----------------------------------------------------------------------------
build_root=${ZORVAT_WINE_BUILD:-$source_dir/build}
export ZORVAT_WINE_BUILD=$build_root
if ((build)); then
  for preset in mingw-x86 mingw-x64; do
    log="$build_root/$preset-msi-build.log"
    mkdir -p "$build_root"
    if (cd "$source_dir" && cmake --preset "$preset" -B "$build_root/$preset" &&
        cmake --build "$build_root/$preset" -j 2 --target zorvat_com zorvat_com_tests) \
        >"$log" 2>&1; then
      pass "build of zorvat.dll and the test host ($preset)"
    else
      tail -n 30 "$log"
      fail "build ($preset), log in $log"
      finish
    fi
  done
fi
dll32=$build_root/mingw-x86/hosts/com/zorvat.dll
dll64=$build_root/mingw-x64/hosts/com/zorvat.dll
host32=$build_root/mingw-x86/hosts/com/tests/zorvat_com_tests.exe
host64=$build_root/mingw-x64/hosts/com/tests/zorvat_com_tests.exe

work=$build_root/msi-tests
rm -rf "$work"
mkdir -p "$work"
# The small clients of these tests: one per architecture.
tools_built=1
for arch in i686 x86_64; do
  "$arch-w64-mingw32-g++-posix" -O2 -Wall -Wextra -Werror -static -municode \
    -o "$work/create_class-$arch.exe" "$source_dir/packaging/tests/create_class.cpp" \
    -lole32 -loleaut32 -luuid || tools_built=0
  "$arch-w64-mingw32-g++-posix" -O2 -Wall -Wextra -Werror -static -municode \
    -o "$work/answer_save-$arch.exe" "$source_dir/packaging/tests/answer_save.cpp" \
    -luser32 || tools_built=0
done
((tools_built)) || { fail "building create_class.exe and answer_save.exe"; finish; }

# The version being released, and a lower one to upgrade from.
version=$(sed -n 's/^project(zorvat VERSION \([0-9.]*\).*/\1/p' "$source_dir/CMakeLists.txt")
older=0.9.0
if "$source_dir/packaging/msi/build-msi.sh" --dll32 "$dll32" --dll64 "$dll64" \
     --out "$work/msi" >/dev/null &&
   "$source_dir/packaging/msi/build-msi.sh" --dll32 "$dll32" --dll64 "$dll64" \
     --out "$work/msi-older" --version "$older" >/dev/null &&
   [[ -f $work/msi/zorvat-$version.msi && -f $work/msi/zorvat-$version-x64.msi ]]; then
  pass "wixl built zorvat-$version.msi, zorvat-$version-x64.msi and the $older packages"
else
  fail "building the installers"
  finish
fi

# The classes and GUIDs, read from the IDL.
idl=$source_dir/hosts/com/zorvat.idl
mapfile -t classes < <(grep -oE '^\s*coclass\s+\w+' "$idl" | awk '{print $2}')
mapfile -t clsids < <(grep -B6 -E '^\s*coclass\s' "$idl" | grep -oE 'uuid\([0-9A-Fa-f-]+\)' |
                      sed -E 's/uuid\((.*)\)/{\1}/' | tr a-f A-F)
mapfile -t guids < <(grep -oE 'uuid\([0-9A-Fa-f-]+\)' "$idl" | sed -E 's/uuid\((.*)\)/\1/' | tr a-f A-F)
if ((${#classes[@]} >= 8 && ${#clsids[@]} == ${#classes[@]})); then
  pass "the IDL declares ${#classes[@]} classes: ${classes[*]}"
else
  fail "reading the classes of $idl (${#classes[@]} classes, ${#clsids[@]} CLSIDs)"
  finish
fi
prog_ids=()
for name in "${classes[@]}"; do prog_ids+=("zorvat.$name" "zorvat.$name.1"); done

# --- Wine prefixes --------------------------------------------------------------------
export WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml="
unset DISPLAY WAYLAND_DISPLAY
prefixes=()
cleanup() {
  local prefix
  for prefix in "${prefixes[@]}"; do
    WINEPREFIX=$prefix timeout 30 wineserver -k >/dev/null 2>&1
    rm -rf "$prefix"
  done
}
trap cleanup EXIT

# fresh_prefix LABEL: a new 64-bit prefix with the null graphics driver, as WINEPREFIX.
fresh_prefix() {
  if [[ -n ${WINEPREFIX:-} ]]; then timeout 30 wineserver -k >/dev/null 2>&1; fi
  WINEPREFIX=$(mktemp -d "${TMPDIR:-/tmp}/zorvat-msi.XXXXXX")
  export WINEPREFIX
  prefixes+=("$WINEPREFIX")
  if timeout 180 "$wine64" wineboot -i >/dev/null 2>&1 &&
     timeout 60 "$wine64" reg add 'HKCU\Software\Wine\Drivers' /v Graphics /d null /f \
       >/dev/null 2>&1 &&
     timeout 60 wineserver -w; then
    pass "$1: fresh Wine prefix"
  else
    fail "$1: creating the Wine prefix $WINEPREFIX"
    finish
  fi
}

drive_c() { printf '%s/drive_c' "$WINEPREFIX"; }
folder32='C:\Program Files (x86)\zorvat'
folder64='C:\Program Files\zorvat'

# Both registry views of the machine's classes, one key or value per line.
registry_snapshot() {
  local file=$1
  timeout 60 "$wine64" reg export 'HKLM\Software\Classes' "$(windows_path "$file.reg")" /y \
    >/dev/null 2>&1
  iconv -f UTF-16 -t UTF-8 "$file.reg" | tr -d '\r' | awk '
    /^\[/ { key = $0; print key; next }
    NF { print key " " $0 }' | sort >"$file"
}

# Lines of a snapshot that name zorvat or one of the IDL's GUIDs.
zorvat_lines() {
  local pattern="zorvat" guid
  for guid in "${guids[@]}"; do pattern+="|$guid"; done
  grep -i -E "$pattern" "$1"
}

# create LABEL WINE EXE EXPECTED NAMES...: each name must give "created from EXPECTED"
# (EXPECTED a DLL path), or, with EXPECTED "not registered", fail as a class that is not
# registered.
create() {
  local label=$1 wine=$2 exe=$3 expected=$4
  shift 4
  local output name line bad=0
  output=$(timeout 120 "$wine" "$exe" "$@" 2>/dev/null | tr -d '\r')
  for name in "$@"; do
    line=$(grep -F "$name: " <<<"$output" | head -n 1)
    if [[ $expected == "not registered" ]]; then
      # By CLSID: REGDB_E_CLASSNOTREG; by ProgID: the ProgID is gone (CO_E_CLASSSTRING).
      [[ $line == "$name: 0x80040154 class not registered" ||
         ($name != "{"* && $line == "$name: 0x800401F3 "*) ]] || { echo "  $line"; bad=1; }
    else
      [[ ${line,,} == "${name,,}: created from ${expected,,}" ]] || { echo "  ${line:-$name: no answer}"; bad=1; }
    fi
  done
  if ((bad)); then fail "$label"; else pass "$label"; fi
}

# Runs the COM test host; counts its GoogleTest results. Arguments: label, wine, exe, args...
run_host() {
  local label=$1 wine=$2 exe=$3
  shift 3
  local output ok bad
  output=$(timeout 900 "$wine" "$exe" "$@" 2>&1 | tr -d '\r')
  print_gtest_results "$label" 1 <<<"$output"
  if ! grep -q -E '^zorvat_com_tests: finished with exit code' <<<"$output"; then
    echo "$output" | tail -n 20
    fail "$label: the test host did not finish"
    return
  fi
  ok=$(grep -oE '^\[  PASSED  \] [0-9]+' <<<"$output" | grep -oE '[0-9]+$' || true)
  bad=$(grep -oE '^\[  FAILED  \] [0-9]+ tests?, listed below' <<<"$output" | grep -oE '[0-9]+' || true)
  if [[ -z $ok && -z $bad ]]; then
    fail "$label: no test results"
    return
  fi
  passed=$((passed + ${ok:-0}))
  failed=$((failed + ${bad:-0}))
  echo "$label: ${ok:-0} passed, ${bad:-0} failed"
}

corpus=$(windows_path "$source_dir/tests/corpus")
export_case=$source_dir/tests/corpus/generic/comma-titles-names
export_setup=$(python3 -c 'import json,sys; print(json.load(open(sys.argv[1]))["setup"])' \
  "$export_case/case.json")
python3 "$source_dir/packaging/tests/cards_text.py" "$source_dir/tests/corpus/cards/two-employees.json" \
  "$work/cards.txt"

# script_export LABEL WINE SYSTEM ANSWERER: cscript runs the Generic corpus case
# comma-titles-names through export.js; the written file must be the expected bytes.
script_export() {
  local label=$1 wine=$2 system=$3 answerer=$4
  local target="C:\\zorvat-export-$RANDOM.csv" output answer
  rm -f "$work/answer.txt"
  timeout 60 "$wine" "$answerer" "$target" 40 >"$work/answer.txt" 2>/dev/null &
  local answerer_pid=$!
  output=$(timeout 90 "$wine" "$system\\cscript.exe" //nologo \
    "$(windows_path "$source_dir/packaging/tests/export.js")" zorvat.Generic "$export_setup" \
    "$(windows_path "$work/cards.txt")" 2>/dev/null | tr -d '\r')
  wait "$answerer_pid"
  answer=$(tr -d '\r' <"$work/answer.txt")
  local written
  written="$(drive_c)/${target#C:\\}"
  if grep -qx 'exported: true' <<<"$output" && [[ $answer == answered:* ]] &&
     cmp -s "$written" "$export_case/expected.out"; then
    pass "$label: cscript exported the corpus case generic/comma-titles-names byte for byte"
  else
    echo "  script: $output"
    echo "  save dialog: $answer"
    fail "$label: cscript export of generic/comma-titles-names"
  fi
}

# scripting_host LABEL WINE SYSTEM: hosts/com/tests/scripting.vbs creates every class of
# the IDL by ProgID and calls its members.
scripting_host() {
  local label=$1 wine=$2 system=$3 output ok bad
  output=$(timeout 120 "$wine" "$system\\cscript.exe" //nologo \
    "$(windows_path "$source_dir/hosts/com/tests/scripting.vbs")" "${classes[@]}" 2>/dev/null |
    tr -d '\r')
  ok=$(grep -c '^ok - ' <<<"$output")
  bad=$(grep -c -E '^(not ok|skip) - ' <<<"$output")
  if ((ok > 0 && bad == 0)) && grep -qx done <<<"$output"; then
    pass "$label: cscript created every class by ProgID ($ok checks)"
  else
    grep -E '^(not ok|skip) - ' <<<"$output" | sed 's/^/  /'
    fail "$label: cscript with scripting.vbs ($ok ok, $bad not ok or skipped)"
  fi
}

msiexec() {  # msiexec LABEL /i|/x PACKAGE: a quiet msiexec that must end with 0
  local label=$1 action=$2 package=$3 code
  timeout 300 "$wine64" msiexec "$action" "$(windows_path "$package")" /qn \
    /l*v "$(windows_path "$work/msiexec.log")" >/dev/null 2>&1
  code=$?
  if ((code == 0)); then
    pass "$label: msiexec $action $(basename "$package") /qn"
  else
    fail "$label: msiexec $action $(basename "$package") /qn exited with $code"
    grep -i -E 'error|return value 3' "$work/msiexec.log" 2>/dev/null | head -n 5 | sed 's/^/  /'
  fi
}

# The products the Windows Installer lists with zorvat's name, as "name|version" lines.
products() {
  timeout 60 "$wine64" reg query 'HKLM\Software\Microsoft\Windows\CurrentVersion\Uninstall' /s \
    2>/dev/null | tr -d '\r' | awk '
      /^HKEY/ { if (name ~ /^zorvat/) print name "|" version; name = ""; version = "" }
      $1 == "DisplayName" { $1 = ""; $2 = ""; sub(/^  */, ""); name = $0 }
      $1 == "DisplayVersion" { version = $3 }
      END { if (name ~ /^zorvat/) print name "|" version }'
}

# --- The x64 package: upgrade, both sides, uninstall ---------------------------------
fresh_prefix "x64 package"
registry_snapshot "$work/registry-before"
msiexec "x64 package $older" /i "$work/msi-older/zorvat-$older-x64.msi"
check "x64 package: $older is installed" test "$(products)" == "zorvat $older|$older"
msiexec "x64 package $version (upgrade)" /i "$work/msi/zorvat-$version-x64.msi"
listed=$(products)
if [[ $listed == "zorvat $version|$version" ]]; then
  pass "x64 package: after the upgrade exactly one product is installed: $listed"
else
  fail "x64 package: after the upgrade the installed products are: ${listed//$'\n'/; }"
fi
timeout 300 "$wine64" msiexec /i "$(windows_path "$work/msi-older/zorvat-$older-x64.msi")" /qn \
  >/dev/null 2>&1
code=$?
listed=$(products)
if ((code != 0)) && [[ $listed == "zorvat $version|$version" ]]; then
  pass "x64 package: $older does not install over $version (msiexec exited with $code)"
else
  fail "x64 package: installing $older over $version exited with $code and left: ${listed//$'\n'/; }"
fi
registry_snapshot "$work/registry-installed"
for clsid in "${clsids[@]}"; do
  count=$(grep -c -i -F "CLSID\\$clsid\\InprocServer32] @=" "$work/registry-installed")
  [[ $count == 2 ]] || fail "x64 package: $clsid has $count InprocServer32 servers (one per registry view expected)"
done
check "x64 package: one InprocServer32 per class in each registry view" \
  test "$(grep -c -i 'InprocServer32] @=' <(zorvat_lines "$work/registry-installed"))" == $((2 * ${#classes[@]}))
check "x64 package: the 32-bit DLL is in $folder32" cmp -s "$dll32" "$(drive_c)/Program Files (x86)/zorvat/zorvat.dll"
check "x64 package: the 64-bit DLL is in $folder64" cmp -s "$dll64" "$(drive_c)/Program Files/zorvat/zorvat.dll"
check "x64 package: nothing else is installed in the two folders" \
  test "$(ls "$(drive_c)/Program Files (x86)/zorvat" "$(drive_c)/Program Files/zorvat" | grep -c .)" == 4

create "x64 package: a 32-bit client creates every class by ProgID, .1 ProgID and CLSID from the 32-bit DLL" \
  "$wine32" "$work/create_class-i686.exe" "$folder32\\zorvat.dll" "${prog_ids[@]}" "${clsids[@]}"
create "x64 package: a 64-bit client creates every class by ProgID, .1 ProgID and CLSID from the 64-bit DLL" \
  "$wine64" "$work/create_class-x86_64.exe" "$folder64\\zorvat.dll" "${prog_ids[@]}" "${clsids[@]}"
host_filter='--gtest_filter=Registration.*:TypeLibrary.*:Dispatch.*:Corpus_*'
run_host "x64 package, i686 host" "$wine32" "$host32" "--dll=$folder32\\zorvat.dll" "--corpus=$corpus" \
  '--work=C:\zorvat-tests' "$host_filter"
run_host "x64 package, x86_64 host" "$wine64" "$host64" "--dll=$folder64\\zorvat.dll" "--corpus=$corpus" \
  '--work=C:\zorvat-tests' "$host_filter"
scripting_host "x64 package, i686" "$wine32" 'C:\windows\syswow64'
script_export "x64 package, i686" "$wine32" 'C:\windows\syswow64' "$work/answer_save-i686.exe"
script_export "x64 package, x86_64" "$wine64" 'C:\windows\system32' "$work/answer_save-x86_64.exe"

msiexec "x64 package" /x "$work/msi/zorvat-$version-x64.msi"
create "x64 package removed: a 32-bit client gets \"class not registered\"" \
  "$wine32" "$work/create_class-i686.exe" "not registered" "${clsids[@]}" "${prog_ids[@]}"
create "x64 package removed: a 64-bit client gets \"class not registered\"" \
  "$wine64" "$work/create_class-x86_64.exe" "not registered" "${clsids[@]}" "${prog_ids[@]}"
run_host "x64 package removed, i686 host" "$wine32" "$host32" "--dll=$folder32\\zorvat.dll" \
  '--work=C:\zorvat-tests' '--gtest_filter=Unregistered.*'
run_host "x64 package removed, x86_64 host" "$wine64" "$host64" "--dll=$folder64\\zorvat.dll" \
  '--work=C:\zorvat-tests' '--gtest_filter=Unregistered.*'
check "x64 package removed: both install folders are gone" \
  test ! -e "$(drive_c)/Program Files (x86)/zorvat" -a ! -e "$(drive_c)/Program Files/zorvat"
check "x64 package removed: no product is listed" test -z "$(products)"
registry_snapshot "$work/registry-after"
left=$(zorvat_lines "$work/registry-after" || true)
if [[ -z $left ]]; then
  pass "x64 package removed: no registry key or value of zorvat is left in either view"
else
  echo "$left" | head -n 10 | sed 's/^/  /'
  fail "x64 package removed: $(grep -c . <<<"$left") registry lines of zorvat are left"
fi
# Keys only: the scripting hosts rewrite some values of their own interfaces as they run.
lost=$(comm -23 <(grep '^\[.*\]$' "$work/registry-before") <(grep '^\[.*\]$' "$work/registry-after"))
if [[ -z $lost ]]; then
  pass "x64 package removed: every registry key that was there before is still there"
else
  echo "$lost" | head -n 10 | sed 's/^/  /'
  fail "x64 package removed: $(grep -c . <<<"$lost") registry keys of before are gone"
fi

# --- The 32-bit package on 64-bit Windows ---------------------------------------------
# What the DLL's own DllRegisterServer (with the type library's registration) writes for
# the same path, to compare with what the installer writes.
mkdir -p "$(drive_c)/Program Files (x86)/zorvat"
cp "$dll32" "$(drive_c)/Program Files (x86)/zorvat/zorvat.dll"
timeout 120 "$wine32" 'C:\windows\syswow64\regsvr32.exe' /s "$folder32\\zorvat.dll" >/dev/null 2>&1
registry_snapshot "$work/registry-regsvr32"
timeout 120 "$wine32" 'C:\windows\syswow64\regsvr32.exe' /s /u "$folder32\\zorvat.dll" >/dev/null 2>&1
rm -rf "$(drive_c)/Program Files (x86)/zorvat"

# A registration as a set of lines, whichever registry view each key went to (the Wine
# loader and the installer place some keys differently), the help folder without its
# trailing backslash, the installer's own bookkeeping left out.
registration_lines() {
  zorvat_lines "$1" | grep -v -i 'Classes\\Installer\\' | sed -e 's/Wow6432Node\\//' \
    -e 's/\\\\"$/"/' | tr 'A-Z' 'a-z' | sort -u
}

msiexec "x86 package" /i "$work/msi/zorvat-$version.msi"
registry_snapshot "$work/registry-x86"
missing=$(comm -23 <(registration_lines "$work/registry-regsvr32") <(registration_lines "$work/registry-x86"))
extra=$(comm -13 <(registration_lines "$work/registry-regsvr32") <(registration_lines "$work/registry-x86"))
if [[ -z $missing ]]; then
  pass "x86 package: the installer writes every key and value that DllRegisterServer writes ($(registration_lines "$work/registry-regsvr32" | grep -c .) lines)"
else
  echo "$missing" | head -n 10 | sed 's/^/  /'
  fail "x86 package: $(grep -c . <<<"$missing") lines of DllRegisterServer's registration are not written"
fi
# Beyond it, the versioned ProgIDs: zorvat.<Class>.1 with its Clsid, the
# version-independent one's CurVer, and the class's VersionIndependentProgID.
unexpected=$(grep -v -E '\\zorvat\.[a-z0-9]+\.1(\\clsid)?\]|\\curver\]|\\versionindependentprogid\]' <<<"$extra" | grep . || true)
extra_keys=$(grep -c '\]$' <<<"$extra")
if [[ -z $unexpected && $extra_keys == $((4 * ${#classes[@]})) ]]; then
  pass "x86 package: beyond that only the .1 ProgIDs, CurVer and VersionIndependentProgID ($extra_keys keys)"
else
  echo "$unexpected" | head -n 10 | sed 's/^/  /'
  fail "x86 package: the installer writes more than DllRegisterServer ($extra_keys extra keys)"
fi
create "x86 package: a 32-bit client creates every class from $folder32" \
  "$wine32" "$work/create_class-i686.exe" "$folder32\\zorvat.dll" "${prog_ids[@]}" "${clsids[@]}"
create "x86 package: a 64-bit client does not see the 32-bit registration" \
  "$wine64" "$work/create_class-x86_64.exe" "not registered" "${clsids[@]}"
check "x86 package: no 64-bit folder" test ! -e "$(drive_c)/Program Files/zorvat"
scripting_host "x86 package, i686" "$wine32" 'C:\windows\syswow64'
msiexec "x86 package" /x "$work/msi/zorvat-$version.msi"
create "x86 package removed: a 32-bit client gets \"class not registered\"" \
  "$wine32" "$work/create_class-i686.exe" "not registered" "${clsids[@]}"
check "x86 package removed: the install folder is gone" test ! -e "$(drive_c)/Program Files (x86)/zorvat"
registry_snapshot "$work/registry-after-x86"
check "x86 package removed: no registry key or value of zorvat is left" \
  test -z "$(zorvat_lines "$work/registry-after-x86" || true)"

# --- The 32-bit package on 32-bit Windows ---------------------------------------------
timeout 30 wineserver -k >/dev/null 2>&1
WINEPREFIX=$(mktemp -d "${TMPDIR:-/tmp}/zorvat-msi.XXXXXX")
export WINEPREFIX
prefixes+=("$WINEPREFIX")
if WINEARCH=win32 timeout 180 "$wine32" wineboot -i >/dev/null 2>&1 &&
   timeout 60 "$wine32" reg add 'HKCU\Software\Wine\Drivers' /v Graphics /d null /f >/dev/null 2>&1 &&
   timeout 60 wineserver -w; then
  pass "32-bit Windows: fresh 32-bit Wine prefix"
  timeout 300 "$wine32" msiexec /i "$(windows_path "$work/msi/zorvat-$version.msi")" /qn >/dev/null 2>&1
  check "32-bit Windows: msiexec /i zorvat-$version.msi /qn installs the DLL in C:\Program Files\zorvat" \
    cmp -s "$dll32" "$(drive_c)/Program Files/zorvat/zorvat.dll"
  create "32-bit Windows: a client creates every class by ProgID, .1 ProgID and CLSID" \
    "$wine32" "$work/create_class-i686.exe" "$folder64\\zorvat.dll" "${prog_ids[@]}" "${clsids[@]}"
  scripting_host "32-bit Windows" "$wine32" 'C:\windows\system32'
  timeout 300 "$wine32" msiexec /x "$(windows_path "$work/msi/zorvat-$version.msi")" /qn >/dev/null 2>&1
  create "32-bit Windows: uninstalled, a client gets \"class not registered\"" \
    "$wine32" "$work/create_class-i686.exe" "not registered" "${clsids[@]}" "${prog_ids[@]}"
  check "32-bit Windows: uninstalled, the install folder is gone" test ! -e "$(drive_c)/Program Files/zorvat"
else
  fail "32-bit Windows: creating a 32-bit Wine prefix"
fi

# --- The release zip, registered by hand --------------------------------------------------
# ./project package's own script builds the release. When zorvat.exe cannot be built
# (a failure, or a skip for a tree without a Windows build of the command), the rest of
# the release is still built and tested without it.
dist=$work/dist
cli_note=""
if "$source_dir/packaging/package.sh" --out "$dist" >"$work/package.log" 2>&1; then
  pass "packaging/package.sh built the release with zorvat.exe"
else
  if grep -q "unknown target 'zorvat'" "$work/package.log"; then
    skip "release: zorvat.exe, as this tree has no Windows build of the command (target zorvat)"
  else
    grep -v '^package: building' "$work/package.log" | head -n 20 | sed 's/^/  /'
    fail "release: packaging/package.sh could not build zorvat.dll and zorvat.exe of both presets"
  fi
  cli_note="without zorvat.exe"
  if ! "$source_dir/packaging/package.sh" --out "$dist" --without-cli >"$work/package.log" 2>&1; then
    tail -n 20 "$work/package.log"
    fail "packaging/package.sh --without-cli"
    finish
  fi
fi
zip=$dist/zorvat-$version-windows.zip
expected_entries="INSTALL.txt README.md x64/zorvat.dll x64/zorvat.tlb x86/zorvat.dll x86/zorvat.tlb"
[[ -z $cli_note ]] && expected_entries="INSTALL.txt README.md x64/zorvat.dll x64/zorvat.exe x64/zorvat.tlb x86/zorvat.dll x86/zorvat.exe x86/zorvat.tlb"
entries=$(python3 -c 'import sys, zipfile; print(" ".join(sorted(zipfile.ZipFile(sys.argv[1]).namelist())))' "$zip" 2>/dev/null)
check "release: dist/ holds both installers, the zip, README.md and INSTALL.txt" \
  test "$(cd "$dist" && ls | sort | tr '\n' ' ')" == "INSTALL.txt README.md zorvat-$version-windows.zip zorvat-$version-x64.msi zorvat-$version.msi "
if [[ $entries == "$expected_entries" ]]; then
  pass "release zip holds $entries"
else
  fail "release zip holds: $entries (expected $expected_entries)"
fi

fresh_prefix "release zip"
python3 -c 'import sys, zipfile; zipfile.ZipFile(sys.argv[1]).extractall(sys.argv[2])' "$zip" \
  "$(drive_c)/zorvat"
unpacked32='C:\zorvat\x86\zorvat.dll'
unpacked64='C:\zorvat\x64\zorvat.dll'
check "release zip: the 32-bit DLL unpacked is the one built" cmp -s "$dll32" "$(drive_c)/zorvat/x86/zorvat.dll"
# The command line from the zip, both builds: its version and an export of the same case.
if [[ -z $cli_note ]]; then
  for arch in x86 x64; do
    wine=$wine64
    [[ $arch == x86 ]] && wine=$wine32
    rm -f "$(drive_c)/zorvat-cli.csv"
    shown=$(timeout 60 "$wine" "C:\\zorvat\\$arch\\zorvat.exe" --version 2>/dev/null | tr -d '\r')
    timeout 60 "$wine" "C:\\zorvat\\$arch\\zorvat.exe" export Generic \
      --cards "$(windows_path "$source_dir/tests/corpus/cards/two-employees.json")" \
      --setup "$export_setup" --out 'C:\zorvat-cli.csv' >/dev/null 2>&1
    if [[ $shown == "zorvat $version" ]] &&
       cmp -s "$(drive_c)/zorvat-cli.csv" "$export_case/expected.out"; then
      pass "release zip: $arch\\zorvat.exe says \"$shown\" and exports generic/comma-titles-names byte for byte"
    else
      fail "release zip: $arch\\zorvat.exe (--version: \"$shown\") or its export of generic/comma-titles-names"
    fi
  done
fi
timeout 120 "$wine32" 'C:\windows\syswow64\regsvr32.exe' /s "$unpacked32" >/dev/null 2>&1
create "release zip: after the 32-bit regsvr32 a 32-bit client creates every class from it" \
  "$wine32" "$work/create_class-i686.exe" "$unpacked32" "zorvat.Generic" "${clsids[@]}"
create "release zip: a 64-bit client does not see the 32-bit registration" \
  "$wine64" "$work/create_class-x86_64.exe" "not registered" "${clsids[@]}"
script_export "release zip, i686" "$wine32" 'C:\windows\syswow64' "$work/answer_save-i686.exe"
timeout 120 "$wine64" 'C:\windows\system32\regsvr32.exe' /s "$unpacked64" >/dev/null 2>&1
create "release zip: registered side by side, a 64-bit client creates every class from the 64-bit DLL" \
  "$wine64" "$work/create_class-x86_64.exe" "$unpacked64" "zorvat.Generic" "${clsids[@]}"
create "release zip: registered side by side, a 32-bit client still creates every class from the 32-bit DLL" \
  "$wine32" "$work/create_class-i686.exe" "$unpacked32" "zorvat.Generic" "${clsids[@]}"
script_export "release zip, x86_64" "$wine64" 'C:\windows\system32' "$work/answer_save-x86_64.exe"
timeout 120 "$wine64" 'C:\windows\system32\regsvr32.exe' /s /u "$unpacked64" >/dev/null 2>&1
create "release zip: the 64-bit DLL unregistered, a 64-bit client gets \"class not registered\"" \
  "$wine64" "$work/create_class-x86_64.exe" "not registered" "zorvat.Generic" "${clsids[@]}"
create "release zip: the 64-bit DLL unregistered, the 32-bit one still works, by ProgID too" \
  "$wine32" "$work/create_class-i686.exe" "$unpacked32" "zorvat.Generic" "${clsids[@]}"
timeout 120 "$wine32" 'C:\windows\syswow64\regsvr32.exe' /s /u "$unpacked32" >/dev/null 2>&1
create "release zip: both unregistered, a 32-bit client gets \"class not registered\"" \
  "$wine32" "$work/create_class-i686.exe" "not registered" "zorvat.Generic" "${clsids[@]}"
timeout 120 "$wine64" 'C:\windows\system32\regsvr32.exe' /s "$unpacked64" >/dev/null 2>&1
create "release zip: the 64-bit DLL alone registered, a 64-bit client creates every class from it" \
  "$wine64" "$work/create_class-x86_64.exe" "$unpacked64" "zorvat.Generic" "${clsids[@]}"
create "release zip: a 32-bit client does not see the 64-bit registration" \
  "$wine32" "$work/create_class-i686.exe" "not registered" "zorvat.Generic" "${clsids[@]}"
timeout 120 "$wine64" 'C:\windows\system32\regsvr32.exe' /s /u "$unpacked64" >/dev/null 2>&1
create "release zip: the 64-bit DLL unregistered, a 64-bit client gets \"class not registered\"" \
  "$wine64" "$work/create_class-x86_64.exe" "not registered" "zorvat.Generic" "${clsids[@]}"

finish
