#pragma once

#include "Records.h"
#include "SandboxedTest.h"

/**
 * The real program in the sandbox, judged by what arrived at the driver and by the log. There are
 * value files of 50 Hz, case-NUMBER.csv, whose every line can be recognised in a recording.
 */
class PlayTest : public SandboxedTest
{
protected:
    PlayTest();

    /**
     * Plays `configuration` until the sandbox's options end it. Expects what holds of any run: it
     * does not end by itself, it does not spin, every record is the one that has to follow, and
     * what is sent is followed; without a fault among the options also that each block and side
     * record is as it has to be, and that the summary tells of them.
     */
    void play(const std::string& configuration, const Words& options,
              const Words& program = kSimulator);

    /** That the last side record was written when the wall clock had reached its time stamp. */
    void expectInStep() const;

    CommandResult mResult;
    std::vector<Event> mEvents;
    std::vector<SampleRecord> mRecords;
    std::string mPlayed; ///< the value files, a blank behind each
    size_t mMissing = 0; ///< samples that the time stamps skip
    std::string mLog;    ///< behind the line that tells the start of the endless loop

private:
    void explain(bool withEvents);
    void checkEvents() const;
};
