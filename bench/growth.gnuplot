# gnuplot -e "data='FILE'; picture='FILE'" growth.gnuplot: plots the time of Frame_Init and of its
# floor against the number of plugins, in total and per plugin. Columns of the data: plugins, frame
# in milliseconds, floor in milliseconds.
if (!exists('format')) format = 'svg'
set terminal @format size 960,430 font 'DejaVu Sans,12' background rgb 'white'
set output picture
set logscale x
set xrange [8:1150]
set xtics (10, 100, 300, 900)
set xlabel 'plugins, 20 menu items each'
set border 3 linecolor rgb '#555555'
set tics nomirror
set grid ytics linecolor rgb '#dddddd' linetype 1
set style line 1 linecolor rgb '#1f5fa8' linewidth 2 pointtype 7 pointsize 0.7
set style line 2 linecolor rgb '#c8641e' linewidth 2 pointtype 6 pointsize 1.3
set key top left Left reverse samplen 2

set multiplot layout 1,2

set title 'processor time, ms'
set logscale y
set yrange [5:12000]
set ytics (10, 30, 100, 300, 1000, 3000, 10000)
plot data using 1:3 with linespoints linestyle 2 title 'floor: the same calls, bare libxml2', \
  data using 1:2 with linespoints linestyle 1 title 'Frame\_Init'

set title 'processor time per plugin, ms'
unset logscale y
unset key
set yrange [0:*]
set ytics autofreq
plot data using 1:($3/$1) with linespoints linestyle 2, \
  data using 1:($2/$1) with linespoints linestyle 1

unset multiplot
