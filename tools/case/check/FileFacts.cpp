#include "check/FileFacts.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "SampleStep.h"
#include "waveform/ProgramMessages.h"
#include "waveform/ValueLines.h"

namespace check {

namespace {
/** An item on the 32-bit device: pointer to the virtual table, record, frequency. */
constexpr qint64 kItemBytesOn32Bits = 4 + qint64{sizeof(SampleRecord)} + 4;

void addErrors(const std::vector<std::string>& errors, FileFacts* facts)
{
    for (const std::string& error : errors) {
        ++facts->mErrorCount;
        if (facts->mErrors.size() < FileFacts::kMaxErrors) {
            facts->mErrors.push_back(error);
        }
    }
}

void add(FileFacts::Finding* finding, qint64 sample, float frequency)
{
    if (finding->mCount++ == 0) {
        finding->mFirst = sample;
        finding->mFrequency = frequency;
    }
}

/** Treats NaN as equal to NaN. */
bool isSame(float frequency, float other)
{
    return frequency == other || (std::isnan(frequency) && std::isnan(other));
}

/** Collects the facts sample by sample, with the blocks that the sample writer forms. */
class SampleWalk
{
public:
    explicit SampleWalk(FileFacts* facts) : mFacts(*facts) {}

    void take(const InputValueItem& item)
    {
        if (mFacts.mSamples % kSamplesPerPeriod == 0) {
            beginBlock(item.mFrequency);
        } else if (!isSame(item.mFrequency, mBlockFrequency)) {
            add(&mFacts.mInsideBlocks, mFacts.mSamples, item.mFrequency);
        }
        mFacts.mNanoseconds += mStep;
        takeValues(item);
        ++mFacts.mSamples;
    }

private:
    void beginBlock(float frequency)
    {
        mBlockFrequency = frequency;
        if (!isPlayableStep(sampleStepOf(frequency))) {
            add(&mFacts.mUnplayable, mFacts.mSamples, frequency);
            return;
        }
        mStep = sampleStepOf(frequency);
        const bool isFirst = mFacts.mHighestHz == 0;
        mFacts.mLowestHz = isFirst ? frequency : std::min(mFacts.mLowestHz, frequency);
        mFacts.mHighestHz = std::max(mFacts.mHighestHz, frequency);
    }

    void takeValues(const InputValueItem& item)
    {
        for (size_t channel = 0; channel < mFacts.mLast.size(); ++channel) {
            const qint64 value = item.mValues[channel];
            if (mFacts.mSamples == 0) {
                mFacts.mFirst[channel] = value;
            } else {
                qint64& largest = mFacts.mLargestStep[channel];
                largest = std::max(largest, std::abs(value - mFacts.mLast[channel]));
            }
            mFacts.mLast[channel] = value;
        }
    }

    FileFacts& mFacts;
    float mBlockFrequency = 0;
    quint32 mStep = sampleStepOf(kDefaultFrequencyHz);
};

/** Finds the line of one sample. It overrides parseLine(), so that it sees every line. */
class LineFinder : public InputValues
{
public:
    explicit LineFinder(qint64 sample) : mLeft(sample) {}

    bool parseLine(QString line) override
    {
        releaseItems();
        if (mLine == 0 && InputValues::parseLine(line) && mLeft-- == 0) {
            mLine = mLineNumber;
        }
        return true;
    }

    quint32 line() const { return mLine; }

private:
    qint64 mLeft;
    quint32 mLine = 0;
};
} // namespace

qint64 bytesOn32Bits(qint64 samples)
{
    return samples * kItemBytesOn32Bits;
}

FileFacts factsOf(const QString& fileName)
{
    FileFacts facts;
    waveform::ValueLines lines;
    facts.mIsThere = lines.open(fileName);
    addErrors(lines.errors(), &facts);
    SampleWalk walk(&facts);
    for (bool isMore = facts.mIsThere; isMore;) {
        isMore = lines.readSome();
        addErrors(lines.errors(), &facts);
        while (const InputValueItem* const item = lines.take()) {
            walk.take(*item);
        }
    }
    return facts;
}

quint32 lineOfSample(const QString& fileName, qint64 sample)
{
    const waveform::ProgramMessages ignored; // they have been reported already
    LineFinder finder(sample);
    if (finder.openFile(fileName)) {
        finder.parseLines(-1);
    }
    return finder.line();
}

} // namespace check
