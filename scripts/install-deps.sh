#!/usr/bin/env bash
# Installs the Debian packages a build needs, only those that are missing.
#   scripts/install-deps.sh core      compiler, CMake, libraries, test and bench tools
#   scripts/install-deps.sh fuzz      clang with libFuzzer for the fuzz targets
#   scripts/install-deps.sh windows   MinGW-w64 cross compilers, Wine and Xvfb for the COM server
#   scripts/install-deps.sh all       all of them
set -euo pipefail

core=(g++ cmake ninja-build make pkg-config libgtest-dev libgmock-dev libbenchmark-dev
      libsimdjson-dev nlohmann-json3-dev libcli11-dev libfmt-dev libpugixml-dev clang-format python3)
fuzz=(clang-14 libclang-rt-14-dev)
windows=(g++-mingw-w64-i686 g++-mingw-w64-x86-64 mingw-w64-tools wine wine64 libwine-dev xvfb
         x11-utils imagemagick fonts-wine)

wanted=()
for group in "${@:-core}"; do
  case "$group" in
    core) wanted+=("${core[@]}") ;;
    fuzz) wanted+=("${fuzz[@]}") ;;
    windows) wanted+=("${windows[@]}") ;;
    all) wanted+=("${core[@]}" "${fuzz[@]}" "${windows[@]}") ;;
    *) echo "install-deps: unknown group '$group' (core, fuzz, windows, all)" >&2; exit 2 ;;
  esac
done

missing=()
for package in "${wanted[@]}"; do
  status=$(dpkg-query -W -f='${Status}' "$package" 2>/dev/null || true)
  [[ "$status" == "install ok installed" ]] || missing+=("$package")
done
[[ ${#missing[@]} -eq 0 ]] && exit 0

sudo=()
[[ $(id -u) -eq 0 ]] || sudo=(sudo)
echo "install-deps: installing ${missing[*]}" >&2
export DEBIAN_FRONTEND=noninteractive
apt_options=(-o DPkg::Lock::Timeout=600 -o Acquire::Retries=3)
"${sudo[@]}" apt-get "${apt_options[@]}" update -qq
"${sudo[@]}" apt-get "${apt_options[@]}" install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
