#!/usr/bin/env bash
# Renders the comparison summary of tools/bench-compare.sh as one PNG: the five phases at one N as
# bars, and how insert and get cost grow with N. Needs gnuplot (Debian: gnuplot-nox).
#
#   tools/plot-bench.sh SUMMARY [OUTPUT.png] [N-of-the-bars]
#   PLOT_STORES="a b ..."   the stores to draw (default below: ours, the references, the ordered peers)
set -euo pipefail
cd "$(dirname "$0")/.."
summary=${1:?usage: $0 SUMMARY [OUTPUT.png] [N]}
output=${2:-docs/bench-compare.png}
bars_n=${3:-1000000}
stores=${PLOT_STORES:-"tavrin tavrin-dir std-map std-unordered-map lmdb bdb-btree kc-tree tkrzw-tree tkrzw-baby tkrzw-tiny sqlite"}

data=$(mktemp -d)
trap 'rm -rf "$data"' EXIT

# Median lines look like: store=S n=N phase=P ns_per_op=M ns_per_op_min=... runs=R
median() {  # store n phase -> median ns per op, or nothing
  awk -v s="store=$1" -v n="n=$2" -v p="phase=$3" '$1 == s && $2 == n && $3 == p {
      for (i = 4; i <= NF; i++) if ($i ~ /^ns_per_op=/) { sub(/^ns_per_op=/, "", $i); print $i } }' "$summary"
}

{
  echo "store insert get scan update remove"
  for store in $stores; do
    line="$store"
    for phase in insert get scan update remove; do
      value=$(median "$store" "$bars_n" "$phase")
      line="$line ${value:-NaN}"
    done
    [ "$line" != "$store NaN NaN NaN NaN NaN" ] && echo "$line"
  done
} > "$data/bars.dat"

sizes=$(awk '$1 ~ /^store=/ && $3 ~ /^phase=/ { sub(/^n=/, "", $2); print $2 }' "$summary" | sort -nu)
for phase in insert get; do
  for store in $stores; do
    block=""
    for n in $sizes; do
      value=$(median "$store" "$n" "$phase")
      [ -n "$value" ] && block="$block$n $value"$'\n'
    done
    # Only stores measured at two sizes or more have a line to draw.
    if [ "$(printf '%s' "$block" | grep -c .)" -ge 2 ]; then
      printf '"%s"\n%s\n\n' "$store" "$block" >> "$data/growth-$phase.dat"
    fi
  done
done

gnuplot -e "bars='$data/bars.dat'; growth_insert='$data/growth-insert.dat'; growth_get='$data/growth-get.dat';
            output='$output'; bars_n='$bars_n'" tools/bench-compare.gp
echo "picture: $output"
