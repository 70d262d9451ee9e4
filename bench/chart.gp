# A bar for each operation: how many times the memcpy of its result it takes, in the library and in the system.
set terminal svg size 900,1400 font "sans,11" background "#ffffff"
set datafile separator "\t"
set output output
set title "Time of an operation on 4096 x 4096 pixels, as multiples of copying the result (shorter is better)"
set logscale x
set grid xtics lc rgb "#dddddd"
set style fill solid noborder
set key top right
set yrange [*:*] reverse
set offsets 0, 0, 1, 1
set lmargin 46
bar = 0.38
plot data using 2:0:(0.3):2:($0-bar):($0):ytic(1) with boxxyerror lc rgb "#2166ac" title "zavo", \
     data using 3:0:(0.3):3:($0):($0+bar) with boxxyerror lc rgb "#bbbbbb" title "GDI or WIC"
