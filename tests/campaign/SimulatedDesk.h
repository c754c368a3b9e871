#pragma once

#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "Files.h"
#include "explain/PlayPlan.h"
#include "journal/JournalWriter.h"
#include "run/Night.h"

/** A case that can be played; configuration 0 is the steady signal. */
struct SimulatedCase
{
    std::vector<SampleRecord> mSamples; ///< without time stamps
    int mRepetitions = 1;
};

/** A journal in memory, on a disk that may be full. */
class MemoryJournal : public journal::JournalSink
{
public:
    void append(const journal::Entry& entry) override;

    template <typename Step>
    std::vector<Step> all() const
    {
        std::vector<Step> steps;
        for (const journal::Entry& entry : mEntries) {
            if (const Step* step = std::get_if<Step>(&entry.mStep)) {
                steps.push_back(*step);
            }
        }
        return steps;
    }

    std::vector<journal::Entry> mEntries;
    size_t mMaxEntries = SIZE_MAX;
};

/** One block as the program writes it. A fault may change anything about it. */
struct Block
{
    size_t mIndex = 0; ///< in the night, from 0
    int mConfiguration = 0;
    std::vector<SampleRecord> mRecords;
    bool mIsAccepted = true;
    bool mKills = false; ///< the program dies instead of writing it
    bool mKillsSandbox = false;
    qint64 mClockStepNs = 0; ///< of the wall clock, just before it
    qint64 mStallNs = 0;     ///< the driver does not answer for so long, once it has the block
};

/**
 * A desk on a virtual clock, with a simple player instead of the program: it plays the cases, takes
 * commands at the end of a case, paces itself by eleven blocks, and reports events like the
 * sandbox. It does not know how a night is judged.
 */
class SimulatedDesk : public run::Desk
{
public:
    explicit SimulatedDesk(std::vector<SimulatedCase> cases) : mCases(std::move(cases)) {}

    /** Plays until the night is over. */
    void play(run::Night& night);

    run::Moment now() const { return mNow; }

    /** Number of commanded plays that the player has begun and ended. */
    int playsEnded() const { return mPlaysEnded; }

    void start(int run) override;
    void send(const std::string& command) override;
    void stop() override { mIsAsked = true; }
    void kill() override { mIsAsked = true; }
    std::string keep(const std::string& name, const std::vector<SampleRecord>& records) override;

    void record(const std::string& name, const SampleRecord* records, size_t count) override
    {
        std::vector<SampleRecord>& recording = mRecordings[name];
        recording.insert(recording.end(), records, records + count);
    }

    void endRecording(const std::string& name, bool isWanted) override
    {
        if (!isWanted) {
            mRecordings.erase(name);
        }
    }

    /** Sends a command of another program. */
    void sendForeign(const std::string& command) { mFifo.push_back(command); }

    std::function<void(Block*)> mFault = [](Block*) {}; ///< called for each block
    std::function<void()> mEachBurst = [] {};
    bool mRefusesCommands = false;
    bool mLosesCommands = false; ///< they are written, and nobody takes them
    bool mSwapsNext = false;     ///< a block comes after the one behind it
    bool mStandsStill = false;
    qint64 mLoadNs = 0;                   ///< from the start of the program to its first block
    std::vector<std::string> mEndRemarks; ///< of the sandbox, at the end of a run
    size_t mBlocks = 0;                   ///< written so far in the night
    std::vector<std::string> mKept;
    std::map<std::string, std::vector<SampleRecord>> mRecordings; ///< of plays
    std::vector<int> mWrongFile; ///< played instead: {configuration, the other one}

private:
    struct Position
    {
        int mConfiguration = 0;
        int mRepetition = 0;
        size_t mSample = 0;
    };

    void burst(run::Night& night);
    Block nextBlock();
    void endCase();
    void playBlock(run::Night& night, Block block);
    void deliver(run::Night& night, const Block& block);
    void endProgram(run::Night& night, explain::Event program, const std::string& reason);
    void pass(qint64 ns);
    const SimulatedCase& current() const;
    explain::Event event(explain::Event::Kind kind) const;

    std::vector<SimulatedCase> mCases;
    run::Moment mNow{1'700'000'000'000'000'000, 5'000'000'000};
    bool mIsUp = false;
    bool mIsAsked = false;
    int mContinuous = 0;
    int mCommanded = 0; ///< the night's last command; 0: none is being followed
    int mPlaysEnded = 0;
    qint64 mStampNs = 0;
    Position mPosition;
    std::deque<std::string> mFifo;
    std::vector<explain::Event> mSent; ///< not passed on yet
    std::optional<Block> mHeldBack;
};

/** The files of a plan, and the night's description of them. */
struct SimulatedNight
{
    static constexpr qint64 kStepNs = 5'555'555; ///< at 0.5 Hz: eight hours are few samples

    /** @param gapNs before each case */
    SimulatedNight(std::vector<SimulatedCase> cases, const std::vector<int>& times, qint64 gapNs);

    TestFiles mFiles;
    std::vector<SimulatedCase> mCases;
    journal::NightBegin mBegin;
    std::unique_ptr<explain::PlayPlan> mPlan;
};

/** Samples that occur in no other case. */
std::vector<SampleRecord> randomSamples(std::mt19937& random, size_t count);
