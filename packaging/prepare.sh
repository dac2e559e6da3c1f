# Sourced by ./run and ./test: brings the Debian packages that are missing.
# Kept quick: with nothing missing it only asks dpkg once.

# prepare_packages LIST...: packages of the named lists under packaging/.
prepare_packages() {
  local wanted missing as_root=()
  if ! command -v dpkg-query >/dev/null; then
    echo "This script installs Debian packages; here is no dpkg. Install these, or what your system calls them:" >&2
    cat "${@/#/packaging/}" | grep -v '^#' >&2
    return 0
  fi
  wanted=$(cat "${@/#/packaging/}" | grep -v '^#' | sort -u)
  missing=$(comm -23 <(echo "$wanted") \
    <(dpkg-query -W -f '${db:Status-Status} ${Package}\n' 2>/dev/null |
      sed -n 's/^installed //p' | sort -u))
  [ -n "$missing" ] || return 0

  if [ "$(id -u)" != 0 ]; then
    if ! command -v sudo >/dev/null; then
      echo "These packages are missing, and there is neither root nor sudo to install them:" >&2
      echo "  $missing" | tr '\n' ' ' >&2
      echo >&2
      echo "Ask an administrator for: apt-get install" $missing >&2
      exit 1
    fi
    as_root=(sudo)
  fi
  echo "Installing:" $missing
  "${as_root[@]}" apt-get update -qq &&
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
      apt-get install -y -qq --no-install-recommends $missing >/dev/null || {
    echo "The packages could not be installed. Try: apt-get install" $missing >&2
    exit 1
  }
}

# Qt WebEngine's sandbox does not work for root; only these scripts say so.
allow_web_engine_as_root() {
  if [ "$(id -u)" = 0 ]; then
    export QTWEBENGINE_DISABLE_SANDBOX=1
  fi
}

# build_targets DIR OPTIONS... -- TARGETS...
build_targets() {
  local dir=$1 options=()
  shift
  while [ "$1" != -- ]; do
    options+=("$1")
    shift
  done
  shift
  if [ ! -f "$dir/build.ninja" ]; then
    mkdir -p "$dir"
    cmake -S . -B "$dir" -G Ninja "${options[@]}" >"$dir/configure.log" 2>&1 || {
      cat "$dir/configure.log" >&2
      echo "Configuring failed; the lines above say why." >&2
      exit 1
    }
  fi
  # Only what fails is worth a person's time; the whole log is kept.
  ninja -C "$dir" "$@" >"$dir/build.log" 2>&1 || {
    tail -n 60 "$dir/build.log" >&2
    echo "Building failed; the whole log is in $dir/build.log." >&2
    exit 1
  }
}
