#pragma once

#include <QString>
#include <optional>
#include <string>
#include <vector>

#include "explain/SampleStore.h"

namespace explain {

/** One value file as the driver gets it. Requires, for all but append(): at least one sample. */
class PlayedFile
{
public:
    /** @param name as the case configuration gives it */
    explicit PlayedFile(std::string name) : mName(std::move(name)) {}

    /**
     * Reads the file with the program's own classes.
     * @throws CaseError in the simulator's words for what it would not play
     */
    void read(const QString& path);

    const std::string& name() const { return mName; }
    const SampleStore& samples() const { return mSamples; }
    size_t size() const { return mSamples.size(); }

    /** ns from the sample before to this one; 0 if the file does not give it. */
    quint32 stepAt(size_t sample) const { return mSteps[sample / kSamplesPerPeriod]; }

    /**
     * ns from the sample before the first one to the sample before this one, which may be the end
     * of the file; meaningless unless hasAllSteps().
     */
    qint64 timeBefore(size_t sample) const;

    /** The sample right before the one whose timeBefore() is this; no value if there is none. */
    std::optional<size_t> sampleAtTime(qint64 ns) const;

    /** Duration of one pass in ns. */
    qint64 durationNs() const { return timeBefore(size()); }

    /** The longest step between two samples in ns. */
    qint64 longestStepNs() const;

    /**
     * False if a step depends on what was played before, because of a frequency that cannot be
     * played.
     */
    bool hasAllSteps() const { return mHasAllSteps; }

    /** Whether every sample has this step. */
    bool hasOnlyStep(quint32 ns) const;

    /** Whether both samples have the same content and the same step. */
    bool isSame(size_t left, size_t right) const
    {
        return stepAt(left) == stepAt(right) && mSamples[left] == mSamples[right];
    }

    /** Whether all samples from `first` up to `end` equal those one stride later. */
    bool repeats(size_t first, size_t end, size_t stride) const;

    /** Whether they play the same; the names may differ. */
    bool operator==(const PlayedFile& other) const
    {
        return mSteps == other.mSteps && mSamples == other.mSamples;
    }

private:
    friend class ValueLines;
    void append(const SampleContent& content, float frequency);

    std::string mName;
    SampleStore mSamples;
    std::vector<quint32> mSteps;           ///< ns, one a block
    std::vector<qint64> mBlockBeginsNs{0}; ///< one a block, and the end
    bool mHasAllSteps = true;
};

} // namespace explain
