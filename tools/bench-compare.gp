# The picture of the store comparison; tools/plot-bench.sh prepares the data and sets:
#   bars           rows "store insert get scan update remove", ns per operation at N = bars_n
#   growth_insert, growth_get   one block per store, its name in quotes, then "N ns" lines
#   output         the PNG to write
set terminal pngcairo size 1200,1000 font "Sans,10"
set output output
set multiplot title "Workload W1: ns per operation, median of the runs (lower is better)"

# Top: every phase of every store at one N.
set origin 0, 0.47
set size 1, 0.5
set title sprintf("all phases at N = %s", bars_n)
set style data histograms
set style histogram clustered gap 1
set style fill solid 0.9 border -1
set boxwidth 0.9
set logscale y
set ylabel "ns per operation (log)"
set grid ytics
set key outside right top vertical
set xtics nomirror rotate by -25
plot for [column=2:*] bars using column:xtic(1) title columnheader(column)

# Bottom: how insert and get grow with N; one key for both, on the right; the first store (ours)
# drawn thick.
unset style data
set style data linespoints
set logscale xy
set xrange [7e4:5.5e6]
set xtics norotate ("100k" 1e5, "1M" 1e6, "4M" 4e6)
set xlabel "N (records, log)"
set grid xtics ytics

set origin 0, 0
set size 0.4, 0.47
set title "insert: growth with N"
set ylabel "ns per insert (log)"
unset key
plot for [block=0:*] growth_insert index block using 1:2 linewidth (block == 0 ? 3 : 1) title columnheader(1)

set origin 0.4, 0
set size 0.6, 0.47
set title "get: growth with N"
set ylabel "ns per get (log)"
set key outside right top vertical font ",9"
plot for [block=0:*] growth_get index block using 1:2 linewidth (block == 0 ? 3 : 1) title columnheader(1)
unset multiplot
