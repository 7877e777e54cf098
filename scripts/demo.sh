#!/usr/bin/env bash
# Builds the orlo tool and runs it on its built-in example scene: `orlo demo` writes
# demo.orlo, then `orlo info`, `orlo tree` and `orlo validate` look into it.
#   scripts/demo.sh    Release build in build-demo/, demo.orlo written there
# On a fresh Debian machine (as root) it first installs the packages it needs.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
source "$root/scripts/ensure_packages.sh"

if [[ $# -gt 0 ]]; then
  echo "usage: scripts/demo.sh" >&2
  exit 2
fi

ensure_packages cmake ninja-build g++ libboost-filesystem-dev libcli11-dev nlohmann-json3-dev

build_dir="$root/build-demo"
cmake -S "$root" -B "$build_dir" -G Ninja -DCMAKE_BUILD_TYPE=Release -DORLO_BUILD_TESTS=OFF \
  -DORLO_BUILD_BENCHMARKS=OFF -DORLO_INSTALL=OFF
cmake --build "$build_dir" --parallel "$(nproc)" --target orlo_tool

orlo="$build_dir/tools/orlo/orlo"
run() {
  echo
  echo "\$ orlo $*"
  "$orlo" "$@"
}
cd "$build_dir"
run demo --output demo.orlo
run info demo.orlo
run tree demo.orlo
run validate demo.orlo
