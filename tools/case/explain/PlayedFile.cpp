#include "explain/PlayedFile.h"

#include <algorithm>

#include "InputValues.h"
#include "LogText.h"
#include "PipeOrDevice.h"
#include "SampleStep.h"
#include "base/CaseError.h"
#include "waveform/ProgramMessages.h"

namespace explain {

namespace {
/** So few that their items stay in the CPU cache until they are copied. */
constexpr int kLinesAtOnce = 1024;
} // namespace

/** The program's reader, used for some lines at a time, so that the file is not held twice. */
class ValueLines : private InputValues
{
public:
    explicit ValueLines(const QString& path) : InputValues(typeid(ValueLines))
    {
        openFile(path);
        throwFirstError();
    }

    void readInto(PlayedFile* file)
    {
        while (parseLines(kLinesAtOnce) >= 0) {
            throwFirstError();
            resetIterator();
            while (const InputValueItem* const item = nextItem()) {
                file->append(contentOf(*item), item->mFrequency);
            }
            releaseItems();
        }
        throwFirstError();
    }

private:
    void throwFirstError() const
    {
        if (!mMessages.errors().empty()) {
            throw base::CaseError(mMessages.errors().front());
        }
    }

    waveform::ProgramMessages mMessages;
};

void PlayedFile::read(const QString& path)
{
    if (configuration::isPipeOrDevice(path)) {
        throw base::CaseError(local8Bit(path) + ": " + configuration::kExpectedRegularFile);
    }
    ValueLines(path).readInto(this);
    mSamples.finish();
}

void PlayedFile::append(const SampleContent& content, float frequency)
{
    if (mSamples.size() % kSamplesPerPeriod == 0) {
        const quint32 step = sampleStepOf(frequency);
        mSteps.push_back(isPlayableStep(step) ? step : 0);
        mHasAllSteps = mHasAllSteps && mSteps.back() > 0;
        mBlockBeginsNs.push_back(mBlockBeginsNs.back());
    }
    mBlockBeginsNs.back() += mSteps.back();
    mSamples.append(content);
}

qint64 PlayedFile::timeBefore(size_t sample) const
{
    if (sample == size()) {
        return mBlockBeginsNs.back();
    }
    const size_t block = sample / kSamplesPerPeriod;
    return mBlockBeginsNs[block] +
           static_cast<qint64>(sample % kSamplesPerPeriod) * static_cast<qint64>(mSteps[block]);
}

qint64 PlayedFile::longestStepNs() const
{
    return *std::max_element(mSteps.begin(), mSteps.end());
}

std::optional<size_t> PlayedFile::sampleAtTime(qint64 ns) const
{
    const auto end = std::lower_bound(mBlockBeginsNs.begin(), mBlockBeginsNs.end(), ns);
    if (ns <= 0 || end == mBlockBeginsNs.end()) {
        return std::nullopt;
    }
    const auto block = static_cast<size_t>(end - mBlockBeginsNs.begin()) - 1;
    const qint64 behindNs = ns - mBlockBeginsNs[block];
    if (behindNs % mSteps[block] != 0) {
        return std::nullopt;
    }
    return block * kSamplesPerPeriod + static_cast<size_t>(behindNs / mSteps[block]) - 1;
}

bool PlayedFile::hasOnlyStep(quint32 ns) const
{
    return std::all_of(mSteps.begin(), mSteps.end(), [ns](quint32 step) { return step == ns; });
}

bool PlayedFile::repeats(size_t first, size_t end, size_t stride) const
{
    for (size_t sample = first; sample < end; ++sample) {
        if (!isSame(sample, sample + stride)) {
            return false;
        }
    }
    return true;
}

} // namespace explain
