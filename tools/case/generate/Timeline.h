#pragma once

#include <QtGlobal>
#include <vector>

#include "generate/WaveParameters.h"

namespace generate {

/** The frequency by the time stamps, as their receiver sees it, for a frequency in the file. */
double playedHertz(float hertz);

/** A line of the value file and when it is played. */
struct Position
{
    qint64 mLine;    ///< a recording of the stream carries it in the auxiliary word
    double mSeconds; ///< of the time stamps, from that of the first sample
};

/**
 * The time of each sample of a wave. A sample is identified by its line in the value file, from 0;
 * 360 lines are one period. There are two times: that of the description, by the frequency, and
 * that of the time stamps, by the simulator's step of whole nanoseconds, which is up to 20 ppm
 * ahead.
 */
class Timeline
{
public:
    /** Requires: problemOf(parameters) is empty, or concerns neither frequency nor duration. */
    explicit Timeline(const WaveParameters& parameters);

    /**
     * A frequency for each period.
     * Requires: all can be played; there is one for each of the lines, and at least one line.
     */
    Timeline(const std::vector<float>& frequencies, qint64 lineCount);

    qint64 lineCount() const { return mLineCount; }

    /** Hz of the line's period, as the value file has it. */
    float frequencyOf(qint64 line) const;

    /** Seconds from the first sample by the frequency. */
    double secondsOf(qint64 line) const;

    /** Seconds from the first sample's time stamp to that of the line. */
    double stampOf(qint64 line) const;

    /** The line and its time stamp; the line after the last one has a position too. */
    Position positionOf(qint64 line) const;

    /** Seconds to the end of the last line by the frequency. */
    double endSeconds() const { return mEndSeconds; }

    /** The line nearest to a time by the frequency; may be after the last one. */
    qint64 lineAt(double seconds) const;

private:
    /** One period of a changing frequency. */
    struct Period
    {
        double mSeconds;     ///< by the frequency
        qint64 mNanoseconds; ///< by the steps
        float mFrequency;
    };

    void add(float frequency);
    void follow(const std::vector<FrequencyPoint>& course, double duration);

    float mFrequency;
    qint64 mLineCount;
    double mEndSeconds;
    std::vector<Period> mPeriods; ///< empty when the frequency is constant
    qint64 mNanoseconds = 0;      ///< by the steps, to the end of the last of them
};

} // namespace generate
