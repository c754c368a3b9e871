# Draws what arrived at the stand-in driver in the demo: the whole run, and the signal around each
# switch. Where the switches are is found in the recording itself.
#
# Usage: gnuplot -c waveform.gnuplot RECORDING EVENTS PICTURE

recording = ARG1
events = ARG2
picture = ARG3

# --- The recording: seconds, nanoseconds, auxiliary word, flags, eight channels -----------------

format = "binary format='%uint32%uint32%uint32%uint32%8int32'"
recordSize = 48         # bytes
period = 360            # samples
records = int(system(sprintf("stat -c %%s '%s'", recording))) / recordSize

stats recording @format every ::0::0 using 1 nooutput name "firstSeconds"
stats recording @format every ::0::0 using 2 nooutput name "firstNanoseconds"
since(s, n) = (s - firstSeconds_min) + (n - firstNanoseconds_min) * 1e-9
stats recording @format using (since($1, $2)) nooutput name "time"

# The sag begins and ends with a step of the first voltage that no sine makes within a degree.
stats recording @format using 5 nooutput name "u1"
previous = NaN
stepTo(value) = (step = abs(value - previous), previous = value, step)
stats recording @format using (stepTo($5) > 0.1 * u1_max ? since($1, $2) : NaN) nooutput name "sag"

# The time stamps of 60 Hz are closer together than those of 50 Hz.
previous = NaN
stats recording @format using (stepTo(since($1, $2)) < 50e-6 ? since($1, $2) : NaN) \
    nooutput name "fast"

if (sag_records != 2 || fast_records == 0) {
    print "waveform: the recording lacks the sag or the change to 60 Hz"
    exit status 1
}

# The auxiliary word is 0 in the first sample of each value file.
stats recording @format using ($3 == 0 && since($1, $2) < sag_min ? since($1, $2) : NaN) \
    nooutput name "before"
stats recording @format using ($3 == 0 && since($1, $2) > sag_max ? since($1, $2) : NaN) \
    nooutput name "after"

# The records shown around each switch: enough for the time on its axis.
point = 3               # one in three is drawn, which keeps the picture small
array switch[3] = [sag_min, sag_max, fast_min]
array first[3]
array last[3]
do for [i = 1:3] {
    stats recording @format using (since($1, $2) < switch[i] ? 1 : NaN) nooutput name "earlier"
    first[i] = int(earlier_records) - 270 * point
    last[i] = int(earlier_records) + 420 * point
}

# The mean of each signal period: of the time, and of the squares of the channels.
periods = int(records / period)
array middle[periods]
set format "%.7f"       # of the tables
set table $times
plot recording @format using (int($0) / period):(since($1, $2)) smooth unique
set table $unused
set yrange [-1:1]
plot $times using (int($1) < periods ? middle[int($1) + 1] = $2 : 0):(0)
set autoscale y
do for [channel = 0:7] {
    eval sprintf("set table $squares%d", channel)
    plot recording @format using (int($0) / period):(column(channel + 5)**2) smooth unique
}
unset table
set format "%g"
timeOf(index) = middle[int(index) + 1]
frequencyAt(i) = 1 / (middle[i < periods ? i + 1 : i] - middle[i < periods ? i : i - 1])
rms(square) = sqrt(square) * 1e-3       # V from mV, A from mA

# The commands: seconds and nanoseconds of their arrival, and their text.
commands = system(sprintf("sed -n 's/^{\"t\":\\([0-9]*\\)\\([0-9]\\{9\\}\\)," . \
    "\"file\":\"simulator_control\".*\"text\":\"\\([^\"]*\\)\".*/\\1 \\2 \\3/p' '%s'", events))
commandTime(i) = since(real(word(commands, 3 * i - 2)), real(word(commands, 3 * i - 1)))
commandText(i) = word(commands, 3 * i)
effectOf(text) = text[1:1] eq "s" ? "play configuration " . text[2:*] . " once" \
                                  : "play configuration " . text . " from now on"

# --- The picture ---------------------------------------------------------------------------------

set terminal svg size 1400,1260 font "DejaVu Sans,Arial,sans-serif,14" background "#ffffff"
set output picture

array colour[4] = ["#0072b2", "#d55e00", "#009e73", "#808080"]
array voltage[4] = ["U_{L1}", "U_{L2}", "U_{L3}", "U_N"]
array current[4] = ["I_{L1}", "I_{L2}", "I_{L3}", "I_N"]
textColour = "#404040"
markColour = "#9b1fa8"

# A panel's left, right, bottom and top, as parts of the picture.
place = "set lmargin at screen %g; set rmargin at screen %g; " . \
    "set bmargin at screen %g; set tmargin at screen %g"

set multiplot
set tics nomirror out textcolor rgb textColour
set style fill solid 1.0 noborder

# What was played and when: a bar for each configuration, an arrow for each command.

array start[5] = [0, before_max, after_min, fast_min, time_max]
array shade[4] = ["#dbe9f6", "#fbdcc4", "#dbe9f6", "#d8efdf"]
array played[4] = ["0: steady, 50 Hz", "1: sag", "0: steady, 50 Hz", "2: distorted, 60 Hz"]

eval sprintf(place, 0.065, 0.93, 0.862, 0.887)
unset border
unset tics
set xrange [0:time_max]
set yrange [0:1]
set label "What the simulator played into the driver, as it arrived" \
    at screen 0.02, screen 0.978 font ",21"
set label "Three phases and the neutral conductor, one record per degree of phase. A command " . \
    "takes effect at the end of the value file in progress." \
    at screen 0.02, screen 0.955 textcolor rgb textColour
set label "playing" at screen 0.058, graph 0.5 right textcolor rgb textColour
do for [i = 1:4] {
    set object rectangle from start[i], 0 to start[i + 1], 1 fc rgb shade[i] behind
    width = (start[i + 1] - start[i]) / time_max
    caption = width > 0.15 ? played[i] : width > 0.06 ? played[i][1:6] : played[i][1:1]
    set label caption at (start[i] + start[i + 1]) / 2, 0.5 center
}
do for [i = 1:words(commands) / 3] {
    height = 1.6 + 0.85 * ((words(commands) / 3 - i) % 2)    # the earlier one above
    caption = sprintf("  command “%s”: %s", commandText(i), effectOf(commandText(i)))
    set arrow from commandTime(i), height to commandTime(i), 0 head filled size screen 0.006, 20 \
        front lc rgb markColour lw 1.5
    set label caption at commandTime(i), height left textcolor rgb markColour
}
plot NaN notitle
unset label
unset object
unset arrow

# The whole run.

set border 3 lc rgb textColour
set grid lc rgb "#e4e4e4" lt 1
set ytics nomirror
set xtics nomirror format ""
set key at screen 0.94, graph 1.0 left top vertical samplen 1.2 spacing 1.15 reverse Left
do for [i = 1:words(commands) / 3] {
    set arrow from commandTime(i), graph 0 to commandTime(i), graph 1 nohead \
        lc rgb markColour lw 1.5 dt 2
}

eval sprintf(place, 0.065, 0.93, 0.755, 0.855)
set yrange [0:280]
set ytics 100
set ylabel "V rms" offset 1
plot for [c = 0:3] sprintf("$squares%d", c) using (timeOf($1)):(rms($2)) with lines lw 2 \
    lc rgb colour[c + 1] title voltage[c + 1]

eval sprintf(place, 0.065, 0.93, 0.645, 0.745)
set yrange [0:18]
set ytics 5
set ylabel "A rms"
plot for [c = 0:3] sprintf("$squares%d", c + 4) using (timeOf($1)):(rms($2)) with lines lw 2 \
    lc rgb colour[c + 1] title current[c + 1]

eval sprintf(place, 0.065, 0.93, 0.575, 0.635)
set yrange [45:65]
set ytics 50, 10
set ylabel "Hz"
set xtics format "%g"
set xlabel "time since the first sample, s" offset 0, 0.5
plot $times using (timeOf($1)):(frequencyAt(int($1) + 1)) with lines lw 2 lc rgb "black" \
    title "f"
unset arrow

# Around each switch: the samples themselves.

array title[3] = ["The sag begins: L1 falls to 40 % and jumps by −30°", "The sag ends", \
    "From 50 Hz to 60 Hz with harmonics"]
array left[3] = [0.065, 0.365, 0.665]
do for [i = 1:3] {
    if (i > 1) { unset key; unset ylabel; set ytics format "" }
    set xrange [switch[i] - 0.045 : switch[i] + 0.055]
    set xtics 0.02 format ""
    set arrow 1 from switch[i], graph 0 to switch[i], graph 1 nohead lc rgb textColour dt 3

    eval sprintf(place, left[i], left[i] + 0.265, 0.28, 0.48)
    set title title[i]
    unset xlabel
    set yrange [-400:400]
    set ytics 200
    if (i == 1) { set ylabel "voltage, V" }
    plot for [c = 0:3] recording @format every point::first[i]::last[i] \
        using (since($1, $2)):(column(c + 5) * 1e-3) with lines lw 1.5 \
        lc rgb colour[c + 1] title voltage[c + 1]

    eval sprintf(place, left[i], left[i] + 0.265, 0.065, 0.265)
    unset title
    set xlabel "time since the first sample, s" offset 0, 0.5
    set xtics format "%.2f"
    set yrange [-25:25]
    set ytics 10
    if (i == 1) { set ylabel "current, A" }
    plot for [c = 0:3] recording @format every point::first[i]::last[i] \
        using (since($1, $2)):(column(c + 9) * 1e-3) with lines lw 1.5 \
        lc rgb colour[c + 1] title current[c + 1]
}
unset multiplot
