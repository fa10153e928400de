# shellcheck shell=bash
# Tests that pass are not listed.
failures() { grep -vE '^ *(Start +[0-9]+:|[0-9]+/[0-9]+ Test +#[0-9]+: .* Passed ).*$' || true; }

# suite PRESET [OPTION...]: runs the tests of a preset.
suite() { ctest --preset "$@" | failures; }

# workflow PRESET: configures, builds, and runs the tests of a preset.
workflow() { cmake --workflow --preset "$1" | failures; }
