# need PACKAGE...: installs those Debian packages that are missing. Mirrors are sometimes mid-sync:
# one more try.
need() {
    local package missing=() root=()
    for package; do
        dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'ok installed' ||
            missing+=("$package")
    done
    [ ${#missing[@]} -gt 0 ] || return 0
    [ "$(id -u)" = 0 ] || root=(sudo)
    echo "Installing ${missing[*]}" >&2
    install_missing() {
        "${root[@]}" apt-get update -qq >&2 || true
        DEBIAN_FRONTEND=noninteractive "${root[@]}" apt-get install -y -qq \
            --no-install-recommends "${missing[@]}" >/dev/null
    }
    install_missing || { sleep 20; install_missing; }
}
