#include "check/CaseCheck.h"

#include <fmt/format.h>
#include <QFileInfo>
#include <algorithm>
#include <cstdlib>

#include "LogText.h"
#include "base/ProgressLine.h"

namespace check {

namespace {
/** A command takes effect at the end of the current case. Operators accept about this wait. */
constexpr double kMaxWaitSeconds = 5.0;

/** Rounding of two adjacent values to whole numbers. */
constexpr qint64 kRoundingOfValues = 1;

bool isPlayed(const configuration::CaseEntry& entry, const FileFacts& facts)
{
    return entry.mRepetitions > 0 && facts.mSamples > 0;
}
} // namespace

CaseCheck::CaseCheck(const QString& configuration) : mName(local8Bit(configuration))
{
    const bool isRead =
        mCases.read(configuration, configuration::CaseConfiguration::Rejected::Continue);
    const std::vector<std::string>& lineErrors = mCases.lineErrors();
    mErrors.insert(mErrors.end(), lineErrors.begin(), lineErrors.end());
    if (!isRead) {
        mErrors.push_back(mCases.fileError());
        return;
    }
    checkNumbers();
    const auto& numbers = mCases.configurations();
    base::ProgressLine progress("checking");
    int checked = 0;
    for (auto it = numbers.begin(); it != numbers.end(); ++it) {
        for (const configuration::CaseEntry& entry : it.value()) {
            checkEntry(entry);
        }
        checkSeams(it.value());
        describe(it.key(), it.value());
        progress.show(double(++checked) / double(numbers.size()));
    }
}

/** The simulator uses the numbers as indices from 0 on. */
void CaseCheck::checkNumbers()
{
    const auto& numbers = mCases.configurations();
    qint32 expected = 0;
    for (auto it = numbers.begin(); it != numbers.end(); ++it) {
        if (it.key() != expected) {
            mErrors.push_back(fmt::format(
                "{}: no configuration found. Number {} is missing: the numbers run from 0 on "
                "without a gap, and line {} gives {}",
                lineOf(it.value().first()), expected, it.value().first().mLineNumber, it.key()));
            expected = it.key();
        }
        ++expected;
    }
    if (!numbers.contains(mCases.continuousNumber())) {
        mErrors.push_back(fmt::format(
            "{}{}: configuration {} is played continuously from the start, and there is none",
            mName, mCases.continuousLine() == 0 ? "" : fmt::format(":{}", mCases.continuousLine()),
            mCases.continuousNumber()));
    }
}

void CaseCheck::checkEntry(const configuration::CaseEntry& entry)
{
    const bool isNew = mFacts.find(entry.mFileName) == mFacts.end();
    const FileFacts& facts = factsFor(entry);
    if (isNew || !facts.mIsThere) {
        checkFile(entry, facts);
    }
    if (isNew) {
        checkPlay(entry, facts);
    }
    if (entry.mRepetitions == 0) {
        mWarnings.push_back(lineOf(entry) + ": 0 repetitions, so it is never played");
    }
    mLoadedSamples += facts.mSamples;
}

void CaseCheck::checkFile(const configuration::CaseEntry& entry, const FileFacts& facts)
{
    const std::string file = local8Bit(entry.mFileName);
    if (!facts.mIsThere) {
        mErrors.push_back(fmt::format("{}: could not open file: {} ({})", lineOf(entry), file,
                                      fmt::join(facts.mErrors, "; ")));
        return;
    }
    mErrors.insert(mErrors.end(), facts.mErrors.begin(), facts.mErrors.end());
    const qint64 unlisted = facts.mErrorCount - static_cast<qint64>(facts.mErrors.size());
    if (unlisted > 0) {
        mUnlistedErrors += unlisted - 1;
        mErrors.push_back(fmt::format("{}: and {} more such lines, {} in all", file, unlisted,
                                      facts.mErrorCount));
    }
    if (facts.mUnplayable.mCount > 0) {
        mErrors.push_back(fmt::format(
            "{}:{}: frequency of {} Hz cannot be played (step of 0 ns or of a second and more)",
            file, lineOfSample(entry.mFileName, facts.mUnplayable.mFirst),
            local8Bit(QString::number(double(facts.mUnplayable.mFrequency)))));
    }
}

void CaseCheck::checkPlay(const configuration::CaseEntry& entry, const FileFacts& facts)
{
    const std::string file = local8Bit(entry.mFileName);
    if (facts.mInsideBlocks.mCount > 0) {
        mWarnings.push_back(fmt::format(
            "{}:{}: the frequency changes to {} Hz inside a block of {} samples, where it has no "
            "effect ({} samples of the file are so)",
            file, lineOfSample(entry.mFileName, facts.mInsideBlocks.mFirst),
            facts.mInsideBlocks.mFrequency, kSamplesPerPeriod, facts.mInsideBlocks.mCount));
    }
    if (facts.seconds() > kMaxWaitSeconds) {
        mWarnings.push_back(fmt::format("{}: plays for {:.1f} s, and a command waits until its end",
                                        file, facts.seconds()));
    }
}

/** The first entry follows the last one, and a repeated entry follows itself. */
void CaseCheck::checkSeams(const QList<configuration::CaseEntry>& entries)
{
    std::vector<const configuration::CaseEntry*> played;
    for (const configuration::CaseEntry& entry : entries) {
        if (isPlayed(entry, factsFor(entry))) {
            played.push_back(&entry);
        }
    }
    for (size_t i = 0; i < played.size(); ++i) {
        const configuration::CaseEntry& next = *played[(i + 1) % played.size()];
        if (played[i]->mRepetitions > 1 && &next != played[i]) {
            checkSeam(*played[i], *played[i]);
        }
        checkSeam(*played[i], next);
    }
}

void CaseCheck::checkSeam(const configuration::CaseEntry& from, const configuration::CaseEntry& to)
{
    const FileFacts& before = factsFor(from);
    const FileFacts& after = factsFor(to);
    for (size_t channel = 0; channel < before.mLast.size(); ++channel) {
        const qint64 jump = std::abs(after.mFirst[channel] - before.mLast[channel]);
        const qint64 usual = std::max(before.mLargestStep[channel], after.mLargestStep[channel]);
        if (jump > usual + kRoundingOfValues) {
            mWarnings.push_back(fmt::format(
                "{}: channel {} jumps by {} from the end of {} to the beginning of {}, and by "
                "at most {} inside them",
                lineOf(from), channel, jump, local8Bit(from.mFileName), local8Bit(to.mFileName),
                usual));
            return;
        }
    }
}

void CaseCheck::describe(qint32 number, const QList<configuration::CaseEntry>& entries)
{
    CheckedConfiguration result;
    result.mNumber = number;
    result.mEntries = entries.size();
    result.mIsContinuous = number == mCases.continuousNumber();
    bool allAreThere = true;
    for (const configuration::CaseEntry& entry : entries) {
        const FileFacts& facts = factsFor(entry);
        result.mFiles.push_back(local8Bit(entry.mFileName));
        allAreThere = allAreThere && facts.mIsThere;
        if (!isPlayed(entry, facts)) {
            continue;
        }
        const bool isFirst = result.mSamples == 0;
        result.mSamples += facts.mSamples * entry.mRepetitions;
        result.mSeconds += facts.seconds() * entry.mRepetitions;
        result.mLowestHz = isFirst ? facts.mLowestHz : std::min(result.mLowestHz, facts.mLowestHz);
        result.mHighestHz = std::max(result.mHighestHz, facts.mHighestHz);
    }
    if (result.mSamples == 0 && allAreThere) {
        mWarnings.push_back(
            fmt::format("{}: configuration {} has no samples to play", mName, number));
    }
    mConfigurations.push_back(result);
}

const FileFacts& CaseCheck::factsFor(const configuration::CaseEntry& entry)
{
    const auto known = mFacts.find(entry.mFileName);
    if (known != mFacts.end()) {
        return known->second;
    }
    return mFacts.emplace(entry.mFileName, factsOf(entry.mFileName)).first->second;
}

std::string CaseCheck::lineOf(const configuration::CaseEntry& entry) const
{
    return fmt::format("{}:{}", mName, entry.mLineNumber);
}

qint64 CaseCheck::errorCount() const
{
    return static_cast<qint64>(mErrors.size()) + mUnlistedErrors;
}

qint64 CaseCheck::bytesHere() const
{
    return mLoadedSamples * qint64{sizeof(InputValueItem)};
}

qint64 CaseCheck::bytesOn32Bits() const
{
    return check::bytesOn32Bits(mLoadedSamples);
}

} // namespace check
