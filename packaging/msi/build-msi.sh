#!/usr/bin/env bash
# Builds the zorvat installers with wixl from packaging/msi/zorvat.wxs:
#   zorvat-VERSION.msi       the 32-bit zorvat.dll, for every Windows
#   zorvat-VERSION-x64.msi   the 32-bit and the 64-bit zorvat.dll, for 64-bit Windows
#
#   packaging/msi/build-msi.sh --dll32 PATH --dll64 PATH --out FOLDER [--version X.Y.Z]
#
# The version defaults to the project's one version, project(zorvat VERSION ...) in
# CMakeLists.txt (the tests build a lower one to try an upgrade). Prints the paths of the
# two packages.
set -euo pipefail

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
source_dir=$(cd "$here/../.." && pwd)
dll32="" dll64="" out="" version=""
while (($#)); do
  case "$1" in
    --dll32) dll32=$2; shift 2 ;;
    --dll64) dll64=$2; shift 2 ;;
    --out) out=$2; shift 2 ;;
    --version) version=$2; shift 2 ;;
    *) echo "usage: $0 --dll32 PATH --dll64 PATH --out FOLDER [--version X.Y.Z]" >&2; exit 2 ;;
  esac
done
[[ -n $dll32 && -n $dll64 && -n $out ]] || { echo "usage: $0 --dll32 PATH --dll64 PATH --out FOLDER [--version X.Y.Z]" >&2; exit 2; }
for dll in "$dll32" "$dll64"; do
  [[ -f $dll ]] || { echo "build-msi: $dll does not exist" >&2; exit 1; }
done
if [[ -z $version ]]; then
  version=$(sed -n 's/^project(zorvat VERSION \([0-9.]*\).*/\1/p' "$source_dir/CMakeLists.txt")
  [[ -n $version ]] || { echo "build-msi: no project(zorvat VERSION ...) in CMakeLists.txt" >&2; exit 1; }
fi
command -v wixl >/dev/null || "$source_dir/scripts/install-deps.sh" windows

mkdir -p "$out"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
idl=$source_dir/hosts/com/zorvat.idl
python3 "$here/registration.py" --idl "$idl" --file zorvat32 --folder INSTALLFOLDER32 \
  --syskind win32 --out "$work/registration-x86.wxi"
python3 "$here/registration.py" --idl "$idl" --file zorvat64 --folder INSTALLFOLDER64 \
  --syskind win64 --out "$work/registration-x64.wxi"

# wixl takes file sources relative to the folder it runs in.
mkdir -p "$work/x86" "$work/x64"
cp "$dll32" "$work/x86/zorvat.dll"
cp "$dll64" "$work/x64/zorvat.dll"
out=$(realpath "$out")

# wixl reports attributes it does not know as GLib warnings and carries on; any such
# warning means the package is not what the source says, so it fails the build.
build() {
  local platform=$1 target=$2 log
  log=$(cd "$work" && wixl --arch "$platform" -I "$work" -D Version="$version" \
          -D Platform="$platform" -D Dll32=x86/zorvat.dll -D Dll64=x64/zorvat.dll \
          -o "$target" "$here/zorvat.wxs" 2>&1) || { echo "$log" >&2; exit 1; }
  if [[ -n $log ]]; then
    echo "$log" >&2
    echo "build-msi: wixl warned while building $target" >&2
    exit 1
  fi
  echo "$target"
}
build x86 "$out/zorvat-$version.msi"
build x64 "$out/zorvat-$version-x64.msi"
