$seconds << END
20 0
20 0
20 0
20 0
20 0
20 0
20 0
20 0
20 0
20 0
20 0
20 0
20 0
20 0
20 0
20 0
20 0
20 0
20 0
20 0
20 0
20 0
20 0
20 0
20 0
0 20
0 20
0 20
0 20
0 20
0 20
0 20
0 20
0 20
0 20
0 0
END
set terminal svg size 760,300 font "sans-serif,12" background "white"
set title "200 devices started over 10 s, outage of 25 s"
set xlabel "second"
set ylabel "TFA requests"
set border 3
set tics nomirror out
set key outside bottom center horizontal
set style fill solid
set boxwidth 0.9
set xrange [-1:]
set yrange [0:]
plot $seconds using 0:($1 + $2) with boxes linecolor rgb "#2471a3" title "answered", \
     "" using 0:1 with boxes linecolor rgb "#c0392b" title "cut by the outage"
