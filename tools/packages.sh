# shellcheck shell=bash
# need PACKAGE...: installs those Debian packages that are missing. If that fails, it
# tries once more, because a mirror may be in the middle of an update. Without root or sudo it prints
# the command.
need() {
    local package missing=() root=()
    for package; do
        dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'ok installed' ||
            missing+=("$package")
    done
    [ ${#missing[@]} -gt 0 ] || return 0
    if [ "$(id -u)" != 0 ]; then
        if ! command -v sudo >/dev/null; then
            printf '%s\n' "These packages are missing. Run as root:" \
                "    apt-get update && apt-get install --no-install-recommends ${missing[*]}" >&2
            return 1
        fi
        root=(sudo)
    fi
    echo "Installing ${missing[*]}" >&2
    install_missing() {
        "${root[@]}" apt-get update -qq >&2 || true
        "${root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq \
            --no-install-recommends "${missing[@]}" >/dev/null
    }
    install_missing || { sleep 20; install_missing; }
}
