#include "exporting/ExportedSignal.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "SampleRecord.h"
#include "SampleStep.h"
#include "base/CaseError.h"
#include "base/Numbers.h"
#include "input/OpenInput.h"

namespace exporting {

namespace {

/** Max number of rates that are written. If there are more, only the time stamps are written. */
constexpr size_t kMaxRates = 999;

/** Keeps the samples from begin up to end. */
void cut(waveform::SignalBlock* block, size_t begin, size_t end)
{
    const auto cutColumn = [=](std::vector<double>& column) {
        column.erase(column.begin() + static_cast<std::ptrdiff_t>(end), column.end());
        column.erase(column.begin(), column.begin() + static_cast<std::ptrdiff_t>(begin));
    };
    cutColumn(block->mSeconds);
    std::for_each(block->mValues.begin(), block->mValues.end(), cutColumn);
}

/** Finds sampling rates from the steps between samples. */
class RateFinder
{
public:
    void add(double seconds)
    {
        if (mSamples > 0) {
            addStep(std::llround((seconds - mLastSeconds) * base::kNanosecondsPerSecond));
        }
        mLastSeconds = seconds;
        ++mSamples;
    }

    qint64 firstStepNs() const { return mFirstStepNs; }

    std::vector<waveform::SampleRate> take()
    {
        if (mRates.empty() || mRates.size() > kMaxRates || mHasRepeated) {
            return {};
        }
        mRates.back().mEnd = mSamples;
        return std::move(mRates);
    }

private:
    /** The samples of a rate are those whose distance to the next sample is its step. */
    void addStep(qint64 stepNs)
    {
        mFirstStepNs = mSamples == 1 ? stepNs : mFirstStepNs;
        mHasRepeated = mHasRepeated || stepNs == 0;
        if (mHasRepeated || stepNs == mStepNs || mRates.size() > kMaxRates) {
            return;
        }
        mStepNs = stepNs;
        if (!mRates.empty()) {
            mRates.back().mEnd = mSamples - 1;
        }
        mRates.push_back({base::kNanosecondsPerSecond / static_cast<double>(stepNs), 0});
    }

    size_t mSamples = 0;
    double mLastSeconds = 0.0;
    qint64 mFirstStepNs = 0;
    qint64 mStepNs = 0;
    bool mHasRepeated = false; ///< a time stamp; a rate cannot express that
    std::vector<waveform::SampleRate> mRates;
};

/** The frequency of the input: exactly as given if it has the step of the samples, else rounded. */
double frequencyOf(const waveform::SignalDescription& description, qint64 stepNs)
{
    const auto nominal = static_cast<float>(description.mNominalHz);
    if (nominal > 0.0F && sampleStepOf(nominal) == stepNs) {
        return std::stod(fmt::format("{}", nominal));
    }
    const double hz =
        stepNs > 0 ? base::kNanosecondsPerSecond / kSamplesPerPeriod / static_cast<double>(stepNs)
                   : 0.0;
    return std::round(hz * 100.0) / 100.0;
}
} // namespace

ExportedSignal::ExportedSignal(const std::string& path, const ExportPart& part)
    : mSource(input::openInput(path, {})), mPart(part)
{
    const std::string& format = mSource->description().mFormat;
    if (format != "value file" && format != "recording of the driver") {
        throw base::CaseError(fmt::format(
            "{}: expected a value file or a recording of the driver, found {}", path, format));
    }
}

bool ExportedSignal::read(waveform::SignalBlock& block)
{
    while (mSource->read(block)) {
        mProgress.show(mSource->progress());
        const auto begin =
            std::lower_bound(block.mSeconds.begin(), block.mSeconds.end(), mPart.mFrom);
        const auto end = std::lower_bound(begin, block.mSeconds.end(), mPart.mTo);
        if (begin == end) {
            continue;
        }
        cut(&block, static_cast<size_t>(begin - block.mSeconds.begin()),
            static_cast<size_t>(end - block.mSeconds.begin()));
        mFirstSeconds = mSamples == 0 ? block.mSeconds.front() : mFirstSeconds;
        for (double& seconds : block.mSeconds) {
            seconds -= mFirstSeconds;
        }
        block.mFirst = mSamples;
        mSamples += block.size();
        return true;
    }
    return false;
}

ExportFacts ExportedSignal::readFacts()
{
    ExportFacts facts;
    RateFinder rates;
    waveform::SignalBlock block;
    while (read(block)) {
        for (const double seconds : block.mSeconds) {
            rates.add(seconds);
        }
        for (const std::vector<double>& column : block.mValues) {
            facts.mMissing += static_cast<size_t>(std::count(
                column.begin(), column.end(), double{std::numeric_limits<qint32>::min()}));
        }
        facts.mSeconds = block.mSeconds.back();
    }
    if (mSamples == 0) {
        throw base::CaseError(description().mFileName + ": no sample to export");
    }
    facts.mSamples = mSamples;
    facts.mSkippedSeconds = mFirstSeconds;
    facts.mFrequency = frequencyOf(description(), rates.firstStepNs());
    facts.mRates = rates.take();
    return facts;
}

} // namespace exporting
