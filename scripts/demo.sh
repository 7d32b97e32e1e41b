#!/usr/bin/env bash
# Installs what is missing, builds the program, runs the street canyon until its day repeats
# itself, and prints that day. Any other example, or run directory, may be named instead.
source "$(dirname "${BASH_SOURCE[0]}")/setup.sh"

install_missing "${build_packages[@]}" python3
build release -DTOWNSKIN_TESTS=OFF -DTOWNSKIN_BENCH=OFF

case=$(cd "${1:-$root/examples/canyon}" && pwd)
run=$(mktemp -d)
cp -R "$case/." "$run"
(cd "$run" && "$root/build-release/townskin") || {
  echo "the run failed; the end of its log, $run/log0000:" >&2
  tail -n 12 "$run/log0000" >&2
  exit 1
}
python3 "$root/tools/day_table.py" "$run"
echo
echo "All files of the run are in $run"
