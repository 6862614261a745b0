# The pictures of docs/motion.md. Called by scripts/motion-pictures, which makes the results in out/ first.
set terminal svg size 900,480 background rgb "white" font "sans,13"
set datafile separator ","
set datafile commentschars "#"
set grid lc rgb "#dddddd"
set key top right samplen 3 opaque
before = "#c8b6a6"; after = "#1f5f8b"; truth = "#444444"

set output "docs/pictures/motion-tremor.svg"
set multiplot layout 2,1 title "A simulated tremor of 5 Hz in four bursts, tracked by FilterWFLC from 6 Hz"
set xrange [0:120]
set ylabel "frequency, Hz"; set yrange [4:7]
plot "out/tremor.csv" every 12 using 1:($2*100/(2*pi)) skip 1 with lines lw 1.5 lc rgb after title "tracked", \
     5 with lines dt 2 lc rgb truth title "true"
set ylabel "size, rad/s"; set yrange [0:2]; set xlabel "seconds"
plot "out/tremor.csv" every 12 using 1:(sqrt($3**2+$4**2)) skip 1 with lines lw 1.5 lc rgb after title "tracked", \
     "examples/wrist-truth.csv" every 12 using 1:($10*0.8225*1.215) with lines dt 2 lc rgb truth title "true, times the band's gain"
unset multiplot; unset xlabel

set output "docs/pictures/motion-flags.svg"
set multiplot layout 2,1 title "A simulated wrist: rest and values at the accelerometer's limit"
set ylabel "gx, rad/s"; set yrange [-2.2:4]; set xrange [0:120]
plot "examples/wrist.csv" every 8 using 1:5 with lines lc rgb before title "turn rate about the forearm", \
     "out/flags.csv" every 8 using 1:($2 == 1 ? -1.5 : NaN) skip 1 with lines lw 5 lc rgb after title "flagged as rest", \
     "examples/wrist-truth.csv" every 8 using 1:($9 == 1 ? -1.9 : NaN) with lines lw 5 lc rgb truth title "true rest"
set ylabel "gravities"; set xlabel "seconds"; set xrange [57.5:59.2]; set yrange [-2.4:5]
plot "examples/wrist.csv" using 1:2 with linespoints pt 7 ps 0.3 lc rgb before title "ax", \
     "examples/wrist.csv" using 1:4 with linespoints pt 7 ps 0.3 lc rgb truth title "az", \
     "out/flags.csv" using 1:($3 == 1 || $5 == 1 ? 2.6 : NaN) skip 1 with points pt 9 ps 0.7 lc rgb "#b03a2e" title "at a limit", \
     "out/flags.csv" using 1:($6 == 1 || $8 == 1 ? 3.2 : NaN) skip 1 with points pt 5 ps 0.7 lc rgb after title "stuck at a limit"
unset multiplot; unset xlabel

set output "docs/pictures/motion-vectors.svg"
set title "The direction of up across a simulated wrist, in a movement and in a tremor burst"
set ylabel "ay, gravities"; set xlabel "seconds"; set xrange [58:72]; set yrange [-0.2:1.2]
plot "examples/wrist.csv" every 2 using 1:3 with lines lc rgb before title "accelerometer", \
     "out/vectors.csv" every 2 using 1:9 skip 1 with lines lw 1.5 lc rgb "#b03a2e" title "ordinary low-pass", \
     "out/vectors.csv" every 2 using 1:3 skip 1 with lines lw 2 lc rgb after title "smoothed in the Earth's frame", \
     "examples/wrist-truth.csv" every 2 using 1:7 with lines dt 2 lc rgb truth title "true, without the tremor"
