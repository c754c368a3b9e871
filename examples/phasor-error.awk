# The largest errors of the phasors of UA and of their frequency, against the wave that vx-case
# generate wrote at 230 V on lines of 50 Hz. Each line of a value file is a degree of the wave.
#
# Usage: awk -f phasor-error.awk [-v hertz=H -v percent=P -v radians=R] VALUES PHASORS
#   VALUES    the value file; hertz, percent and radians are those of its modulation
#   PHASORS   of vx-case measure, from a full minute on
function swing(line) { return cos(2 * pi * hertz * line / 360 / nominal) }
function line_at(t) {                       # with a fraction
    while (last < lines - 1 && time[last + 1] <= t) ++last
    while (last > 0 && time[last] > t) --last
    return last + (t - time[last]) / (time[last + 1] - time[last])
}
function cycles_at(t) { at = line_at(t); return at / 360 - radians * swing(at) / (2 * pi) - 0.25 }
BEGIN { pi = atan2(0, -1); nominal = 50 }
/^#/ || /^utc/ { next }
FNR == NR {
    split($0, field, ";")
    if (lines > 0) now += int(1e9 / 360 / field[5] + 0.002) / 1e9 # in single precision
    time[lines++] = now
    next
}
{
    split($0, field, ",")
    t = substr(field[1], 18, 12) + 60 * substr(field[1], 15, 2)
    if (field[2] == "phasor-magnitude" && field[3] == "UA") magnitude = field[4]
    if (field[2] == "phasor-angle" && field[3] == "UA") {
        turn = field[4] * pi / 180 - 2 * pi * (cycles_at(t) - nominal * t)
        wanted = 230 * (1 + percent / 100 * swing(line_at(t)))
        x = magnitude * cos(turn) - wanted
        y = magnitude * sin(turn)
        error = 100 * sqrt(x * x + y * y) / wanted
        if (error > tve) tve = error
    }
    if (field[2] == "frequency-pmu") {
        # Over a period to either side, where the ramp of a value file is straight.
        d = hertz > 0 ? 0.0005 : 0.02
        error = 1000 * (field[4] - (cycles_at(t + d) - cycles_at(t - d)) / (2 * d))
        if (error * error > fe * fe) fe = error
    }
}
END { printf "TVE %.5f %%, frequency %.3f mHz\n", tve, fe < 0 ? -fe : fe }
