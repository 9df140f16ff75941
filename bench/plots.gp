# Draws docs/benchmarks/*.svg: gnuplot -e 'data = "TABLES"; folder = "FOLDER/"' plots.gp
# TABLES is what plot_data in report.jq prints.
set terminal svg noenhanced size 760,300 font "sans-serif,12" background "white"
set border 3
set tics nomirror

# One horizontal bar for each rival.
set style fill solid
set yrange [*:*] reverse
set xrange [0:*]
set lmargin 42
set rmargin 8
unset key
kdump_or_rival(name) = name[1:5] eq "kdump" ? 0x1f618d : 0x7d8c8e
do for [plot in "whole-run memory"] {
    number = plot eq "memory"
    set output folder.plot.".svg"
    set xlabel word("ms MB", number + 1)
    set title number ? "Peak memory of a whole run" : "Wall time of a whole run"
    plot data index number using 2:0:(0):2:($0 - 0.35):($0 + 0.35):(kdump_or_rival(strcol(1))):ytic(1) \
            with boxxyerror linecolor rgb variable, \
        "" index number using 2:0:(sprintf("%.1f", $2)) with labels left offset 0.5
}

# Curves on logarithmic axes.
reset
set border 3
set tics nomirror
set grid
set style data linespoints
array colours[5] = ["#1f618d", "#c0392b", "#2e7d32", "#b7950b", "#6c3483"]
set logscale
set key outside autotitle columnhead

set output folder."upload-memory.svg"
set title "Peak memory by the size of the upload"
set xlabel "MiB"
set ylabel "KiB"
set yrange [1e3:1e5]
set xtics (1, 4, 16, 64, 256, 1024)
plot for [i = 1:2] data index i + 1 linewidth 2 linecolor rgb colours[i]

set output folder."growth.svg"
set title "Processor time by size"
set xlabel "bytes"
set ylabel "seconds"
set yrange [*:*]
set format y "%.0s %cs"
set xtics ("64" 64, "1 Ki" 1024, "16 Ki" 16384, "256 Ki" 262144, "4 Mi" 4194304, "64 Mi" 67108864)
plot for [i = 1:5] data index i + 3 linewidth 2 linecolor rgb colours[i]
