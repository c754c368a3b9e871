#include "SimulatedDesk.h"

#include <algorithm>

#include "base/CaseError.h"

namespace {
constexpr int kBlocksInBurst = 11;
constexpr qint64 kMaxDriftNs = 60'000'000'000;

std::string valueLines(const SimulatedCase& it)
{
    std::string text;
    for (const SampleRecord& sample : it.mSamples) {
        text +=
            "0;0;" + std::to_string(sample.mAuxWord) + ';' + std::to_string(sample.mFlags) + ";0.5";
        for (const qint32 value : sample.mValues) {
            text += ';' + std::to_string(value);
        }
        text += '\n';
    }
    return text;
}

SampleRecord stamped(SampleRecord sample, qint64 stampNs)
{
    sample.mSeconds = static_cast<quint32>(stampNs / 1'000'000'000);
    sample.mNanoseconds = static_cast<quint32>(stampNs % 1'000'000'000);
    return sample;
}
} // namespace

void MemoryJournal::append(const journal::Entry& entry)
{
    if (mEntries.size() >= mMaxEntries) {
        throw base::CaseError("journal.jsonl: No space left on device");
    }
    mEntries.push_back(entry);
}

std::vector<SampleRecord> randomSamples(std::mt19937& random, size_t count)
{
    std::vector<SampleRecord> samples(count);
    for (SampleRecord& sample : samples) {
        std::generate(std::begin(sample.mValues), std::end(sample.mValues),
                      [&random] { return static_cast<qint32>(random()); });
    }
    return samples;
}

SimulatedNight::SimulatedNight(std::vector<SimulatedCase> cases, const std::vector<int>& times,
                               qint64 gapNs)
    : mCases(std::move(cases))
{
    std::string configuration;
    for (size_t number = 0; number < mCases.size(); ++number) {
        const std::string name = "case" + std::to_string(number);
        const SimulatedCase& it = mCases[number];
        mFiles.make(name + ".csv", valueLines(it));
        configuration +=
            std::to_string(number) + ',' + std::to_string(it.mRepetitions) + ',' + name + ".csv\n";
        if (number > 0) {
            const auto samples = it.mSamples.size() * static_cast<size_t>(it.mRepetitions);
            mBegin.mCases.push_back({name,
                                     static_cast<int>(number),
                                     name + ".csv",
                                     samples,
                                     static_cast<quint64>(it.mRepetitions),
                                     static_cast<qint64>(samples) * kStepNs,
                                     times[number - 1],
                                     "",
                                     {}});
            mBegin.mOrder.insert(mBegin.mOrder.end(), static_cast<size_t>(times[number - 1]),
                                 static_cast<int>(number) - 1);
        }
    }
    mBegin.mGapNs = gapNs;
    mPlan = std::make_unique<explain::PlayPlan>(
        mFiles.make("cases.conf", configuration).toStdString(), mFiles.path(""));
}

void SimulatedDesk::play(run::Night& night)
{
    while (!night.isOver()) {
        if (!mIsUp) {
            pass(100'000'000);
        } else if (mIsAsked) {
            endProgram(night, event(explain::Event::Kind::ProgramEnd), "input ended");
        } else {
            burst(night);
        }
        night.tick(mNow);
    }
}

void SimulatedDesk::pass(qint64 ns)
{
    mNow.mWallNs += ns;
    mNow.mSteadyNs += ns;
}

explain::Event SimulatedDesk::event(explain::Event::Kind kind) const
{
    explain::Event event;
    event.mKind = kind;
    event.mTimeNs = mNow.mWallNs;
    return event;
}

void SimulatedDesk::start(int /*run*/)
{
    mIsUp = true;
    mIsAsked = false;
    mStandsStill = false;
    mContinuous = 0;
    mCommanded = 0;
    mPosition = {};
    pass(mLoadNs);
    mStampNs = mNow.mWallNs;
    mFifo.clear();
}

void SimulatedDesk::send(const std::string& command)
{
    explain::Event sent = event(explain::Event::Kind::Command);
    sent.mText = command;
    sent.mAccepted = !mRefusesCommands;
    sent.mReason = mRefusesCommands ? "it is full" : "";
    mSent.push_back(sent);
    if (!mRefusesCommands && !mLosesCommands) {
        mFifo.push_back(command);
        mCommanded = std::stoi(command.substr(1));
    }
}

std::string SimulatedDesk::keep(const std::string& name, const std::vector<SampleRecord>& records)
{
    mKept.push_back(name + ':' + std::to_string(records.size()));
    return name;
}

/** The program writes its blocks, and sleeps until the wall clock has caught up. */
void SimulatedDesk::burst(run::Night& night)
{
    mEachBurst();
    for (int i = 0; i < kBlocksInBurst && mIsUp && !mStandsStill; ++i) {
        for (const explain::Event& sent : std::exchange(mSent, {})) {
            night.add(sent, mNow);
        }
        pass(1000);
        playBlock(night, nextBlock());
    }
    const qint64 leadNs = mStampNs - mNow.mWallNs;
    if (std::abs(leadNs) > kMaxDriftNs) {
        mStampNs = mNow.mWallNs;
        mStandsStill = leadNs > 0; // it sleeps for longer than anybody waits
    }
    pass(std::clamp<qint64>(leadNs, 1'000'000, kMaxDriftNs));
}

const SimulatedCase& SimulatedDesk::current() const
{
    const bool isWrong = !mWrongFile.empty() && mPosition.mConfiguration == mWrongFile[0];
    return mCases[static_cast<size_t>(isWrong ? mWrongFile[1] : mPosition.mConfiguration)];
}

Block SimulatedDesk::nextBlock()
{
    Block block;
    block.mIndex = mBlocks++;
    block.mConfiguration = mPosition.mConfiguration;
    const std::vector<SampleRecord>& samples = current().mSamples;
    while (mPosition.mSample < samples.size() &&
           block.mRecords.size() < size_t{kSamplesPerPeriod}) {
        mStampNs += SimulatedNight::kStepNs;
        block.mRecords.push_back(stamped(samples[mPosition.mSample++], mStampNs));
    }
    return block;
}

void SimulatedDesk::playBlock(run::Night& night, Block block)
{
    mFault(&block);
    if (block.mKills) {
        explain::Event end = event(explain::Event::Kind::ProgramEnd);
        end.mText = "the program was killed by signal 9";
        endProgram(night, end, "program");
        return;
    }
    if (block.mKillsSandbox) {
        mIsUp = false;
        night.programEnded("vx-sandbox was killed by signal 9", 0, mNow);
        return;
    }
    mNow.mWallNs += block.mClockStepNs;
    const qint64 stallNs = block.mStallNs;
    const bool isLast = mPosition.mSample >= current().mSamples.size();
    if (std::exchange(mSwapsNext, false)) {
        mHeldBack = std::move(block);
    } else {
        deliver(night, block);
        if (mHeldBack) {
            deliver(night, *std::exchange(mHeldBack, std::nullopt));
        }
    }
    pass(stallNs);
    if (!block.mIsAccepted || isLast) {
        mPosition.mRepetition = block.mIsAccepted ? mPosition.mRepetition : current().mRepetitions;
        endCase();
    }
}

void SimulatedDesk::deliver(run::Night& night, const Block& block)
{
    explain::Event written = event(explain::Event::Kind::Block);
    written.mAccepted = block.mIsAccepted;
    written.mSamples = block.mRecords.size();
    night.add(written, mNow);
    if (block.mIsAccepted) {
        night.add(block.mRecords.data(), block.mRecords.size(), mNow);
    }
}

/** Takes a command, continues with the next repetition, or returns to the continuous case. */
void SimulatedDesk::endCase()
{
    const bool isCommanded = mCommanded != 0 && mPosition.mConfiguration == mCommanded;
    ++mPosition.mRepetition;
    mPosition.mSample = 0;
    if (!mFifo.empty()) {
        const std::string command = mFifo.front();
        mFifo.pop_front();
        const bool isOnce = command[0] == 's';
        const int number = std::stoi(command.substr(isOnce ? 1 : 0));
        mContinuous = isOnce ? mContinuous : number;
        mPosition = {number, 0, 0};
    } else if (mPosition.mRepetition >= current().mRepetitions) {
        mPosition = {mContinuous, 0, 0};
    } else {
        return;
    }
    if (isCommanded) {
        ++mPlaysEnded;
        mCommanded = 0;
    }
}

void SimulatedDesk::endProgram(run::Night& night, explain::Event program, const std::string& reason)
{
    mIsUp = false;
    mSent.clear();
    night.add(program, mNow);
    explain::Event over = event(explain::Event::Kind::RunEnd);
    over.mText = reason;
    over.mRemarks = mEndRemarks;
    night.add(over, mNow);
    night.programEnded("", 0, mNow);
}
