#!/usr/bin/env bash
# Installs what is missing, builds the programs, makes the run of a quarter of Tempe from its open
# data, runs it until its day repeats itself, prints that day and writes its page. Any other example,
# site file or run directory may be named instead.
source "$(dirname "${BASH_SOURCE[0]}")/setup.sh"

install_missing "${build_packages[@]}" "${case_packages[@]}" "${view_packages[@]}" \
  "${page_packages[@]}" python3
build release -DTOWNSKIN_TESTS=OFF -DTOWNSKIN_BENCH=OFF

named=$(realpath "${1:-$root/examples/city}")
run=$(mktemp -d)/run
if [ -f "$named" ] || [ -f "$named/site.toml" ]; then
  [ -f "$named" ] || named=$named/site.toml
  "$root/build-release/tools/case/townskin_case" "$named" -o "$run"
else
  cp -R "$named" "$run"
fi
echo
echo "townskin runs in $run"
(cd "$run" && "$root/build-release/townskin") || {
  echo "the run failed; the end of its log, $run/log0000:" >&2
  tail -n 12 "$run/log0000" >&2
  exit 1
}
python3 "$root/tools/day_table.py" "$run"
echo
echo "All files of the run are in $run"
view=$root/build-release/tools/view/townskin_view
if [ -x "$view" ] && "$view" "$run" -o "$run.html"; then
  echo "The district in any browser: $run.html"
fi
