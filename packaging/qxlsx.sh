# Sourced by ./run and ./test: has QXlsx, the library that reads and writes
# workbooks. Debian 12 has no package of it, Debian 13 has its source; that is
# fetched through apt from the machine's own mirror, checked against the signed
# index with the machine's own keyring, and built once for a machine into the
# user's cache folder. An installed QXlsx is used where there is one.

# Where the built library is kept.
qxlsx_prefix() { echo "${XDG_CACHE_HOME:-$HOME/.cache}/velmo/qxlsx"; }

# Whether the build finds a QXlsx by itself or in the cache folder: it is asked with
# what the build asks with.
qxlsx_is_there() {
  local probe found=1
  probe=$(mktemp -d)
  cat >"$probe/CMakeLists.txt" <<'PROBE'
cmake_minimum_required(VERSION 3.21)
project(probe LANGUAGES CXX)
find_package(Qt6 REQUIRED COMPONENTS Core Gui)
include("${SEARCH}")
PROBE
  cmake -S "$probe" -B "$probe/build" -G Ninja -DSEARCH="$PWD/cmake/VelmoQXlsx.cmake" \
    >/dev/null 2>&1 && found=0
  rm -rf "$probe"
  return $found
}

# The machine's own Debian mirror, out of either form of source list.
debian_mirror() {
  sed -n 's/^URIs:[[:space:]]*\([^[:space:]]*\/debian\)\/\{0,1\}\([[:space:]].*\)\{0,1\}$/\1/p' \
    /etc/apt/sources.list.d/*.sources 2>/dev/null
  sed -n 's/^deb[[:space:]]\{1,\}\(\[[^]]*\][[:space:]]*\)\{0,1\}\([^[:space:]]*\/debian\)\/\{0,1\}[[:space:]].*/\2/p' \
    /etc/apt/sources.list /etc/apt/sources.list.d/*.list 2>/dev/null
}

# fetch_qxlsx FOLDER: the source archive, into the folder.
fetch_qxlsx() {
  local folder=$1 mirror options
  mirror=$(debian_mirror | head -n 1)
  [ -n "$mirror" ] || return 1
  mkdir -p "$folder"/apt/{lists/partial,cache/archives/partial,sources}
  cat >"$folder/apt/sources/source.sources" <<SOURCES
Types: deb-src
URIs: $mirror
Suites: trixie
Components: main
Signed-By: /usr/share/keyrings/debian-archive-keyring.gpg
SOURCES
  options=(-qq -o Dir::Etc::sourcelist=/dev/null -o Dir::Etc::sourceparts="$folder/apt/sources"
    -o Dir::State::lists="$folder/apt/lists" -o Dir::Cache="$folder/apt/cache" -o APT::Sandbox::User=
    -o Acquire::Retries=3)
  apt-get "${options[@]}" update && (cd "$folder" &&
    apt-get "${options[@]}" source --download-only --tar-only libqt5qxlsx)
}

build_qxlsx() {
  local folder=$1
  tar -C "$folder" -xf "$folder"/libqt5qxlsx_*.orig.tar.* &&
    cmake -S "$folder"/QXlsx*/QXlsx -B "$folder/build" -G Ninja -DQT_VERSION_MAJOR=6 \
      -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_POSITION_INDEPENDENT_CODE=ON \
      -DCMAKE_INSTALL_PREFIX="$folder/prefix" &&
    ninja -C "$folder/build" install
}

# prepare_qxlsx: after it, CMake finds QXlsx with the cache folder in its path.
prepare_qxlsx() {
  local folder log
  [ -e "$(qxlsx_prefix)/lib" ] && return 0
  qxlsx_is_there && return 0
  echo "Building QXlsx, the library for workbooks (a minute, once for this machine) ..."
  folder=$(mktemp -d)
  log=$folder/log
  if fetch_qxlsx "$folder" >"$log" 2>&1 && build_qxlsx "$folder" >>"$log" 2>&1; then
    # In one step, so that a stopped build leaves no half library behind.
    mkdir -p "$(dirname "$(qxlsx_prefix)")"
    mv -T "$folder/prefix" "$(qxlsx_prefix)" 2>/dev/null || [ -e "$(qxlsx_prefix)/lib" ]
    rm -rf "$folder"
    return 0
  fi
  tail -n 20 "$log" >&2
  rm -rf "$folder"
  say_error "QXlsx could not be had. Install it: libqt6qxlsx-dev where your Debian has it,"
  say_error "or QXlsx 1.4.4 or newer built for Qt 6, with its CMake package where CMake looks."
  exit 1
}
