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
 * The steps of a night in the journal: one JSON object per line. Each is on the disk before the
 * next step begins. So the journal has all steps that were done, and lacks at most one that had
 * begun.
 *
 * Times are nanoseconds since the epoch, UTC. A play is one repetition of a case. Plays are
 * numbered from 0 in their planned order.
 */

/** A case that is ready to be played. */
struct StagedCase
{
    std::string mName;
    int mNumber = 0;                    ///< of its configuration; that of the steady signal is 0
    std::string mFile;                  ///< its value file, in the folder "stage" of the night
    quint64 mSamples = 0;               ///< of one play, with the repetitions of the file
    quint64 mFileRepetitions = 1;       ///< of the value file in one play
    qint64 mDurationNs = 0;             ///< of one play
    int mTimes = 1;                     ///< number of plays
    std::string mSource;                ///< in words: "signal dip-70-25-50hz"
    std::vector<std::string> mExpected; ///< groups of quantities to compute expected values for
};

/** Settings for measuring the expected values. */
struct Measuring
{
    double mCountsPerVolt = 1000.0;
    double mCountsPerAmpere = 1000.0;
    double mNominalVolts = 230.0; ///< phase to neutral, rms
    double mNominalAmperes = 5.0;
    double mNominalHz = 0.0; ///< 50 or 60; 0: that of the steady signal
};

/** The first line. */
struct NightBegin
{
    std::string mName;       ///< of the plan
    std::string mPlanPath;   ///< as given
    std::string mPlanHash;   ///< SHA-256 of the plan's text
    std::string mStageHash;  ///< SHA-256 of all value files and their configuration, in order
    bool mIsObserved = true; ///< false on a device, where the stream cannot be observed
    qint64 mGapNs = 0;
    std::optional<quint64> mSeed; ///< of the shuffled order
    bool mUntilFailure = false;   ///< the plan is repeated until a play fails
    std::vector<StagedCase> mCases;
    std::vector<int> mOrder;                         ///< for each play the index of its case
    std::map<std::string, std::string> mEnvironment; ///< versions, machine, state of the clock
    Measuring mMeasuring;
};

/** The night continues after it was cut off. */
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

/** An error in a play or in the night. */
struct Finding
{
    std::optional<int> mPlay;       ///< none: before the first or after the last one
    std::string mKind;              ///< a kind of explain ("missing"), or one of the campaign
    std::string mText;              ///< in words
    std::optional<qint64> mStampNs; ///< time stamp of the sample it is at
    std::string mSamplesFile; ///< kept samples around it, relative to the folder; may be empty
};

/** Worth knowing, but no play fails because of it. */
struct Remark
{
    std::string mText;
};

/** The result of a play. */
enum class PlayVerdict
{
    Passed, ///< all samples arrived
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
    std::string mEndText; ///< in words; empty if it was stopped as planned
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
 * Name of the files of a play, without suffix, relative to the folder of the night:
 * "expected/dip1-3". The expected values have ".csv", the records, until they are measured, ".bin".
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

/** @throws CaseError with the name of the field, if the line is not an entry */
Entry parseEntry(std::string_view line);

/** Name in the journal and in the tables: "passed", "failed", "not observed". */
const char* nameOf(PlayVerdict verdict);

} // namespace journal
