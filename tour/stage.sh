# Sourced by ./run and ./load: a virtual display, and the program on it, used by
# the plugin. `started` and `own_adb` are for the sourcing script's stop_all.

# A server of its own, so that the machine's adb and its devices stay as they are.
start_display() {
  export ANDROID_ADB_SERVER_PORT=$((15000 + RANDOM % 5000)) own_adb=yes
  local pipe number
  exec {pipe}<> <(:)
  Xvfb -displayfd "$pipe" -screen 0 1920x1080x24 -nolisten tcp >build/xvfb.log 2>&1 &
  started+=($!)
  read -r -t 120 -u "$pipe" number || { echo "Xvfb did not start; see build/xvfb.log" >&2; exit 1; }
  export DISPLAY=:$number
  openbox --config-file "$PWD/tour/openbox.xml" >build/openbox.log 2>&1 &
  started+=($!)
}

# use_program SCRIPT SECONDS: starts the program, used by the plugin's "tour" or
# "load". Its report goes to build/SCRIPT/report.txt and is shown as it comes.
use_program() {
  local script=$1 seconds=$2 report=$PWD/build/$1/report.txt program status=0
  rm -rf "build/$script" "build/$script-data"
  mkdir -p "build/$script"
  : >"$report"
  # A key of the provider that wants one, as a user would put it in.
  local stage=build/$script-stage
  rm -rf "$stage"
  mkdir "$stage"
  ln -s "$PWD"/build/velmo/* "$stage"
  rm "$stage/tianditu_key.js"
  sed "s/TIANDITU_KEY = \"\"/TIANDITU_KEY = \"key of the $script\"/" build/velmo/tianditu_key.js >"$stage/tianditu_key.js"
  # Into a file, not a pipe: the adb server that the program starts stays and
  # would hold a pipe open.
  (cd "$stage" &&
    XDG_DATA_HOME=$PWD/../$script-data QT_QPA_PLATFORM=xcb QT_PLUGIN_PATH=$PWD/../tour-plugin \
      QT_QPA_GENERIC_PLUGINS="velmo_$script:$PWD/../$script" \
      exec timeout "$seconds" ./velmo) >"$report" 2>"build/$script/velmo.log" </dev/null &
  program=$!
  tail -n +1 -f --pid=$program -s 0.2 "$report" || true
  wait "$program" || status=$?
  if [ $status != 0 ] || ! grep -q "^$script: " "$report"; then
    echo "The $script did not reach its end (status $status); see build/$script/." >&2
    exit $((status ? status : 1))
  fi
}
