#include "waveform/ValueFileSource.h"

#include <fmt/format.h>
#include <cctype>

#include "SampleStep.h"
#include "base/CaseError.h"
#include "base/Numbers.h"
#include "base/Text.h"
#include "waveform/DeviceChannels.h"
#include "waveform/ImportMark.h"

namespace waveform {

namespace {
constexpr size_t kFields = 13;
constexpr size_t kAuxiliaryField = 2; ///< counted from 0; it may be empty

bool beginsAsNumber(std::string_view text)
{
    text = base::trimmed(text);
    const size_t sign = !text.empty() && (text[0] == '-' || text[0] == '+') ? 1 : 0;
    return text.size() > sign && std::isdigit(static_cast<unsigned char>(text[sign])) != 0;
}

/** Checks only what distinguishes other kinds of file; the program's reader reports the rest. */
std::string reasonNotValueLine(std::string_view line)
{
    const auto fields = base::splitText(line, ';');
    if (fields.size() != kFields) {
        return fmt::format("its first line has {} instead of {} fields between \";\"",
                           fields.size(), kFields);
    }
    const std::string_view field = base::trimmed(fields[kAuxiliaryField]);
    if (!field.empty() && !beginsAsNumber(field)) {
        return fmt::format("field 3 of its first line, \"{}\", is not an integer",
                           field.substr(0, base::kLongestExcerpt));
    }
    return {};
}
} // namespace

ValueFileSource::ValueFileSource(const std::string& path) : mStep(sampleStepOf(kDefaultFrequencyHz))
{
    if (!mLines.open(QString::fromStdString(path))) {
        throw base::CaseError(mLines.errors().front());
    }
    mDescription.mFileName = path;
    mDescription.mFormat = "value file";
    mDescription.mImport = readImportMark(path);
    mDescription.mChannels = deviceChannels();
}

bool ValueFileSource::read(SignalBlock& block)
{
    block.mFirst = mSamples;
    block.mFrequency.resize(ValueLines::kMaxLines);
    block.resize(kChannelCount, ValueLines::kMaxLines);
    size_t count = 0;
    bool isMore = true;
    while (count == 0 && isMore) { // lines may have no sample
        isMore = mLines.readSome();
        if (!mLines.errors().empty()) {
            throw base::CaseError(mLines.errors().front());
        }
        while (const InputValueItem* const item = mLines.take()) {
            block.mSeconds[count] = nextTime(item->mFrequency);
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
double ValueFileSource::nextTime(float frequency)
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

std::string reasonNotValueFile(base::InputFile& file)
{
    file.setPart(0, file.size());
    std::string_view line;
    while (file.takeLine(&line)) {
        line = base::trimmed(line.substr(0, line.find('#')));
        if (!line.empty()) {
            return reasonNotValueLine(line);
        }
    }
    return "it has no line of data";
}

} // namespace waveform
