#include "explain/Resynchronizer.h"

#include <algorithm>

namespace explain {

namespace {
/** So many records in a row must fit before play is taken to go on there. */
constexpr size_t kProof = 16;

/** Of them so many may differ, where the time stamps tell what happened. */
constexpr size_t kMayDiffer = 4;

/** So many that differ in a row are taken for errors before another place is looked for. */
constexpr size_t kFewDifferent = 8;

qint64 gapBefore(const RecordWindow& window, std::ptrdiff_t offset)
{
    return waveform::stampNsOf(window[offset]) - waveform::stampNsOf(window[offset - 1]);
}

/** Whether the records from the offset on go on as is supposed, the first one's step aside. */
bool goesOn(RecordWindow& window, const Hypotheses& from, size_t offset)
{
    const bool begins = offset == window.ahead() ||
                        from.allow(contentOf(window[static_cast<std::ptrdiff_t>(offset)]), {});
    if (!begins) {
        return false; // mostly so, and needs no copy
    }
    Hypotheses supposed = from;
    const size_t end = std::min(window.ahead(), offset + kProof);
    for (size_t at = offset; at < end; ++at) {
        const auto place = static_cast<std::ptrdiff_t>(at);
        const auto stepNs =
            at == offset ? std::nullopt : std::optional<qint64>(gapBefore(window, place));
        if (!supposed.take(contentOf(window[place]), stepNs)) {
            return false;
        }
    }
    return true;
}

/** Whether they mostly do: some may differ, but not the first and its successor's step. */
bool mostlyGoesOn(RecordWindow& window, Hypotheses supposed)
{
    const size_t end = std::min(window.ahead(), kProof);
    size_t different = 0;
    std::optional<qint64> stepNs;
    for (size_t at = 0; at < end; ++at) {
        const auto place = static_cast<std::ptrdiff_t>(at);
        if (at > 0) {
            stepNs = gapBefore(window, place);
        }
        if (!supposed.keep(contentOf(window[place]), stepNs)) {
            ++different;
        }
        if (different > kMayDiffer || (at == 1 && different > 1)) {
            return false;
        }
        supposed.advance();
    }
    return 2 * different < end;
}

bool isSame(const SampleRecord& left, const SampleRecord& right)
{
    return left.mNanoseconds == right.mNanoseconds && std::memcmp(&left, &right, sizeof(left)) == 0;
}

/** Those that may be at the next record when the records from the offset on fit. */
Hypotheses leadingTo(RecordWindow& window, Hypotheses expected, size_t offset)
{
    expected.keepIf([&](Hypotheses alone) {
        for (size_t i = 0; i < offset; ++i) {
            alone.advance();
        }
        return goesOn(window, alone, offset);
    });
    return expected;
}

/** How many records from the next on are those that arrived before, in the same order. */
size_t countTwice(RecordWindow& window)
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

Repair Resynchronizer::repair(RecordWindow& window, const Hypotheses& expected,
                              std::optional<qint64> lastStampNs, NextStep step) const
{
    if (lastStampNs && step != NextStep::Judged) {
        if (std::optional<Repair> found = repairByStamp(window, expected, *lastStampNs)) {
            return *std::move(found);
        }
    }
    return repairByContent(window, expected, lastStampNs, step);
}

std::optional<Repair> Resynchronizer::repairByStamp(RecordWindow& window,
                                                    const Hypotheses& expected,
                                                    qint64 lastStampNs) const
{
    const qint64 gapNs = waveform::stampNsOf(window[0]) - lastStampNs;
    if (expected.allowStep(gapNs)) {
        return std::nullopt;
    }
    if (gapNs <= 0) {
        if (const size_t twice = countTwice(window); twice > 0) {
            return Repair{Repair::Kind::Twice, twice, twice, expected};
        }
    } else {
        Hypotheses after = expected;
        const size_t lost = after.skipTime(gapNs);
        if (!after.empty() && lost > 0 && goesOn(window, after, 0)) {
            return Repair{Repair::Kind::Missing, 0, lost, after};
        }
        if (std::optional<Repair> found = missingWithinCase(window, expected, gapNs)) {
            return found;
        }
        if (!after.empty() && lost > 0 && mostlyGoesOn(window, after)) {
            return Repair{Repair::Kind::Missing, 0, lost, after};
        }
    }
    if (goesOn(window, expected, 0) || mostlyGoesOn(window, expected)) {
        return Repair{Repair::Kind::TimeJump, 0, 0, expected};
    }
    return std::nullopt;
}

/** A block that the driver refused: its case ends, and play begins anew. */
std::optional<Repair> Resynchronizer::missingWithinCase(RecordWindow& window,
                                                        const Hypotheses& expected,
                                                        qint64 gapNs) const
{
    const Hypothesis& before = expected.likeliest();
    const PlayedFile& file = expected.likeliestFile();
    const qint64 lostStepNs = expected.nextStep();
    Hypotheses after = expected.restarted();
    if (lostStepNs == 0 || !goesOn(window, after, 0)) {
        return std::nullopt;
    }
    after.keep(contentOf(window[0]), std::nullopt);
    const qint64 lostNs = gapNs - after.nextStep();
    const size_t most = std::min<size_t>(kSamplesPerPeriod - before.mSample % kSamplesPerPeriod,
                                         file.mSamples.size() - before.mSample);
    const bool isWhole = lostNs > 0 && lostNs % lostStepNs == 0;
    if (!isWhole || static_cast<size_t>(lostNs / lostStepNs) > most) {
        return std::nullopt;
    }
    return Repair{Repair::Kind::Missing, 0, static_cast<size_t>(lostNs / lostStepNs), after};
}

Repair Resynchronizer::repairByContent(RecordWindow& window, const Hypotheses& expected,
                                       std::optional<qint64> lastStampNs, NextStep step) const
{
    const size_t ahead = window.ahead();
    std::optional<qint64> gapNs;
    if (lastStampNs && step == NextStep::Known) {
        gapNs = waveform::stampNsOf(window[0]) - *lastStampNs;
    }
    const Hypotheses found = elsewhere(window, expected, 0);
    Hypotheses blind = expected;
    for (size_t different = 1; different <= ahead; ++different) {
        blind.advance();
        const bool fits = different < ahead || different <= kSamplesPerPeriod;
        if (fits && goesOn(window, blind, different)) {
            const bool isLikelier = found.empty() || (different <= kFewDifferent && lastStampNs);
            if (isLikelier) {
                return {Repair::Kind::Differs, different, different,
                        leadingTo(window, expected, different)};
            }
        }
        if (!found.empty() && different > kFewDifferent) {
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

/** Every place where the records from the offset on stand in the files; may be empty. */
Hypotheses Resynchronizer::elsewhere(RecordWindow& window, const Hypotheses& expected,
                                     size_t offset) const
{
    const size_t proof = std::min(kProof, window.ahead() - offset);
    std::vector<Place> places;
    for (const Place& place :
         mPlan.placesOf(contentOf(window[static_cast<std::ptrdiff_t>(offset)]))) {
        const auto& samples = mPlan.files()[place.mFile].mSamples;
        const size_t count = std::min(proof, samples.size() - place.mSample);
        size_t same = 1;
        while (same < count && contentOf(window[static_cast<std::ptrdiff_t>(offset + same)]) ==
                                   samples[place.mSample + same]) {
            ++same;
        }
        if (same == count) {
            places.push_back(place);
        }
    }
    Hypotheses found = expected.movedTo(places);
    if (!found.empty() && !goesOn(window, found, offset)) {
        return expected.movedTo({});
    }
    return found;
}

Repair Resynchronizer::movedTo(const Hypotheses& found, const Hypotheses& expected,
                               std::optional<qint64> gapNs) const
{
    const qint64 stepNs = expected.nextStep();
    if (gapNs && stepNs > 0 && *gapNs > stepNs) {
        return {Repair::Kind::Missing, 0, static_cast<size_t>(*gapNs / stepNs) - 1, found};
    }
    return {Repair::Kind::Elsewhere, 0, 0, found};
}

} // namespace explain
