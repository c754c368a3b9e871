#pragma once

#include <QtGlobal>
#include <array>
#include <optional>
#include <string>
#include <vector>

namespace explain {

/** Kinds of faults of a recording. */
enum class FindingKind
{
    Differs,
    Missing,
    Twice,
    Foreign,
    TimeJump,
    Elsewhere,
    NotFollowed,
    NotGiven,
    Incomplete,
    OtherEvents,
    NotSent,
    Refused,
    Died,
    Silent,
    Count
};

/** The name of a kind for programs, and its text in the verdict. */
struct FindingName
{
    const char* mKey;
    const char* mText;
    bool mIsOfRun = false; ///< of the run as a whole, not of a record
};
const FindingName& nameOf(FindingKind kind);

/** One fault. */
struct Finding
{
    FindingKind mKind;
    size_t mRecord; ///< index in the recording, from 0
    size_t mCount;  ///< samples, jumps, commands or bytes
    std::string mText;
};

/** Counts of the findings of each kind, and the decision which ones are listed. */
class FindingCounts
{
public:
    /** Default max number of listed findings of each kind; all are counted. */
    static constexpr size_t kMaxListed = 20;

    explicit FindingCounts(size_t maxListed = kMaxListed) : mMaxListed(maxListed) {}

    /** Counts the finding; true if it is to be listed. */
    bool add(const Finding& finding);

    size_t count(FindingKind kind) const { return mCounts[static_cast<size_t>(kind)]; }
    bool isClean() const;

private:
    static constexpr auto kKinds = static_cast<size_t>(FindingKind::Count);

    size_t mMaxListed;
    std::array<size_t, kKinds> mCounts{};
    std::array<size_t, kKinds> mListed{};
};

/** Passes of one value file in a row. */
struct PlayedSegment
{
    std::vector<int> mConfigurations; ///< every one that fits
    std::string mFile;
    size_t mFileSamples;
    size_t mPasses;
    size_t mFirstSample; ///< of the first pass, from 0; above 0 if the pass is cut
    size_t mLastSample;  ///< of the last pass
    qint64 mFirstStampNs;
    qint64 mLastStampNs;
    size_t mSamples; ///< that arrived
};

/** The outcome of a command. */
struct CommandOutcome
{
    std::string mText;
    qint64 mArrivalNs;
    std::string mProblem; ///< why it is invalid, in the simulator's words; empty if it is valid
    std::optional<qint64> mFirstSampleArrivalNs; ///< of what it selected, if that was played
    qint64 mFirstStampNs;                        ///< of that sample
};

/** The result at the end of a recording. */
struct Verdict
{
    size_t mRecords;
    size_t mRestBytes; ///< of a record that is still being written
    FindingCounts mFindings;
};

/** Receives the results as soon as they are known, in the order of the recording. */
class ExplanationOutput
{
public:
    ExplanationOutput() = default;
    ExplanationOutput(const ExplanationOutput&) = delete;
    ExplanationOutput& operator=(const ExplanationOutput&) = delete;
    virtual ~ExplanationOutput() = default;

    virtual void add(const PlayedSegment& segment) = 0;
    virtual void add(const CommandOutcome& command) = 0;
    virtual void add(const Finding& finding) = 0;
    virtual void add(const Verdict& verdict) = 0;
};

/** A time stamp as seconds with nine decimals. */
std::string stampText(qint64 stampNs);

} // namespace explain
