# shellcheck shell=bash
# What the commands of this folder share. To be sourced; `root` is the checkout, whatever the current directory is.

# Without it ccache stores nothing that was compiled with a precompiled header.
export CCACHE_SLOPPINESS=${CCACHE_SLOPPINESS:-pch_defines,time_macros}

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

say() {
    printf '== %s\n' "$*"
}

# configure PRESET FOLDER [CMAKE-OPTION...]: FOLDER is below the checkout.
configure() {
    local preset=$1 folder=$2
    shift 2
    local launcher=()
    if command -v ccache >/dev/null; then
        launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
    fi
    cmake -S "$root" -B "$root/$folder" --preset "$preset" "${launcher[@]}" "$@"
}

# build FOLDER [CMAKE-BUILD-OPTION...]
build() {
    local folder=$1
    shift
    cmake --build "$root/$folder" --parallel "$(nproc)" "$@"
}

# run_tests FOLDER [CTEST-OPTION...]: more at a time than there are processors, for the longest ones wait most of the time.
# In CI, whose machines stand still for seconds now and then, one or two tests with a failed check run once more, alone;
# both results are told. A crash, a hang and a report of a sanitizer stay failures.
run_tests() {
    local folder=$1
    shift
    local ctest_command=(ctest --test-dir "$root/$folder" --output-on-failure --no-tests=error)
    local told
    told=$(mktemp)
    if "${ctest_command[@]}" -j $((2 * $(nproc))) "$@" </dev/null 2>&1 | tee "$told"; then
        rm -f "$told"
        return 0
    fi
    local failed
    failed=$(grep -cE '^ *[0-9]+/[0-9]+ Test .*\*\*\*' "$told" || true)
    if [[ -z ${CI:-} ]] || ((failed < 1 || failed > 2)) ||
        grep -qE '\*\*\*(Timeout|Exception|Not Run)|(Address|Leak|Thread)Sanitizer|runtime error:' "$told"; then
        rm -f "$told"
        return 1
    fi
    rm -f "$told"
    say "UNSTEADY if it passes now: the $failed that failed, alone"
    "${ctest_command[@]}" --rerun-failed </dev/null
}
