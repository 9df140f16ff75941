$seconds << END
1 0
50 0
149 0
0 0
0 0
0 0
0 0
0 0
0 0
0 0
1 0
44 0
155 0
0 0
0 0
0 0
0 0
0 0
0 0
0 0
1 0
44 0
155 0
0 0
0 0
0 0
0 0
0 0
0 0
0 0
0 1
0 18
0 37
0 88
0 55
0 1
END
set terminal svg size 760,300 font "sans-serif,12" background "white"
set title "200 devices started over 0 s, outage of 25 s"
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
