#include "textfile/TextFileSource.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <utility>

#include "base/CaseError.h"
#include "base/Numbers.h"
#include "base/Text.h"
#include "base/TextEncoding.h"
#include "waveform/MissingValues.h"

namespace textfile {

namespace {
constexpr size_t kProbedLines = 50;
constexpr size_t kBlockValues = 32768;
constexpr size_t kMaxBlockSamples = 4096;
constexpr double kMaxTime = 1e15; ///< in any unit

/** The first lines that are not empty, unchanged. */
std::string firstLines(base::InputFile& file)
{
    file.setPart(0, file.size());
    std::string text;
    std::string_view line;
    for (size_t count = 0; count < kProbedLines && file.takeLine(&line);) {
        if (!base::trimmed(line).empty()) {
            text.append(line).append("\n");
            ++count;
        }
    }
    return text;
}

std::vector<std::string> linesOf(const std::string& text)
{
    std::vector<std::string> lines;
    size_t begin = 0;
    for (size_t end = text.find('\n'); end != std::string::npos; end = text.find('\n', begin)) {
        lines.push_back(text.substr(begin, end - begin));
        begin = end + 1;
    }
    return lines;
}
} // namespace

TextFileSource::TextFileSource(const std::string& path, const std::string& encoding) : mFile(path)
{
    const base::DecodedText text = base::decodeText(firstLines(mFile), encoding);
    std::string reason;
    const auto layout = findTextLayout(linesOf(text.mText), &reason);
    if (!layout) {
        throw base::CaseError(path + ": " + reason);
    }
    mLayout = *layout;
    mLastValues.resize(mLayout.mColumns.size());
    mGroups.emplace(mLayout.mDecimalSign, mLayout.mColumns.size() + 1);
    mDescription.mFileName = path;
    mDescription.mFormat = fmt::format("text file, decimal sign '{}'", mLayout.mDecimalSign);
    for (const TextLayout::Column& column : mLayout.mColumns) {
        waveform::ChannelDescription channel;
        channel.mNumber = static_cast<int>(mDescription.mChannels.size()) + 1;
        channel.mName = column.mName;
        channel.mUnit = column.mUnit;
        channel.mPrimary = 0.0;
        mDescription.mChannels.push_back(channel);
    }
    if (text.mIsGuessed) {
        mDescription.mRemarks.emplace_back(base::kGuessedEncoding);
    }
    if (!mLayout.mHasTimeUnit) {
        mDescription.mRemarks.push_back(
            fmt::format("the time column \"{}\" has no unit: s is assumed", mLayout.mTimeName));
    }
    mFile.setPart(0, mFile.size());
    std::string_view heading;
    for (size_t i = 0; i < mLayout.mHeadingLines; ++i) {
        takeRow(&heading);
    }
}

bool TextFileSource::read(waveform::SignalBlock& block)
{
    const size_t maxCount =
        std::clamp<size_t>(kBlockValues / mLastValues.size(), 1, kMaxBlockSamples);
    block.mFirst = mSamples;
    block.mFrequency.clear();
    block.resize(mLastValues.size(), maxCount);
    size_t count = 0;
    std::string_view line;
    while (count < maxCount && takeRow(&line)) {
        readRow(line, count, &block);
        ++count;
    }
    block.resize(mLastValues.size(), count);
    mSamples += count;
    if (count == 0 && !mIsFinished) {
        finish();
    }
    return count > 0;
}

/** Takes the next line that is not empty; false at the end. */
bool TextFileSource::takeRow(std::string_view* line)
{
    while (mFile.takeLine(line)) {
        ++mLine;
        *line = line->substr(0, line->find('\x1a'));
        if (!base::trimmed(*line).empty()) {
            return true;
        }
    }
    return false;
}

void TextFileSource::readRow(std::string_view line, size_t index, waveform::SignalBlock* block)
{
    const auto fields = textFields(line, mLayout.mSeparator);
    if (fields.size() != mLastValues.size() + 1) {
        fail(fmt::format("{} fields, found {}", mLastValues.size() + 1, fields.size()));
    }
    const std::string_view time = fields[mLayout.mTimeColumn];
    double number = 0.0;
    if (!parseTextNumber(time, mLayout.mDecimalSign, &number) || std::abs(number) > kMaxTime) {
        fail(fmt::format("a time in field {}, found \"{}\"", mLayout.mTimeColumn + 1,
                         time.substr(0, base::kLongestExcerpt)));
    }
    mGroups->add(time, mLayout.mTimeColumn, mLine);
    block->mSeconds[index] = mTime.next(number) * mLayout.mTimeSeconds;
    for (size_t i = 0; i < mLastValues.size(); ++i) {
        const size_t column = i < mLayout.mTimeColumn ? i : i + 1;
        const std::string_view field = fields[column];
        if (!field.empty()) {
            readNumber(field, column, &mLastValues[i]);
        } else if (mDescription.mChannels[i].mMissing++ == 0) {
            mDescription.mChannels[i].mFirstMissing = block->mSeconds[index];
            mDescription.mChannels[i].mBeginsMissing = block->mFirst + index == 0;
        }
        block->mValues[i][index] = mLastValues[i];
    }
}

void TextFileSource::readNumber(std::string_view field, size_t column, double* number)
{
    if (!parseTextNumber(field, mLayout.mDecimalSign, number)) {
        fail(fmt::format("a number in field {}, found \"{}\"", column + 1,
                         field.substr(0, base::kLongestExcerpt)));
    }
    mGroups->add(field, column, mLine);
}

void TextFileSource::finish()
{
    mIsFinished = true;
    refuseGroups();
    if (!mTime.isTime()) {
        throw base::CaseError(
            fmt::format("{}: its time column \"{}\" falls repeatedly: expected a time that "
                        "rises",
                        mFile.name(), mLayout.mTimeName));
    }
    for (const std::string& remark : mTime.remarks()) {
        mDescription.mRemarks.push_back(remark);
    }
    base::Remarks remarks;
    waveform::remarkOnMissing(mDescription.mChannels, &remarks);
    for (std::string& remark : remarks.take()) {
        mDescription.mRemarks.push_back(std::move(remark));
    }
}

/** Refuses digit groups: their separator cannot always be distinguished from a decimal sign. */
void TextFileSource::refuseGroups() const
{
    const std::optional<DigitGroups::Field> field = mGroups->firstGrouped();
    if (field) {
        throw base::CaseError(fmt::format(
            "{}:{}: \"{}\" in field {}: the '{}' seems to separate thousands, as it always has "
            "three digits after it; write the numbers without it, or all with the same number of "
            "decimals",
            mFile.name(), field->mLine, field->mText, field->mColumn + 1, mLayout.mDecimalSign));
    }
}

void TextFileSource::fail(const std::string& expected) const
{
    throw base::CaseError(fmt::format("{}:{}: expected {}", mFile.name(), mLine, expected));
}

std::string reasonNotTextFile(base::InputFile& file)
{
    std::string reason;
    findTextLayout(linesOf(base::decodeText(firstLines(file), "").mText), &reason);
    return reason;
}

} // namespace textfile
