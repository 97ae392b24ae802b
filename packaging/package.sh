#!/usr/bin/env bash
# Builds the Windows release into a folder (dist/ for ./project package):
#   zorvat-VERSION.msi           installer: the 32-bit zorvat.dll, for every Windows
#   zorvat-VERSION-x64.msi       installer: the 32- and the 64-bit zorvat.dll, for 64-bit Windows
#   zorvat-VERSION-windows.zip   x86/ and x64/ with zorvat.dll, zorvat.tlb and zorvat.exe,
#                                README.md and INSTALL.txt, for registration by hand
#   README.md, INSTALL.txt
#
#   packaging/package.sh [--out FOLDER] [--without-cli]
#
# The DLLs and zorvat.exe are cross-built with the presets mingw-x86 and mingw-x64 under
# build/ (or under the folder ZORVAT_WINE_BUILD names). --without-cli leaves zorvat.exe
# out (for the package test of a tree whose Windows build has no command yet); a release
# is never made without it.
set -euo pipefail

source_dir=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
out=$source_dir/dist
cli=1
while (($#)); do
  case "$1" in
    --out) out=$2; shift 2 ;;
    --without-cli) cli=0; shift ;;
    *) echo "usage: $0 [--out FOLDER] [--without-cli]" >&2; exit 2 ;;
  esac
done
build_root=${ZORVAT_WINE_BUILD:-$source_dir/build}
version=$(sed -n 's/^project(zorvat VERSION \([0-9.]*\).*/\1/p' "$source_dir/CMakeLists.txt")
[[ -n $version ]] || { echo "package: no project(zorvat VERSION ...) in CMakeLists.txt" >&2; exit 1; }

"$source_dir/scripts/install-deps.sh" windows

targets=(zorvat_com)
((cli)) && targets+=(zorvat)
for preset in mingw-x86 mingw-x64; do
  echo "package: building ${targets[*]} ($preset)" >&2
  log=$build_root/$preset-package.log
  mkdir -p "$build_root"
  if ! (cd "$source_dir" && cmake --preset "$preset" -B "$build_root/$preset" &&
        cmake --build "$build_root/$preset" -j 2 --target "${targets[@]}") >"$log" 2>&1; then
    grep -E 'error|FAILED' "$log" | head -n 20 >&2
    echo "package: the build of ${targets[*]} ($preset) failed (log in $log); a release" \
      "needs zorvat.dll and zorvat.exe (target zorvat) of both Windows presets" >&2
    exit 1
  fi
done

rm -rf "$out"
mkdir -p "$out"
stage=$(mktemp -d)
trap 'rm -rf "$stage"' EXIT
for arch in x86 x64; do
  built=$build_root/mingw-$arch
  mkdir -p "$stage/$arch"
  cp "$built/hosts/com/zorvat.dll" "$built/hosts/com/generated/zorvat.tlb" "$stage/$arch/"
  ((cli)) && cp "$built/hosts/cli/zorvat.exe" "$stage/$arch/"
done
cp "$source_dir/README.md" "$stage/README.md"
sed "s/@VERSION@/$version/g" "$source_dir/packaging/INSTALL.txt" >"$stage/INSTALL.txt"

"$source_dir/packaging/msi/build-msi.sh" --dll32 "$stage/x86/zorvat.dll" \
  --dll64 "$stage/x64/zorvat.dll" --out "$out" --version "$version" >/dev/null
# A zip whose text files have Windows line ends, as Notepad shows them.
python3 - "$stage" "$out/zorvat-$version-windows.zip" <<'PY'
import os, sys, zipfile
stage, target = sys.argv[1], sys.argv[2]
with zipfile.ZipFile(target, "w", zipfile.ZIP_DEFLATED) as archive:
    for folder, _, files in sorted(os.walk(stage)):
        for name in sorted(files):
            path = os.path.join(folder, name)
            entry = os.path.relpath(path, stage).replace(os.sep, "/")
            with open(path, "rb") as file:
                data = file.read()
            if name.endswith((".md", ".txt")):
                data = data.replace(b"\r\n", b"\n").replace(b"\n", b"\r\n")
            archive.writestr(entry, data)
PY
cp "$stage/README.md" "$stage/INSTALL.txt" "$out/"
echo "package: wrote $out:" >&2
ls -1 "$out" >&2
