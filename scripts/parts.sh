# Runs the parts of a long check one after another, says every half minute that it is still at
# work, and closes with a table. Sourced by bash scripts; bash 3.2 is enough.
# shellcheck shell=bash

export UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1}
if command -v ccache >/dev/null; then
    export CMAKE_CXX_COMPILER_LAUNCHER=${CMAKE_CXX_COMPILER_LAUNCHER:-ccache}
fi
jobs=$(getconf _NPROCESSORS_ONLN)

# build PRESET [CMAKE_OPTION...]
build() {
    cmake --preset "$@" &&
        cmake --build --preset "$1" --parallel "$jobs"
}

# build_targets PRESET TARGET...
build_targets() {
    local preset=$1
    shift
    cmake --preset "$preset" &&
        cmake --build --preset "$preset" --parallel "$jobs" --target "$@"
}

# run_tests PRESET LABELS [AT_A_TIME]: those tests of a build, at least one.
run_tests() {
    ctest --preset "$1" --label-regex "$2" --parallel "${3:-$jobs}" --no-tests=error
}

part_lines=()
part_failures=0
beat=

heartbeat() {
    local nap=
    trap 'kill "$nap"; exit 0' TERM
    while :; do
        sleep 30 >/dev/null 2>&1 &
        nap=$!
        wait "$nap"
        echo "... $1, $((SECONDS - $2)) s"
    done
}

stop_heartbeat() {
    [ -z "$beat" ] && return
    kill "$beat" 2>/dev/null || true
    wait "$beat" 2>/dev/null || true
    beat=
}
trap stop_heartbeat EXIT

# part NAME COMMAND...: runs it, notes how it went and returns what it returned. The command is run
# in a condition, so a function used here must chain its steps with &&.
part() {
    local name=$1 start=$SECONDS status=0 verdict=PASS
    shift
    printf '\n== %s\n' "$name"
    heartbeat "$name" "$start" 2>/dev/null &
    beat=$!
    "$@" || status=$?
    stop_heartbeat
    if [ "$status" != 0 ]; then
        verdict=FAIL
        part_failures=$((part_failures + 1))
    fi
    part_lines+=("$(printf '%s  %5d s  %s' "$verdict" "$((SECONDS - start))" "$name")")
    return "$status"
}

# finish: the table, and the exit status of the whole.
finish() {
    printf '\n'
    printf '%s\n' "${part_lines[@]}"
    if [ "$part_failures" = 0 ]; then
        echo "Everything passed in $SECONDS s."
        exit 0
    fi
    echo "$part_failures of ${#part_lines[@]} parts failed."
    exit 1
}
