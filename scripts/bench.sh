#!/usr/bin/env bash
# Installs the peer libraries (OpenBLAS, BLIS) when missing, builds libtav and the benchmarks in
# build-bench, and runs them: every benchmark, or those named (scripts/bench.sh blas_level1_bench).
# The output is Markdown, as bench/RESULTS.md records it.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh

# SLEEF's headers and library for vml_pow_bench.
peers=(libopenblas0-pthread libblis4-pthread libsleef-dev)
missing=()
for p in "${peers[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  sudo=""
  [ "$(id -u)" -eq 0 ] || sudo="sudo"
  $sudo apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq "${missing[@]}"
fi

build=build-bench
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_C_COMPILER=clang \
  -DCMAKE_CXX_COMPILER=clang++ -DTAV_BUILD_TESTS=OFF -DTAV_BUILD_BENCH=ON >/dev/null
if [ $# -gt 0 ]; then
  names=("$@")
else
  names=()
  for source in bench/*_bench.cpp; do names+=("$(basename "$source" .cpp)"); done
fi
cmake --build "$build" --target "${names[@]}"
has() { grep -qw "$1" /proc/cpuinfo && echo yes || echo no; }
echo "Machine: $(nproc) CPUs, AVX2 $(has avx2), FMA $(has fma), AVX-512F $(has avx512f)," \
  "$(lscpu | sed -n 's/^L3 cache: *//p') L3, load average $(cut -d' ' -f1-3 /proc/loadavg)"
echo "Command: scripts/bench.sh $*"
for name in "${names[@]}"; do
  echo
  "$build/bench/$name"
done
