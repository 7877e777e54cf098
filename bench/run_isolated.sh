#!/usr/bin/env bash
# Runs each benchmark of a Google Benchmark program in a process of its own.
#
#   bench/run_isolated.sh build-release/bench/scene_load_bench [benchmark flags...]
#
# A large scene's memory goes back to the kernel when it is freed while a small one stays in
# the process, so in one process a small case runs on pages that earlier cases left behind
# and a large one on fresh pages. Comparing sizes that way measures the kernel as much as the
# code; here every case starts from the same fresh process.
set -euo pipefail

if [[ $# -lt 1 ]]; then
  echo "usage: bench/run_isolated.sh <benchmark program> [benchmark flags...]" >&2
  exit 2
fi
program=$1
shift

"$program" --benchmark_list_tests 2>/dev/null | grep "^BM_" | while read -r name; do
  "$program" --benchmark_filter="^${name}\$" "$@" 2>/dev/null | grep -F -- "$name" || true
done
