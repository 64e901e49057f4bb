# Sourced by the scripts at the root: installs Debian packages by name, only those that are missing.

need_packages() {
    local missing=() package
    for package in "$@"; do
        dpkg-query -W -f '${Status}' "$package" 2>/dev/null | grep -q 'ok installed' ||
            missing+=("$package")
    done
    [ ${#missing[@]} -eq 0 ] && return
    echo "Installing: ${missing[*]}"
    local as_root=()
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null || {
            echo "These packages are missing and sudo is not here to install them: ${missing[*]}" >&2
            exit 1
        }
        as_root=(sudo)
    fi
    "${as_root[@]}" apt-get update -q
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
        apt-get install -y -q --no-install-recommends "${missing[@]}"
}

# What every build needs.
build_packages=(g++ cmake ninja-build qtbase5-dev qtbase5-dev-tools libqt5serialport5-dev)
# What a window needs where no desktop brought it along.
display_packages=(fonts-liberation xvfb xauth xdotool imagemagick python3)
