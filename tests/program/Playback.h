#pragma once

#include <string>
#include <vector>

#include "SampleRecord.h"

/** Lines of a value file that have one frequency, and the step that belongs to it. */
struct Stretch
{
    int mLines;
    const char* mFrequency; ///< Hz, as it stands in the file
    qint64 mStepNs;         ///< between two samples
    quint32 mPeriod;        ///< of the signal, in units of 10 ns
};

/**
 * One value file whose every line can be recognised in a recording: channel 0 carries the case's
 * number, channel 1 the line's.
 */
class ValueCase
{
public:
    ValueCase(int number, const std::vector<Stretch>& stretches);

    int number() const { return mNumber; }
    int lineCount() const { return static_cast<int>(mStretchOfLine.size()); }

    /** "case-NUMBER.csv". */
    std::string fileName() const;
    std::string fileText() const;

    /** What arrives for a line, but for its time stamp. */
    SampleRecord record(int line) const;

    /** What is in force for a line: the first line of a block decides for all of it. */
    const Stretch& inForce(int line) const;

private:
    int mNumber;
    std::vector<Stretch> mStretchOfLine;
};

/** A write as the sandbox tells of it. */
struct Event
{
    qint64 mArrivalNs;
    std::string mFile;
    int mBytes;
    bool mIsAccepted;
    std::vector<quint32> mWords;
};

std::vector<Event> eventsOf(const std::string& text);
