#include "explain/Resynchronizer.h"

#include <algorithm>

#include "explain/GapSearch.h"

namespace explain {

namespace {
qint64 gapBefore(const RecordWindow& window, size_t offset)
{
    return waveform::stampNsOf(window[offset]) -
           waveform::stampNsOf(window[static_cast<std::ptrdiff_t>(offset) - 1]);
}

/** Whether the records from the offset on fit the tracker. The step before the first is ignored. */
bool continues(const RecordWindow& window, const PlaybackTracker& from, size_t offset)
{
    if (offset == window.ahead()) {
        return true;
    }
    if (!from.allows(contentOf(window[offset]), {})) {
        return false; // the most frequent case, which needs no copy
    }
    PlaybackTracker supposed = from;
    const std::vector<SampleContent> contents = window.proof(offset);
    std::optional<qint64> stepNs;
    for (size_t i = 0; i < contents.size(); ++i) {
        if (i > 0) {
            stepNs = gapBefore(window, offset + i);
        }
        const SampleContent* const next = i + 1 < contents.size() ? &contents[i + 1] : nullptr;
        if (!supposed.take(contents[i], stepNs, next)) {
            return false;
        }
    }
    return true;
}

/** Whether most records fit. Some may differ, but not both of the first two. */
bool mostlyContinues(const RecordWindow& window, PlaybackTracker supposed)
{
    const std::vector<SampleContent> contents = window.proof(0);
    size_t different = 0;
    std::optional<qint64> stepNs;
    for (size_t i = 0; i < contents.size(); ++i) {
        if (i > 0) {
            stepNs = gapBefore(window, i);
        }
        if (!supposed.keep(contents[i], stepNs)) {
            ++different;
        }
        if (different > kMaxDifferentInProof || (i == 1 && different > 1)) {
            return false;
        }
        supposed.advance(std::nullopt, i + 1 < contents.size() ? &contents[i + 1] : nullptr);
    }
    return 2 * different < contents.size();
}

/**
 * Whether the contents of the next records fit the likeliest hypothesis, whatever their time
 * stamps. False if they reach beyond the end of the file.
 */
bool contentContinues(const RecordWindow& window, const PlaybackTracker& expected)
{
    const std::vector<SampleContent> contents = window.proof(0);
    const PlayedFile& file = expected.likeliestFile();
    const size_t first = expected.likeliest().mSample;
    if (file.size() - first < contents.size()) {
        return false;
    }
    for (size_t i = 0; i < contents.size(); ++i) {
        if (file.samples()[first + i] != contents[i]) {
            return false;
        }
    }
    return true;
}

bool isSame(const SampleRecord& left, const SampleRecord& right)
{
    return left.mNanoseconds == right.mNanoseconds && std::memcmp(&left, &right, sizeof(left)) == 0;
}

/** The hypotheses at the next record for which the records from the offset on fit. */
PlaybackTracker leadingTo(const RecordWindow& window, PlaybackTracker expected, size_t offset)
{
    expected.keepIf([&](PlaybackTracker alone) {
        for (size_t i = 0; i < offset; ++i) {
            alone.advance();
        }
        return continues(window, alone, offset);
    });
    return expected;
}

/** Samples of the first block of the file, played so often that it takes this time; 0 if none. */
size_t samplesOfFirstBlocks(const PlayedFile& file, qint64 ns)
{
    if (!file.hasAllSteps()) {
        return 0;
    }
    const bool hasMore = file.size() > kSamplesPerPeriod;
    const size_t samples = hasMore ? size_t{kSamplesPerPeriod} : file.size();
    const qint64 blockNs = hasMore ? file.timeBefore(samples) : file.durationNs();
    return ns % blockNs == 0 ? static_cast<size_t>(ns / blockNs) * samples : 0;
}

/** Number of next records that repeat the records before them in the same order. */
size_t countRepeated(const RecordWindow& window)
{
    const auto ahead = static_cast<std::ptrdiff_t>(window.ahead());
    for (std::ptrdiff_t back = 1; back <= static_cast<std::ptrdiff_t>(window.back()); ++back) {
        std::ptrdiff_t count = 0;
        while (count < std::min(back, ahead) && isSame(window[count - back], window[count])) {
            ++count;
        }
        if (count > 0) {
            return static_cast<size_t>(count);
        }
    }
    return 0;
}
} // namespace

Repair Resynchronizer::repair(const RecordWindow& window, const PlaybackTracker& expected,
                              std::optional<qint64> lastStampNs, NextStep step) const
{
    if (lastStampNs && step != NextStep::Judged) {
        if (std::optional<Repair> found = repairByStamp(window, expected, *lastStampNs)) {
            return *std::move(found);
        }
    }
    return repairByContent(window, expected, lastStampNs, step);
}

std::optional<Repair> Resynchronizer::repairByStamp(const RecordWindow& window,
                                                    const PlaybackTracker& expected,
                                                    qint64 lastStampNs) const
{
    const qint64 gapNs = waveform::stampNsOf(window.next()) - lastStampNs;
    if (expected.allowsStep(gapNs)) {
        return std::nullopt;
    }
    if (gapNs <= 0) {
        if (const size_t twice = countRepeated(window); twice > 0) {
            return Repair{Repair::Kind::Twice, twice, twice, expected};
        }
    } else {
        const GapAnswer behind = searchAfterGap(expected, gapNs);
        const bool anyLost = !behind.mAfter.empty() && behind.mLost > 0;
        std::optional<Repair> brokenOff = missingWithinCase(window, expected, gapNs);
        if (anyLost && continues(window, behind.mAfter, 0)) {
            Repair found{Repair::Kind::Missing, 0, behind.mLost, behind.mAfter};
            if (brokenOff && brokenOff->mSamples == behind.mLost) {
                found.mAfter.alsoFollow(brokenOff->mAfter); // both may fit for a while
            }
            return found;
        }
        if (brokenOff) {
            return brokenOff;
        }
        if (anyLost && mostlyContinues(window, behind.mAfter)) {
            return Repair{Repair::Kind::Missing, 0, behind.mLost, behind.mAfter};
        }
    }
    // If all samples have the same step, no other position explains the time better.
    const bool isTimeAlone = mPlan.hasOneStep() && contentContinues(window, expected);
    if (isTimeAlone || continues(window, expected, 0) || mostlyContinues(window, expected)) {
        return Repair{Repair::Kind::TimeJump, 0, 0, expected};
    }
    return std::nullopt;
}

/** Handles blocks that the driver refused: with each, its case ends, and playing starts again. */
std::optional<Repair> Resynchronizer::missingWithinCase(const RecordWindow& window,
                                                        const PlaybackTracker& expected,
                                                        qint64 gapNs) const
{
    const Hypothesis& before = expected.likeliest();
    const PlayedFile& file = expected.likeliestFile();
    const qint64 lostStepNs = expected.nextStep();
    PlaybackTracker after = expected.restarted(contentOf(window.next()));
    if (lostStepNs == 0 || !continues(window, after, 0)) {
        return std::nullopt;
    }
    after.keep(contentOf(window.next()), std::nullopt);
    const qint64 lostNs = gapNs - after.nextStep();
    const size_t max = std::min<size_t>(kSamplesPerPeriod - before.mSample % kSamplesPerPeriod,
                                        file.size() - before.mSample);
    const qint64 othersNs = lostNs - static_cast<qint64>(max) * lostStepNs;
    if (othersNs > 0) {
        const size_t others = samplesOfFirstBlocks(after.likeliestFile(), othersNs);
        return others > 0 ? std::optional(Repair{Repair::Kind::Missing, 0, max + others, after})
                          : std::nullopt;
    }
    if (lostNs <= 0 || lostNs % lostStepNs != 0) {
        return std::nullopt;
    }
    return Repair{Repair::Kind::Missing, 0, static_cast<size_t>(lostNs / lostStepNs), after};
}

Repair Resynchronizer::repairByContent(const RecordWindow& window, const PlaybackTracker& expected,
                                       std::optional<qint64> lastStampNs, NextStep step) const
{
    const size_t ahead = window.ahead();
    std::optional<qint64> gapNs;
    if (lastStampNs && step == NextStep::Known) {
        gapNs = waveform::stampNsOf(window.next()) - *lastStampNs;
    }
    const PlaybackTracker found = elsewhere(window, expected, 0);
    PlaybackTracker blind = expected;
    for (size_t different = 1; different <= ahead; ++different) {
        blind.advance();
        const bool fits = different < ahead || different <= kSamplesPerPeriod;
        if (fits && continues(window, blind, different)) {
            const bool isLikelier =
                found.empty() || (different <= kMaxDifferentInRow && lastStampNs);
            if (isLikelier) {
                return {Repair::Kind::Differs, different, different,
                        leadingTo(window, expected, different)};
            }
        }
        if (!found.empty() && different > kMaxDifferentInRow) {
            break;
        }
        if (found.empty() && different < ahead && !elsewhere(window, expected, different).empty()) {
            return {Repair::Kind::Foreign, different, different, expected};
        }
    }
    if (!found.empty()) {
        return movedTo(found, expected, gapNs);
    }
    return {Repair::Kind::Foreign, ahead, ahead, expected};
}

/** All positions in the files that fit the records from the offset on; may be empty. */
PlaybackTracker Resynchronizer::elsewhere(const RecordWindow& window,
                                          const PlaybackTracker& expected, size_t offset) const
{
    PlaybackTracker found = expected.movedTo(mSearch.find(window.proof(offset)));
    if (!found.empty() && !continues(window, found, offset)) {
        return expected.movedTo({});
    }
    return found;
}

Repair Resynchronizer::movedTo(const PlaybackTracker& found, const PlaybackTracker& expected,
                               std::optional<qint64> gapNs) const
{
    const qint64 stepNs = expected.nextStep();
    if (gapNs && stepNs > 0 && *gapNs > stepNs) {
        return {Repair::Kind::Missing, 0, static_cast<size_t>(*gapNs / stepNs) - 1, found};
    }
    return {Repair::Kind::Elsewhere, 0, 0, found};
}

} // namespace explain
