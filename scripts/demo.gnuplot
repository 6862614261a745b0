# The vertical axis of the simulated wrist before and after smoothing, and as it would be without the tremor.
set terminal svg size 1100,760 background rgb "white" font "sans,13"
set output "out/calm-wrist.svg"
set datafile separator ","
set multiplot layout 2,1 title "A simulated shaking wrist, smoothed by FilterButterworth (order 2, cut-off at 3 % of Nyquist: 1.5 Hz)"
set grid lc rgb "#dddddd"
set key top right samplen 3 opaque
set ylabel "az, gravities"
before = "#c8b6a6"; after = "#1f5f8b"; truth = "#444444"

# Every third row: the picture has fewer columns than the recording has rows.
set xrange [0:120]; set yrange [0:2.2]
plot "examples/wrist.csv" every 3 using 1:4 with lines lc rgb before title "before", \
     "out/calm.csv" every 3 using 1:4 with lines lw 1.5 lc rgb after title "after"

set xlabel "seconds"
set xrange [66:74]; set yrange [0.4:1.4]
plot "examples/wrist.csv" using 1:4 with lines lc rgb before title "before", \
     "examples/wrist-truth.csv" using 1:8 with lines dt 2 lc rgb truth title "without the tremor", \
     "out/calm.csv" using 1:4 with lines lw 2 lc rgb after title "after"
unset multiplot
