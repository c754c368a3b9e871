#pragma once

#include <QtGlobal>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace journal {

/**
 * The steps of a night, as they stand in the journal: one JSON object a line. Each is on the disk
 * before the step after it begins. So whoever reads the journal knows what was done, and at most
 * one step more was begun.
 *
 * Times are nanoseconds since the epoch, UTC. A play is one repetition of a case; plays are
 * numbered from 0 in the order in which they were meant to be played.
 */

/** A case as it was made ready to be played. */
struct StagedCase
{
    std::string mName;
    int mNumber = 0;                    ///< of its configuration; that of the steady signal is 0
    std::string mFile;                  ///< its value file, in the folder "stage" of the night
    quint64 mSamples = 0;               ///< of one play, with the repetitions of the file
    quint64 mFileRepetitions = 1;       ///< of the value file in one play
    qint64 mDurationNs = 0;             ///< of one play
    int mTimes = 1;                     ///< how often the plan wants it
    std::string mSource;                ///< what it is made from, in words: "signal dip-70-25-50hz"
    std::vector<std::string> mExpected; ///< quantities whose expected values are wanted
};

/** How what arrived is measured, for the cases whose expected values are wanted. */
struct Measuring
{
    double mCountsPerVolt = 1000.0;
    double mCountsPerAmpere = 1000.0;
    double mNominalVolts = 230.0; ///< phase to neutral, rms; what percent refers to
    double mNominalAmperes = 5.0;
    double mNominalHz = 0.0; ///< 50 or 60; 0: as the steady signal has it
};

/** The first line. */
struct NightBegin
{
    std::string mName;       ///< of the plan
    std::string mPlanPath;   ///< as given
    std::string mPlanHash;   ///< SHA-256 of the plan's text
    std::string mStageHash;  ///< SHA-256 of all value files and their configuration, in order
    bool mIsObserved = true; ///< false on a device, where the stream cannot be seen
    qint64 mGapNs = 0;
    std::optional<quint64> mSeed; ///< of the shuffled order
    bool mUntilFailure = false;   ///< the plan is played again and again, until a play fails
    std::vector<StagedCase> mCases;
    std::vector<int> mOrder;                         ///< for each play the index of its case
    std::map<std::string, std::string> mEnvironment; ///< versions, machine, state of the clock
    Measuring mMeasuring;
};

/** The night goes on after it was cut off. */
struct Resumed
{
    std::map<std::string, std::string> mEnvironment;
};

/** The program was started; findings and plays that follow belong to this run of it. */
struct ProgramStarted
{
    int mRun = 0; ///< from 1
};

/** The gap before a play begins. */
struct PlayBegin
{
    int mPlay = 0;
};

/** A command was written into the control FIFO. */
struct CommandSent
{
    int mPlay = 0;
    std::string mText;
};

/** Something is wrong. */
struct Finding
{
    std::optional<int> mPlay; ///< none: before the first or after the last one
    std::string mKind;        ///< as explain names it ("missing"), or one of the campaign's own
    std::string mText;        ///< in words
    std::optional<qint64> mStampNs; ///< time stamp of the sample it is at
    std::string mSamplesFile; ///< kept samples around it, relative to the folder; may be empty
};

/** Worth knowing, and nobody's fault: no play fails of it. */
struct Remark
{
    std::string mText;
};

/** What became of a play. */
enum class PlayVerdict
{
    Passed, ///< played, and all of it arrived
    Failed,
    NotObserved, ///< commanded and answered, on a device
};

struct PlayEnd
{
    int mPlay = 0;
    PlayVerdict mVerdict = PlayVerdict::Failed;
    qint64 mFirstStampNs = 0; ///< of its samples; 0 where none arrived
    qint64 mLastStampNs = 0;
    quint64 mSamples = 0;           ///< that arrived
    std::optional<qint64> mDelayNs; ///< from the command to its first sample
    quint64 mFindings = 0;
};

/** The program ended. */
struct ProgramEnded
{
    int mRun = 0;
    std::string mHow; ///< in words; empty when it was stopped as planned
};

/** The last line of a night that was not cut off. */
struct NightEnd
{
    enum class Reason
    {
        Done,
        Interrupted,  ///< by a signal
        FirstFailure, ///< as asked for
        GaveUp,       ///< nothing could be played any more
    };
    Reason mReason = Reason::Done;
    std::string mText; ///< why it gave up
};

using Step = std::variant<NightBegin, Resumed, ProgramStarted, PlayBegin, CommandSent, Finding,
                          Remark, PlayEnd, ProgramEnded, NightEnd>;

struct Entry
{
    qint64 mTimeNs = 0;
    Step mStep;
};

inline constexpr const char* kExpectedFolder = "expected";

/**
 * Where the expected values of a play are, without the suffix, relative to the folder of the night:
 * "expected/dip1-3". Its records have ".bin" until they are measured, the values ".csv".
 */
std::string expectedName(const StagedCase& played, int play);

/**
 * A play as a reader knows it: "dip1", "dip1 (4 of 10)"; "dip1 (repetition 12)" where the plan is
 * played again.
 * @param repetition of the case, from 1
 */
std::string playText(const StagedCase& played, int repetition);

/** One line without its line end. */
std::string lineOf(const Entry& entry);

/** @throws CaseError, which names the field, when the line is no entry */
Entry parseEntry(std::string_view line);

/** As it stands in the journal and in the tables: "passed", "failed", "not observed". */
const char* nameOf(PlayVerdict verdict);

} // namespace journal
