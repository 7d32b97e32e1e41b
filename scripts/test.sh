#!/usr/bin/env bash
# Installs what is missing, builds everything with warnings as errors and runs all tests.
source "$(dirname "${BASH_SOURCE[0]}")/setup.sh"

install_missing "${test_packages[@]}"
build release -DTOWNSKIN_TESTS=ON -DTOWNSKIN_BENCH=ON
ctest --test-dir "$root/build-release" -j "$jobs" --output-on-failure
