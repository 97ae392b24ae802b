#!/usr/bin/env bash
# Installs the Debian packages a build needs, only those that are missing.
#   scripts/install-deps.sh core      compiler, CMake, libraries, test and bench tools,
#                                     clang-format and clang-tidy
#   scripts/install-deps.sh fuzz      clang with libFuzzer for the fuzz targets
#   scripts/install-deps.sh windows   MinGW-w64 cross compilers, Wine (64- and 32-bit), Xvfb
#                                     for the COM server, and wixl for its MSI installer
#   scripts/install-deps.sh all       all of them
set -euo pipefail

core=(g++ cmake ninja-build make ccache pkg-config libgtest-dev libgmock-dev libbenchmark-dev
      libsimdjson-dev nlohmann-json3-dev libcli11-dev libfmt-dev libpugixml-dev clang-format clang-tidy
      python3)
fuzz=(clang-14 libclang-rt-14-dev)
windows=(g++-mingw-w64-i686 g++-mingw-w64-x86-64 mingw-w64-tools wine wine64 libwine-dev xvfb
         x11-utils imagemagick fonts-wine wixl)

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
wants_wine32=0
for group in "${@:-core}"; do [[ $group == windows || $group == all ]] && wants_wine32=1; done
if ((wants_wine32)); then
  status=$(dpkg-query -W -f='${Status}' wine32:i386 2>/dev/null || true)
  [[ "$status" == "install ok installed" ]] && wants_wine32=0
fi
[[ ${#missing[@]} -eq 0 && $wants_wine32 -eq 0 ]] && exit 0

sudo=()
[[ $(id -u) -eq 0 ]] || sudo=(sudo)
export DEBIAN_FRONTEND=noninteractive
apt_options=(-o DPkg::Lock::Timeout=600 -o Acquire::Retries=3)

# An index that fails to download (a mirror caught mid-sync) is reported by apt and
# left out; the install below then says which package it could not find.
update() { "${sudo[@]}" apt-get "${apt_options[@]}" update -qq || true; }

if ((${#missing[@]} > 0)); then
  echo "install-deps: installing ${missing[*]}" >&2
  update
  "${sudo[@]}" apt-get "${apt_options[@]}" install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
fi

# The shipping DLL is 32-bit, so its tests need 32-bit Wine (wine32:i386). Every
# Multi-Arch: same library must then have one version in both architectures. The
# security suite's i386 index can lag behind its amd64 index (apt: "File has unexpected
# size ... Mirror sync in progress?"), and an installed amd64 library can be older than
# any version its i386 twin is offered at. For this one install (and the look-ups that
# plan it) the main archive is preferred over the security suite, through a
# preferences file passed as an option and removed when the step ends; each amd64
# library whose version differs from its i386 twin's is moved to the twin's: up where
# the twin is newer, down only where the twin truly lags. The script says which and
# why. Nothing is removed (--no-remove), and no pin stays behind: the next upgrade takes
# both architectures' security updates as usual.
# Earlier versions of this script left such a pin in place for good.
if [[ -e /etc/apt/preferences.d/zorvat-wine32 ]]; then
  echo "install-deps: removing /etc/apt/preferences.d/zorvat-wine32, which held back security updates" >&2
  "${sudo[@]}" rm -f /etc/apt/preferences.d/zorvat-wine32
fi
if ((wants_wine32)); then
  echo "install-deps: installing wine32:i386 (32-bit Wine)" >&2
  if ! dpkg --print-foreign-architectures | grep -qx i386; then
    "${sudo[@]}" dpkg --add-architecture i386
  fi
  main_first=$(mktemp)
  trap 'rm -f "$main_first"' EXIT
  cat >"$main_first" <<'PIN'
Package: *
Pin: release l=Debian-Security
Pin-Priority: 100
PIN
  chmod 644 "$main_first"
  pinned=(-o "Dir::Etc::Preferences=$main_first")
  update
  closure=$(apt-cache "${pinned[@]}" depends --recurse --no-recommends --no-suggests \
              --no-conflicts --no-breaks --no-replaces --no-enhances wine32:i386 2>/dev/null |
            grep -E '^[a-z0-9].*:i386$' | sort -u)
  twins=()
  for package in $closure; do
    name=${package%:i386}
    installed=$(dpkg-query -W -f='${Status} ${Version} ${Multi-Arch}' "$name:amd64" 2>/dev/null || true)
    [[ $installed == "install ok installed "*" same" ]] || continue
    version=$(awk '{print $4}' <<<"$installed")
    candidate=$(apt-cache "${pinned[@]}" policy "$package" | awk '/Candidate:/ {print $2}')
    [[ -n $candidate && $candidate != "(none)" && $candidate != "$version" ]] || continue
    if dpkg --compare-versions "$candidate" lt "$version"; then
      echo "install-deps: $name:amd64 down from $version to $candidate: its i386 twin has no newer version in the indexes apt could read" >&2
    else
      echo "install-deps: $name:amd64 up from $version to $candidate, the version of its i386 twin" >&2
    fi
    twins+=("$name:amd64=$candidate")
  done
  "${sudo[@]}" apt-get "${apt_options[@]}" "${pinned[@]}" install -y -qq --no-install-recommends \
    --no-remove --allow-downgrades "${twins[@]}" wine32:i386 >/dev/null
  rm -f "$main_first"
  trap - EXIT
  [[ -x /usr/lib/wine/wine ]] || { echo "install-deps: wine32 installed no /usr/lib/wine/wine" >&2; exit 1; }
fi
