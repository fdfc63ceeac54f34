# Sourced by ./run, ./test and Benchmarks/: which Debian 12 packages they need, and how missing ones get installed.

build_packages=(g++ cmake ninja-build pkg-config mold ccache nlohmann-json3-dev libsimdjson-dev libicu-dev
  libcurl4-openssl-dev libssl-dev uuid-dev qt6-base-dev qt6-declarative-dev
  qt6-declarative-dev-tools qt6-multimedia-dev qt6-svg-dev libgl-dev libavformat-dev libavcodec-dev libavutil-dev
  libswscale-dev libturbojpeg0-dev librsvg2-bin)
run_packages=(ffmpeg ca-certificates fonts-dejavu-core fonts-noto-cjk fonts-noto-color-emoji qml6-module-qtqml
  qml6-module-qtqml-models qml6-module-qtqml-workerscript qml6-module-qtcore qml6-module-qtquick
  qml6-module-qtquick-controls qml6-module-qtquick-templates qml6-module-qtquick-layouts qml6-module-qtquick-window
  qml6-module-qtquick-dialogs qml6-module-qt-labs-folderlistmodel qml6-module-qtmultimedia qt6-wayland)
test_packages=(libgtest-dev libgmock-dev clang-format libxml2-utils dbus-daemon desktop-file-utils appstream xvfb xdotool)
bench_packages=(libbenchmark-dev libsqlite3-dev ripgrep wamerican)

# missing_packages NAME...: those of the names that are not installed, one a line.
missing_packages() {
  local name
  for name in "$@"; do
    [ "$(dpkg-query -W -f='${db:Status-Status}' "$name" 2>/dev/null)" = installed ] || printf '%s\n' "$name"
  done
}

# install_packages NAME...: installs what is missing, as root or through sudo; else says what an administrator has to do.
install_packages() {
  local missing
  mapfile -t missing < <(missing_packages "$@")
  [ ${#missing[@]} -eq 0 ] && return 0
  if ! command -v apt-get >/dev/null; then
    echo "Tarquel is built on Debian 12; this machine has no apt-get. It needs: ${missing[*]}" >&2
    return 1
  fi
  local become=()
  if [ "$(id -u)" -ne 0 ]; then
    if ! command -v sudo >/dev/null; then
      tell_administrator "${missing[@]}"
      return 1
    fi
    become=(sudo)
  fi
  echo "Installing from Debian: ${missing[*]}" >&2
  if ! "${become[@]}" apt-get -q -o DPkg::Lock::Timeout=600 update >&2 ||
     ! "${become[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -q -o DPkg::Lock::Timeout=600 install \
         -y --no-install-recommends "${missing[@]}" >&2; then
    tell_administrator "${missing[@]}"
    return 1
  fi
}

tell_administrator() {
  printf 'Some Debian packages are missing. An administrator installs them with:\n\n  apt-get install -y --no-install-recommends %s\n\n' "$*" >&2
}
