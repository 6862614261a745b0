# The picture of docs/events.md. Called by scripts/events-picture, which makes the table in out/ first.
set terminal svg size 900,560 background rgb "white" font "sans,13"
set datafile separator ","
set datafile commentschars "#"
set grid lc rgb "#dddddd"
set key top right samplen 3 opaque
before = "#c8b6a6"; after = "#1f5f8b"; truth = "#444444"; alarm = "#b03a2e"

set output "docs/pictures/events.svg"
set multiplot layout 2,1 title "Events in a simulated wrist: bursts of a 5 Hz tremor"
set xrange [0:120]; set ylabel "gx, rad/s"; set yrange [-4:9]; set lmargin 9; set rmargin 9
plot "examples/wrist.csv" every 4 using 1:5 with lines lc rgb before title "turn rate about the forearm", \
     "examples/wrist-truth.csv" every 4 using 1:($10 == 1 ? -3.5 : NaN) with lines lw 5 lc rgb truth title "true burst", \
     "out/events.csv" using 1:($2 == 1 ? 0 : NaN):(0):(4) skip 1 with vectors nohead lw 2 lc rgb after title "begin", \
     "out/events.csv" using 1:($3 == 1 ? 0 : NaN):(0):(4) skip 1 with vectors nohead lw 2 lc rgb alarm title "end"
set ylabel "Hz"; set yrange [4.6:5.6]; set xlabel "seconds"
set y2label "periods"; set y2range [0:80]; set y2tics 0,10,40; set ytics 4.6,0.2,5.6 nomirror
plot "out/events.csv" using 1:5 skip 1 with points pt 7 ps 0.6 lc rgb after title "rate of arrival of ten beats", \
     "out/events.csv" using 1:4 skip 1 axes x1y2 with points pt 9 ps 0.9 lc rgb alarm title "periods counted (right)"
unset multiplot
