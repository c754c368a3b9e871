#include "check/FileFacts.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "PipeOrDevice.h"
#include "SampleStep.h"
#include "base/Numbers.h"
#include "waveform/ProgramMessages.h"

namespace check {

namespace {
/** Read between two looks at the messages, so that a file of errors alone costs no memory. */
constexpr int kLinesAtOnce = 1000;

void takeMessages(const waveform::ProgramMessages& messages, FileFacts* facts)
{
    for (const std::string& message : messages.errors()) {
        ++facts->mErrorCount;
        if (facts->mErrors.size() < FileFacts::kMaxErrors) {
            facts->mErrors.push_back(message);
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

/** What is no number is the same as another such. */
bool isSame(float frequency, float other)
{
    return frequency == other || (std::isnan(frequency) && std::isnan(other));
}

/** Goes through the samples in their order, as the sample writer does. */
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
        mFacts.mSeconds += static_cast<double>(mStep) * base::kSecondsPerNanosecond;
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

/** The program's reader, some lines at a time. */
class Reading : public InputValues
{
public:
    explicit Reading(FileFacts* facts) : InputValues(typeid(Reading)), mFacts(*facts) {}

    void open(const QString& name)
    {
        if (configuration::isPipeOrDevice(name)) {
            mFacts.mIsThere = false;
            mFacts.mErrorCount = 1;
            mFacts.mErrors = {configuration::kExpectedRegularFile};
            return;
        }
        const waveform::ProgramMessages messages;
        mFacts.mIsThere = openFile(name);
        takeMessages(messages, &mFacts);
    }

    /** False at the end of the file. */
    bool readSome(SampleWalk* walk)
    {
        releaseItems();
        const waveform::ProgramMessages messages;
        const bool isAtEnd = parseLines(kLinesAtOnce) < 0;
        takeMessages(messages, &mFacts);
        resetIterator();
        while (const InputValueItem* const item = nextItem()) {
            walk->take(*item);
        }
        return !isAtEnd;
    }

private:
    FileFacts& mFacts;
};

/** Remembers the line of one sample; sees every line because it handles them itself. */
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

FileFacts factsOf(const QString& fileName)
{
    FileFacts facts;
    Reading reading(&facts);
    reading.open(fileName);
    SampleWalk walk(&facts);
    while (facts.mIsThere && reading.readSome(&walk)) {
    }
    return facts;
}

quint32 lineOfSample(const QString& fileName, qint64 sample)
{
    const waveform::ProgramMessages unheard;
    LineFinder finder(sample);
    if (finder.openFile(fileName)) {
        finder.parseLines(-1);
    }
    return finder.line();
}

} // namespace check
