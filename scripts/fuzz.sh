#!/usr/bin/env bash
# Builds the fuzz targets with clang and libFuzzer in build-fuzz/ and runs each one for a
# bounded time; any crash, sanitizer report, leak or broken check fails the run.
#   scripts/fuzz.sh        120 seconds per target
#   scripts/fuzz.sh 30     30 seconds per target
# On a fresh Debian machine (as root) it first installs the packages it needs. Inputs that
# failed are kept in build-fuzz/artifacts/, the corpus in build-fuzz/corpus/<target>/.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
source "$root/scripts/ensure_packages.sh"

seconds=${1:-120}
if ! [[ "$seconds" =~ ^[0-9]+$ ]] || [[ $# -gt 1 ]]; then
  echo "usage: scripts/fuzz.sh [seconds per target]" >&2
  exit 2
fi

ensure_packages cmake ninja-build clang-14 libclang-rt-14-dev libboost-filesystem-dev

build_dir="$root/build-fuzz"
targets=(block_graph_fuzzer scene_load_fuzzer)

cmake -S "$root" -B "$build_dir" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DCMAKE_CXX_COMPILER=clang++-14 -DORLO_FUZZ=ON -DORLO_BUILD_TESTS=OFF \
  -DORLO_BUILD_BENCHMARKS=OFF -DORLO_INSTALL=OFF -DORLO_BUILD_TOOLS=OFF
cmake --build "$build_dir" --parallel "$(nproc)" --target "${targets[@]}"

export ASAN_OPTIONS="detect_leaks=1:abort_on_error=1:strict_string_checks=1"
export UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1"
mkdir -p "$build_dir/artifacts"

# The scene loader starts from small scenes that the library itself saves.
mkdir -p "$build_dir/corpus/scene_load_fuzzer"
"$build_dir/fuzz/scene_load_fuzzer" --write-seeds="$build_dir/corpus/scene_load_fuzzer"

# Inputs up to this many bytes; the seed scenes (7 to 29 KB) fit whole.
declare -A max_len=([block_graph_fuzzer]=512 [scene_load_fuzzer]=32768)
for target in "${targets[@]}"; do
  corpus="$build_dir/corpus/$target"
  mkdir -p "$corpus"
  echo "Fuzzing $target for $seconds s"
  "$build_dir/fuzz/$target" "$corpus" -max_total_time="$seconds" \
    -max_len="${max_len[$target]}" -timeout=20 -rss_limit_mb=2048 -print_final_stats=1 -artifact_prefix="$build_dir/artifacts/$target-"
done
