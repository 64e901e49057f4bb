# Sourced by the scripts at the root: installs Debian packages by name, only those that are missing.

need_packages() {
    local missing=() package
    for package in "$@"; do
        dpkg-query -W -f '${Status}' "$package" 2>/dev/null | grep -q 'ok installed' ||
            missing+=("$package")
    done
    [ ${#missing[@]} -eq 0 ] && return
    local as_root=()
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null || {
            {
                echo "These packages are missing, and without sudo only root can install them:"
                echo "    apt-get install --no-install-recommends ${missing[*]}"
            } >&2
            exit 1
        }
        as_root=(sudo)
    fi
    echo "Installing: ${missing[*]}"
    "${as_root[@]}" apt-get update -q
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
        apt-get install -y -q --no-install-recommends "${missing[@]}"
}

# What every build needs; configuring the tests asks for Python.
build_packages=(g++ cmake ninja-build qtbase5-dev qtbase5-dev-tools libqt5serialport5-dev python3)
# What the suite needs that no desktop is sure to bring along: it asks for Arial, which is the fonts,
# and trusts the web site by its certificate.
window_packages=(fonts-liberation ca-certificates)
# What plays and photographs the suite where nobody looks on.
display_packages=("${window_packages[@]}" xvfb xdotool imagemagick)
# What the pictures of the guide need beside it: a window manager gives the windows frames.
picture_packages=(openbox)
# What judges the suite's files in the tests, those that it writes and those that it installs, and
# what certifies a web server for it.
test_packages=(libxml2-utils desktop-file-utils appstream man-db mandoc openssl)
# What finds out which libraries a package needs.
packaging_packages=(dpkg-dev file)
