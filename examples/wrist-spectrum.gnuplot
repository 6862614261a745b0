# Draws examples/wrist-spectrum.csv, from the project's folder: gnuplot examples/wrist-spectrum.gnuplot
# Above, each column is the spectrum of one frame; below, the frames that end at 20 s (tremor) and 32 s (none).
set terminal svg size 1100,760 background rgb "white" font "sans,13"
set output "out/wrist-spectrum.svg"
set datafile separator ","
set multiplot layout 2,1 title "The vertical axis of a simulated shaking wrist: amplitude at each frequency"
# Column 2 of the table is 0 Hz, and each further one 0.5 Hz more; row 1 ends at 1.99 s, and each further one 1 s later.
hertz(column) = 0.5 * column
seconds(row) = 1.99 + row

set ylabel "Hz"; set xlabel "seconds"
set xrange [0:120]; set yrange [0:15]; set cbrange [0:0.25]
set cblabel "gravities"
set palette defined (0 "#ffffff", 1 "#f0d9b5", 2 "#c47a3a", 3 "#5a1f1f")
plot "< tail -n +2 examples/wrist-spectrum.csv | cut -d, -f2-" matrix using (seconds($2)):(hertz($1)):3 with image notitle

set ylabel "gravities"; set xlabel "Hz"
set xrange [0:15]; set yrange [0:0.25]; set grid lc rgb "#dddddd"; set xtics 1
plot "< tail -n +2 examples/wrist-spectrum.csv | cut -d, -f2-" matrix every :::18::18 using (hertz($1)):3 \
         with linespoints lw 2 pt 7 ps 0.5 lc rgb "#c47a3a" title "20 s: tremor", \
     "" matrix every :::30::30 using (hertz($1)):3 with linespoints lw 2 pt 7 ps 0.5 lc rgb "#1f5f8b" title "32 s: none"
unset multiplot
