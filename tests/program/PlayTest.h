#pragma once

#include "Records.h"
#include "SandboxedTest.h"

/**
 * The real program in the sandbox, judged by the stream at the driver and by the log. Makes value
 * files of 50 Hz, case-NUMBER.csv; each of their lines can be recognised in a recording.
 */
class PlayTest : public SandboxedTest
{
protected:
    PlayTest();

    /**
     * Plays `configuration` until the options of the sandbox end the run. Expects what every run
     * must fulfil: the program does not end by itself and does not spin, each record is the right
     * one, and commands are followed. Without a fault among the options, also expects that all
     * blocks, side records and rows of the summary are right.
     */
    void play(const std::string& configuration, const Words& options,
              const Words& program = kSimulator);

    /** Expects that the last side record was written within 1 s of its time stamp. */
    void expectInStep() const;

    CommandResult mResult;
    std::vector<Event> mEvents;
    std::vector<SampleRecord> mRecords;
    std::string mPlayed; ///< the value files, each followed by a blank
    size_t mMissing = 0; ///< samples that the time stamps skip
    std::string mLog;    ///< after the line about the start of the endless loop

private:
    void explain(bool withEvents);
    void checkEvents() const;
};
