# Sourced by the other scripts: where the project is, what it needs, how it is built.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
jobs=$(nproc 2>/dev/null || echo 2)
build_packages=(cmake ninja-build ccache g++)
case_packages=(libembree-dev libgeos-dev libproj-dev proj-data nlohmann-json3-dev libtomlplusplus-dev
               libcli11-dev)
view_packages=(libcli11-dev libnetcdf-dev pkg-config)
page_packages=(zlib1g-dev)
# A node that came otherwise serves as well, and Debian's npm would not stand beside it.
command -v node >/dev/null && command -v npm >/dev/null || page_packages+=(nodejs npm)
view_test_packages=(python3-xarray python3-netcdf4 python3-vtk9 chromium)
test_packages=("${build_packages[@]}" "${case_packages[@]}" "${view_packages[@]}"
               "${page_packages[@]}" "${view_test_packages[@]}" libgtest-dev libbenchmark-dev gzip)
check_packages=(clang-format clang-tidy git mandoc mkdocs mkdocs-material)
# For the packages of Debian and the fresh system that tries them (scripts/try_package).
package_packages=(dpkg-dev lintian debootstrap)
# The fuzz and benchmark targets are optional; only a full check builds the benchmarks.

# Installs with apt those of the given packages that are not there. On a system without apt it
# leaves that to the user.
install_missing() {
  command -v apt-get >/dev/null && command -v dpkg-query >/dev/null || {
    echo "no apt here: these must be installed already: $*" >&2
    return 0
  }
  local package missing=() as_root=()
  for package in "$@"; do
    [ "$(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null)" = installed ] ||
      missing+=("$package")
  done
  [ ${#missing[@]} -gt 0 ] || return 0
  [ "$(id -u)" -eq 0 ] || as_root=(sudo)
  echo "installing: ${missing[*]}"
  "${as_root[@]}" apt-get update -q
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
    apt-get install -q -y --no-install-recommends "${missing[@]}"
}

# build PRESET [cmake options]: configures and builds into build-PRESET.
build() {
  local preset=$1
  shift
  (cd "$root" && cmake --preset "$preset" "$@" && cmake --build "build-$preset" -j "$jobs")
}
