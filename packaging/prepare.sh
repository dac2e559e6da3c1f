# Sourced by ./run, ./test and .ci/run: brings the Debian packages that are
# missing and builds. Quick when there is nothing to do.

say_error() { echo "$*" >&2; }

# prepare_packages LIST...: installs what is missing of the lists in packaging/.
prepare_packages() {
  local wanted missing as_root=()
  wanted=$(cd packaging && sed '/^#/d' "$@" | sort -u)
  if ! command -v dpkg-query >/dev/null; then
    say_error "Here is no dpkg to look for packages. Going on; these are needed, or what your system calls them:"
    say_error $wanted
    return 0
  fi
  missing=$(comm -23 <(echo "$wanted") \
    <(dpkg-query -W -f '${db:Status-Status} ${Package}\n' 2>/dev/null |
      sed -n 's/^installed //p' | sort -u))
  [ -n "$missing" ] || return 0

  if [ "$(id -u)" != 0 ]; then
    if ! command -v sudo >/dev/null; then
      say_error "These packages are missing, and there is neither root nor sudo to install them:"
      say_error " " $missing
      say_error "Ask an administrator for: apt-get install" $missing
      exit 1
    fi
    as_root=(sudo)
  fi
  echo "Installing (some minutes the first time):" $missing
  # A machine that has just started may be updating itself: wait for it. A list
  # that cannot be renewed need not matter.
  "${as_root[@]}" apt-get update -qq -o DPkg::Lock::Timeout=300 ||
    say_error "The package lists could not be renewed; trying with those that are here."
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
    apt-get install -y -qq --no-install-recommends -o DPkg::Lock::Timeout=300 $missing >/dev/null || {
    say_error "The packages could not be installed. Try: apt-get install" $missing
    exit 1
  }
}

# Qt WebEngine's sandbox does not work for root; only these scripts say so.
allow_web_engine_as_root() {
  if [ "$(id -u)" = 0 ]; then
    export QTWEBENGINE_DISABLE_SANDBOX=1
  fi
}

# build_targets DIR OPTIONS... -- TARGETS...: options are for cmake.
build_targets() {
  local dir=$1 options=()
  shift
  while [ "$1" != -- ]; do
    options+=("$1")
    shift
  done
  shift
  mkdir -p "$dir" 2>/dev/null || true
  if [ ! -w "$dir" ]; then
    say_error "The folder $dir belongs to $(stat -c %U "$dir" 2>/dev/null || echo somebody else) and cannot be written. Remove it, or go on as that user."
    exit 1
  fi
  # A copied or moved checkout: the old folder's paths are of no use.
  if [ -f "$dir/CMakeCache.txt" ] && ! grep -qxF "CMAKE_HOME_DIRECTORY:INTERNAL=$PWD" "$dir/CMakeCache.txt"; then
    echo "$dir was built elsewhere; building it anew."
    rm -rf "${dir:?}"
    mkdir -p "$dir"
  fi
  if [ ! -f "$dir/build.ninja" ] || [ ${#options[@]} != 0 ]; then
    cmake -S . -B "$dir" -G Ninja "${options[@]}" >"$dir/configure.log" 2>&1 || {
      cat "$dir/configure.log" >&2
      say_error "Configuring failed; the lines above say why."
      exit 1
    }
  fi
  case $(ninja -C "$dir" -n "$@" 2>/dev/null | tail -n 1) in
    *"no work to do"*) return 0 ;;
  esac
  echo "Building in $dir/ (some minutes the first time) ..."
  # Only what fails is worth a person's time; the whole log is kept.
  ninja -C "$dir" "$@" >"$dir/build.log" 2>&1 || {
    tail -n 60 "$dir/build.log" >&2
    say_error "Building failed; the whole log is in $dir/build.log."
    exit 1
  }
}
