#!/usr/bin/env bash
# Installs the Debian packages a build needs, only those that are missing.
#   scripts/install-deps.sh core      compiler, CMake, libraries, test and bench tools,
#                                     clang-format and clang-tidy
#   scripts/install-deps.sh fuzz      clang with libFuzzer for the fuzz targets
#   scripts/install-deps.sh windows   MinGW-w64 cross compilers, Wine (64- and 32-bit), Xvfb
#                                     for the COM server, wixl for its MSI installer, and
#                                     the source of the installed pugixml for the Windows
#                                     builds (see fetch_pugixml_source below)
#   scripts/install-deps.sh all       all of them
set -euo pipefail

core=(g++ cmake ninja-build make ccache pkg-config libgtest-dev libgmock-dev libbenchmark-dev
      libsimdjson-dev nlohmann-json3-dev libcli11-dev libfmt-dev libpugixml-dev clang-format clang-tidy
      python3)
fuzz=(clang-14 libclang-rt-14-dev)
windows=(g++-mingw-w64-i686 g++-mingw-w64-x86-64 mingw-w64-tools wine wine64 libwine-dev xvfb
         x11-utils imagemagick fonts-wine wixl libpugixml-dev dpkg-dev debian-archive-keyring)

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

# The Windows builds compile pugixml with MinGW, from Debian's own source package of the
# version of libpugixml-dev installed here (Debian ships the header and a Linux library
# only), so that the native and the Windows builds read qbXML with the same parser. The
# source is fetched through a sources list and package lists of this step's own, signed by
# the Debian archive keyring (apt checks the files against the signed index), leaving the
# machine's apt configuration as it was, and unpacked into
#   ${ZORVAT_CACHE_DIR:-${XDG_CACHE_HOME:-$HOME/.cache}/zorvat}/pugixml-VERSION
# which the MinGW presets read (ZORVAT_PUGIXML_SOURCE_DIR in cmake/pugixml-source.cmake).
# Nothing is fetched when that folder is already there.
fetch_pugixml_source() {
  local version cache target work
  version=$(dpkg-query -W -f='${Version}' libpugixml-dev 2>/dev/null || true)
  if [[ -z $version ]]; then
    echo "install-deps: libpugixml-dev is not installed, so its source cannot be fetched" >&2
    return 1
  fi
  cache=${ZORVAT_CACHE_DIR:-${XDG_CACHE_HOME:-$HOME/.cache}/zorvat}
  target="$cache/pugixml-$version"
  [[ -f $target/src/pugixml.cpp ]] && return 0
  echo "install-deps: fetching the source of pugixml $version into $target" >&2
  mkdir -p "$cache"
  work=$(mktemp -d "$cache/.pugixml-fetch.XXXXXX")
  # apt downloads as its own user when it runs as root.
  chmod 755 "$work"
  mkdir -p "$work/lists/partial" "$work/cache/archives/partial" "$work/download"
  cat >"$work/sources.sources" <<SOURCES
Types: deb-src
URIs: http://deb.debian.org/debian
Suites: bookworm bookworm-updates
Components: main
Signed-By: /usr/share/keyrings/debian-archive-keyring.gpg
SOURCES
  if [[ $(id -u) -eq 0 ]] && id _apt >/dev/null 2>&1; then
    chown -R _apt "$work/lists" "$work/cache" "$work/download"
  fi
  local private=(-o "Dir::Etc::sourcelist=$work/sources.sources" -o Dir::Etc::sourceparts=/dev/null
                 -o "Dir::State::Lists=$work/lists" -o "Dir::Cache=$work/cache"
                 -o Acquire::Retries=3)
  if ! apt-get "${private[@]}" update -qq >"$work/apt.log" 2>&1 ||
     ! (cd "$work/download" &&
        apt-get "${private[@]}" source --download-only -qq "pugixml=$version") >>"$work/apt.log" 2>&1 ||
     ! dpkg-source -x "$work/download/pugixml_${version#*:}.dsc" "$work/pugixml" >>"$work/apt.log" 2>&1 ||
     [[ ! -f $work/pugixml/src/pugixml.cpp ]]; then
    cat "$work/apt.log" >&2
    echo "install-deps: could not fetch the source of pugixml $version" >&2
    rm -rf "$work"
    return 1
  fi
  rm -rf "$target"
  mv "$work/pugixml" "$target"
  rm -rf "$work"
}
wants_windows=0
for group in "${@:-core}"; do [[ $group == windows || $group == all ]] && wants_windows=1; done

if [[ ${#missing[@]} -eq 0 && $wants_wine32 -eq 0 ]]; then
  ((wants_windows)) && fetch_pugixml_source
  exit 0
fi

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
((wants_windows)) && fetch_pugixml_source
exit 0
