#include "waveform/ValueFileSource.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>

#include "InputValues.h"
#include "SampleStep.h"
#include "base/CaseError.h"
#include "base/Numbers.h"
#include "base/Text.h"
#include "waveform/DeviceChannels.h"
#include "waveform/ImportMark.h"
#include "waveform/ProgramMessages.h"

namespace waveform {

namespace {
constexpr int kBlockLines = 4096;
constexpr int kEndOfFile = -2;
constexpr size_t kFields = 13;
constexpr size_t kAuxiliaryField = 2; ///< counted from 0; it may be empty

bool beginsAsNumber(std::string_view text)
{
    text = base::trimmed(text);
    const size_t sign = !text.empty() && (text[0] == '-' || text[0] == '+') ? 1 : 0;
    return text.size() > sign && std::isdigit(static_cast<unsigned char>(text[sign])) != 0;
}

/** What else is wrong the program's reader says better; a heading is the one of a text file. */
std::string whyNoValueLine(std::string_view line)
{
    const auto fields = base::splitText(line, ';');
    if (fields.size() != kFields) {
        return fmt::format("its first line has {} instead of {} fields between \";\"",
                           fields.size(), kFields);
    }
    const std::string_view field = base::trimmed(fields[kAuxiliaryField]);
    if (!field.empty() && !beginsAsNumber(field)) {
        return fmt::format("field 3 of its first line, \"{}\", is no whole number",
                           field.substr(0, base::kLongestExcerpt));
    }
    return {};
}
} // namespace

/** The program's reader, some lines at a time. */
class ValueFileSource::Lines : public InputValues
{
public:
    explicit Lines(const std::string& path) : InputValues(typeid(Lines))
    {
        const ProgramMessages messages;
        if (!openFile(QString::fromStdString(path))) {
            throw base::CaseError(messages.errors().empty() ? path + ": cannot be opened"
                                                            : messages.errors().front());
        }
    }

    /** Reads until there are items, which nextItem() gives; false at the end of the file. */
    bool readSome()
    {
        releaseItems();
        resetIterator();
        const ProgramMessages messages;
        mNext = nullptr;
        int lines = 0;
        while (mNext == nullptr && (lines = parseLines(kBlockLines)) != kEndOfFile) {
            if (!messages.errors().empty()) {
                throw base::CaseError(messages.errors().front());
            }
            if (lines < 0) {
                throw base::CaseError(fileName().toStdString() + ": was removed while it was read");
            }
            resetIterator();
            mNext = nextItem();
        }
        return mNext != nullptr;
    }

    /** The next of the items; null behind the last. */
    const InputValueItem* take()
    {
        const InputValueItem* const item = mNext;
        mNext = nextItem();
        return item;
    }

    double progress() const
    {
        const qint64 size = mFile->size();
        const auto read = static_cast<double>(lseek(mFile->handle(), 0, SEEK_CUR));
        return size == 0 ? 1.0 : std::min(1.0, read / static_cast<double>(size));
    }

private:
    InputValueItem* mNext = nullptr;
};

ValueFileSource::ValueFileSource(const std::string& path)
    : mLines(std::make_unique<Lines>(path)), mStep(sampleStepOf(kDefaultFrequencyHz))
{
    mDescription.mFileName = path;
    mDescription.mFormat = "value file";
    mDescription.mImport = readImportMark(path);
    mDescription.mChannels = deviceChannels();
}

ValueFileSource::~ValueFileSource() = default;

bool ValueFileSource::read(SignalBlock& block)
{
    block.mFirst = mSamples;
    block.mFrequency.resize(kBlockLines);
    block.resize(kChannelCount, kBlockLines);
    size_t count = 0;
    if (mLines->readSome()) {
        while (const InputValueItem* const item = mLines->take()) {
            block.mSeconds[count] = stamp(item->mFrequency);
            block.mFrequency[count] = static_cast<double>(item->mFrequency);
            putValues(item->mValues, count, &block);
            ++count;
        }
    }
    block.mFrequency.resize(count);
    block.resize(kChannelCount, count);
    return count > 0;
}

/** Time of the next sample in seconds, as the sample writer stamps it. */
double ValueFileSource::stamp(float frequency)
{
    if (mSamples % kSamplesPerPeriod == 0) {
        const quint32 step = sampleStepOf(frequency);
        mStep = isPlayableStep(step) ? step : mStep;
        mDescription.mNominalHz =
            mSamples == 0 ? static_cast<double>(frequency) : mDescription.mNominalHz;
    }
    mNanoseconds += mSamples == 0 ? 0 : mStep;
    ++mSamples;
    return static_cast<double>(mNanoseconds) * base::kSecondsPerNanosecond;
}

double ValueFileSource::progress() const
{
    return mLines->progress();
}

std::string whyNoValueFile(base::InputFile& file)
{
    file.setPart(0, file.size());
    std::string_view line;
    while (file.takeLine(&line)) {
        line = base::trimmed(line.substr(0, line.find('#')));
        if (!line.empty()) {
            return whyNoValueLine(line);
        }
    }
    return "it has no line of data";
}

} // namespace waveform
