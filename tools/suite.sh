# shellcheck shell=bash
# suite PRESET [OPTION...]: runs the tests of a preset; prints failures and the summary, not what passes.
suite() {
    ctest --preset "$@" |
        { grep -vE '^ *(Start +[0-9]+:|[0-9]+/[0-9]+ Test +#[0-9]+: .* Passed ).*$' || true; }
}
