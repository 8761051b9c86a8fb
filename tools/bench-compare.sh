#!/usr/bin/env bash
# Runs workload W1 on our table and on every peer store of the build: one process per store, N and
# run, runs interleaved so that a slow minute of the machine spreads over all stores. Prints a
# table of medians (min-max), the ratios of our tables to the others and machine-readable median
# lines, keeps raw lines and summary under BUILD-DIR/results/, and renders docs/bench-compare.png.
#
#   tools/bench-compare.sh [--install] [--runs=3] [--n="100000 1000000 4000000"]
#                          [--stores="a b ..."] [--big-stores="a b ..."] [--build-dir=DIR]
#
#   --install      first install the peers' Debian packages and gnuplot (apt-get, as root or sudo)
#   --stores       the stores to run (default: every store of the build, tavrin_compare --list)
#   --big-stores   the stores that also run at the largest N (default: see BIG_STORES below), so
#                  that a full run stays within 30 minutes on a 2-core machine
#   TAVRIN_BENCH_DIR  where the stores put their files (default /tmp)
set -euo pipefail
cd "$(dirname "$0")/.."

runs=3
sizes="100000 1000000 4000000"
stores=""
# Ours and the two stores of the targets; the rest stop at 1,000,000 to keep a run within 30 minutes.
big_stores="tavrin std-map lmdb"
build=build/bench
install=0
for argument in "$@"; do
  case "$argument" in
    --install) install=1 ;;
    --runs=*) runs=${argument#*=} ;;
    --n=*) sizes=${argument#*=} ;;
    --stores=*) stores=${argument#*=} ;;
    --big-stores=*) big_stores=${argument#*=} ;;
    --build-dir=*) build=${argument#*=} ;;
    *) echo "usage: $0 [--install] [--runs=R] [--n=\"N ...\"] [--stores=\"S ...\"] [--big-stores=\"S ...\"] [--build-dir=DIR]" >&2
       exit 2 ;;
  esac
done

if [ "$install" = 1 ]; then
  tools/install-deps.sh
  sudo=""
  [ "$(id -u)" -ne 0 ] && sudo="sudo"
  $sudo apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq liblmdb-dev libdb-dev libkyotocabinet-dev \
    libtkrzw-dev libsqlite3-dev gnuplot-nox pkg-config
fi

echo "== build (Release) in $build"
cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=Release -DTAVRIN_BUILD_BENCHMARKS=ON > /dev/null
cmake --build "$build" -j"$(nproc)" --target tavrin_compare > /dev/null
compare="$build/bench/compare/tavrin_compare"
[ -n "$stores" ] || stores=$("$compare" --list | cut -f1 | tr '\n' ' ')
largest=$(printf '%s\n' $sizes | sort -n | tail -1)

results="$build/results"
mkdir -p "$results"
stamp=$(date +%Y%m%d-%H%M%S)
raw="$results/compare-$stamp.raw"
summary="$results/compare-$stamp.md"

machine() {
  echo "Date: $(date -u '+%Y-%m-%d %H:%M UTC')"
  echo "Machine: $(nproc) cores, $(grep -m1 'model name' /proc/cpuinfo | cut -d: -f2 | sed 's/^ *//')," \
       "$(awk '/MemTotal/ {printf "%.1f GiB", $2 / 1048576}' /proc/meminfo), Linux $(uname -r)"
  echo "Compiler: $(g++ --version | head -1); build type Release"
  echo "Packages: $(dpkg-query -W -f='${Package} ${Version}, ' liblmdb-dev libdb5.3-dev libkyotocabinet-dev \
       libtkrzw-dev libsqlite3-dev 2>/dev/null | sed 's/, $//')"
  echo "Load average at the start: $(cut -d' ' -f1-3 /proc/loadavg)"
  echo "Runs: $runs per store and N; N = $sizes; at N = $largest only: $big_stores"
  echo
  echo "Stores:"
  "$compare" --list | sed 's/\t/: /; s/^/- /'
}
machine > "$raw.head"

echo "== $runs runs of: $stores"
started=$(date +%s)
for run in $(seq 1 "$runs"); do
  for n in $sizes; do
    for store in $stores; do
      if [ "$n" = "$largest" ] && [ "$largest" != "$(printf '%s\n' $sizes | head -1)" ] &&
         ! printf ' %s ' $big_stores | grep -q " $store "; then
        continue
      fi
      printf '   run %s  n=%-8s %-22s' "$run" "$n" "$store"
      begun=$(date +%s)
      if "$compare" --store="$store" --n="$n" --dir="${TAVRIN_BENCH_DIR:-/tmp}" >> "$raw" 2> "$raw.err"; then
        echo " $(( $(date +%s) - begun )) s"
      else
        echo " FAILED: $(tail -1 "$raw.err")"
        echo "store=$store n=$n failed: $(tail -1 "$raw.err")" >> "$raw.failures"
      fi
    done
  done
done
echo "== $(( ($(date +%s) - started) / 60 )) minutes"
echo "Load average at the end: $(cut -d' ' -f1-3 /proc/loadavg); $(( ($(date +%s) - started) / 60 )) minutes of runs" \
  >> "$raw.head"

{
  cat "$raw.head"
  [ -f "$raw.failures" ] && { echo; echo "Failed runs:"; sed 's/^/- /' "$raw.failures"; }
  "$compare" --summarize="$raw"
} > "$summary"
rm -f "$raw.head" "$raw.err"
cat "$summary"
echo
echo "raw results: $raw"
echo "summary:     $summary"
if command -v gnuplot > /dev/null; then
  tools/plot-bench.sh "$summary" docs/bench-compare.png
else
  echo "gnuplot is not installed: no picture (tools/bench-compare.sh --install installs it)"
fi
