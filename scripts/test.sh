#!/usr/bin/env bash
# Builds Orlo and runs its whole test suite.
#   scripts/test.sh             plain build in build/
#   scripts/test.sh --sanitize  AddressSanitizer + UndefinedBehaviorSanitizer + leak checks,
#                               in build-sanitize/; any report fails the run
# On a fresh Debian machine (as root) it first installs the packages it needs.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
source "$root/scripts/ensure_packages.sh"

build_dir="$root/build"
cmake_args=(-DCMAKE_BUILD_TYPE=RelWithDebInfo)
if [[ "${1:-}" == "--sanitize" ]]; then
  build_dir="$root/build-sanitize"
  cmake_args=(-DCMAKE_BUILD_TYPE=Debug -DORLO_SANITIZE=ON -DORLO_BUILD_BENCHMARKS=OFF)
  export ASAN_OPTIONS="detect_leaks=1:abort_on_error=1:detect_stack_use_after_return=1:strict_string_checks=1"
  export UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1"
  export LSAN_OPTIONS="report_objects=1"
elif [[ $# -gt 0 ]]; then
  echo "usage: scripts/test.sh [--sanitize]" >&2
  exit 2
fi

ensure_packages cmake ninja-build g++ libboost-filesystem-dev libgtest-dev libgmock-dev \
  libbenchmark-dev libcli11-dev nlohmann-json3-dev libassimp-dev

cmake -S "$root" -B "$build_dir" -G Ninja "${cmake_args[@]}"
cmake --build "$build_dir" --parallel "$(nproc)"
cd "$build_dir"
ctest --output-on-failure --parallel "$(nproc)"
