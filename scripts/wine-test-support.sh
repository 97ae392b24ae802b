# Sourced by the Wine test scripts (hosts/com/tests/run-wine-tests.sh,
# hosts/cli/tests/run-wine-cli-tests.sh, packaging/tests/run-msi-tests.sh,
# tests/differential/run-wine-format-diff.sh): the count every script ends with, Linux
# paths as Wine sees them, and an X display for the tests that put windows on a screen.
#
# Each script ends with "N passed, N failed" (", N skipped" when some were skipped) and
# exits non-zero when anything failed. Wine's exit codes are never trusted alone: each
# step must print its own positive result.

passed=0
failed=0
skipped=0
pass() { echo "PASS: $*"; passed=$((passed + 1)); }
fail() { echo "FAIL: $*"; failed=$((failed + 1)); }
skip() { echo "SKIP: $*"; skipped=$((skipped + 1)); }
finish() {
  local line="$passed passed, $failed failed"
  ((skipped > 0)) && line+=", $skipped skipped"
  echo "$line"
  ((failed == 0))
  exit $?
}
# check DESCRIPTION COMMAND...: passes when the command succeeds.
check() {
  local description=$1
  shift
  if "$@"; then pass "$description"; else fail "$description"; fi
}

# print_gtest_results LABEL [QUIET]: reads a GoogleTest run's output on standard input
# and prints, each behind "  [LABEL] ", the line of every test's result and "note:"
# lines, and everything a failed test printed between its start and its result, so that
# a failure reads whole in the log. With QUIET set to 1 the results of passing tests are
# left out.
print_gtest_results() {
  local label=$1 quiet=${2:-0}
  tr -d '\r' | awk -v label="  [$label] " -v quiet="$quiet" '
    /^\[ RUN +\]/ { block = ""; running = 1; next }
    /^\[ +OK +\]/ || /^\[ +SKIPPED +\] [A-Z]/ {
      running = 0; if (!quiet) print label $0; next
    }
    /^\[ +FAILED +\] [A-Z]/ {
      if (running) printf "%s", block
      running = 0; block = ""; print label $0; next
    }
    /^note:/ { print label $0; next }
    running { block = block label $0 "\n" }'
}

# A Linux path as a Windows program under Wine names it (drive Z: is the root).
windows_path() { printf 'Z:%s' "${1//\//\\}"; }

# Starts Xvfb on the first free display from FIRST to LAST (so that scripts running side
# by side take different ones): sets xvfb_display (":N") and xvfb_pid, both empty when
# Xvfb is not installed or none started.
xvfb_display=""
xvfb_pid=""
start_xvfb() {
  local first=$1 last=$2 number
  xvfb_display=""
  xvfb_pid=""
  command -v Xvfb >/dev/null || return 0
  for number in $(seq "$first" "$last"); do
    [[ -e /tmp/.X11-unix/X$number || -e /tmp/.X$number-lock ]] && continue
    Xvfb ":$number" -screen 0 1024x768x24 -nolisten tcp >/dev/null 2>&1 &
    xvfb_pid=$!
    sleep 1
    if kill -0 "$xvfb_pid" 2>/dev/null; then
      xvfb_display=":$number"
      return 0
    fi
    xvfb_pid=""
  done
}
stop_xvfb() {
  [[ -n $xvfb_pid ]] || return 0
  kill "$xvfb_pid" 2>/dev/null
  wait "$xvfb_pid" 2>/dev/null
  xvfb_pid=""
  xvfb_display=""
}
