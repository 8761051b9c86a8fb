# The picture of the store comparison; tools/plot-bench.sh prepares the data and sets:
#   bars           rows "store insert get scan update remove", ns per operation at N = bars_n
#   growth_insert, growth_get   one block per store, its name in quotes, then "N ns" lines
#   output         the PNG to write
set terminal pngcairo size 1200,900 font "Sans,10"
set output output
set multiplot layout 2,1 title "Workload W1: ns per operation, median of the runs (lower is better)"

set origin 0, 0.45
set size 1, 0.55
set title sprintf("All phases at N = %s", bars_n)
set style data histograms
set style histogram clustered gap 1
set style fill solid 0.9 border -1
set boxwidth 0.9
set logscale y
set ylabel "ns per operation (log)"
set grid ytics
set key outside right top vertical
set xtics nomirror
plot for [column=2:*] bars using column:xtic(1) title columnheader(column)

unset style data
set origin 0, 0
set size 0.5, 0.45
set title "insert: growth with N"
set logscale xy
set xlabel "N (records, log)"
set ylabel "ns per insert (log)"
set key left top font ",8"
set xtics ("100k" 1e5, "1M" 1e6, "4M" 4e6)
plot for [block=0:*] growth_insert index block using 1:2 with linespoints title columnheader(1)

set origin 0.5, 0
set title "get: growth with N"
set ylabel "ns per get (log)"
plot for [block=0:*] growth_get index block using 1:2 with linespoints title columnheader(1)
unset multiplot
