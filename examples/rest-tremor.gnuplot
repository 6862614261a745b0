# Draws what examples/rest-tremor.yaml and examples/rest-tremor-spectrum.yaml make of a real recording, from the
# project's folder: gnuplot examples/rest-tremor.gnuplot
# Their results are out/rest-tremor.csv and out/rest-tremor-spectrum.csv.
set terminal svg size 900,640 background rgb "white" font "sans,13"
set output "out/rest-tremor.svg"
set datafile separator ","
set grid lc rgb "#dddddd"
set key top right samplen 3 opaque
before = "#c8b6a6"; after = "#1f5f8b"
rate = 92.7743
set multiplot layout 3,1 title "A hand at rest, a phone in it"

set xrange [0:9.3]; set ylabel "gy, rad/s"; set xlabel "seconds"
plot "examples/recordings/rest-tremor.csv" using 1:3 with lines lc rgb before title "as recorded", \
     "out/rest-tremor.csv" using 1:2 with lines lw 1.5 lc rgb after title "3 to 12 Hz"

set ylabel "frequency, Hz"; set yrange [4:8]
plot "out/rest-tremor.csv" using 1:($3*rate/(2*pi)) skip 1 with lines lw 2 lc rgb after title "tracked, begun at 5 Hz"

set ylabel "rad/s"; set xlabel "Hz"; set xrange [1:15]; set yrange [0:0.025]; set xtics 1
plot "< tail -n +2 out/rest-tremor-spectrum.csv | cut -d, -f2-" matrix every :::0::0 using ($1*rate/371):3 \
         with linespoints lw 2 pt 7 ps 0.5 lc rgb before title "0 to 4 s", \
     "" matrix every :::5::5 using ($1*rate/371):3 with linespoints lw 2 pt 7 ps 0.5 lc rgb after title "5 to 9 s"
unset multiplot
