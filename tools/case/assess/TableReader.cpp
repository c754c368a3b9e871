#include "assess/TableReader.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <unordered_map>

#include "assess/QuantityNames.h"
#include "base/CaseError.h"
#include "base/InputFile.h"
#include "base/NearestName.h"
#include "base/Text.h"
#include "base/TextEncoding.h"
#include "textfile/TextLayout.h"

namespace assess {

namespace {
constexpr size_t kMaxUnused = 100;
constexpr double kMaxMeasured = 1e30;

/** The series to which the values of a field are added. */
struct FieldTarget
{
    Series* mSeries = nullptr; ///< none: left out
    double mFactor = 1.0;
};

using Fields = std::vector<std::string_view>;

/** Splits the line into `fields`, whose memory is reused. */
void splitInto(std::string_view line, char separator, Fields& fields)
{
    fields.clear();
    for (size_t end = line.find(separator);; end = line.find(separator)) {
        std::string_view field = base::trimmed(line.substr(0, end));
        if (field.size() >= 2 && field.front() == '"' && field.back() == '"') {
            field = field.substr(1, field.size() - 2);
        }
        fields.push_back(field);
        if (end == std::string_view::npos) {
            return;
        }
        line.remove_prefix(end + 1);
    }
}

/** Reads one table. */
class Reader
{
public:
    Reader(const std::string& path, const MeasuredMap& map) : mMap(map), mFile(path) {}

    ReadTable read();

private:
    bool takeLine();
    void readHeading();
    void findColumns();
    size_t indexOf(const ColumnName& column) const;
    void readRow();
    qint64 readTime() const;
    void readWideRow(qint64 utcNs);
    void readLongRow(qint64 utcNs);
    const FieldTarget& longTarget();
    FieldTarget makeTarget(std::string_view quantity, std::string_view channel,
                           std::string_view unit);
    void addValue(const FieldTarget& target, size_t field, qint64 utcNs);
    [[noreturn]] void fail(size_t field, const std::string& expected) const;

    const MeasuredMap& mMap;
    base::InputFile mFile;
    ReadTable mTable;
    size_t mLine = 0;
    std::string_view mText; ///< of the line
    Fields mFields;
    std::vector<std::string> mHeading;

    // Indices of fields.
    size_t mTimeField = 0;
    size_t mQuantityField = 0;
    std::optional<size_t> mChannelField;
    size_t mValueField = 0;
    std::optional<size_t> mUnitField;
    std::vector<size_t> mWideFields;

    std::vector<FieldTarget> mWideTargets;
    std::unordered_map<std::string, FieldTarget> mLongTargets; ///< by quantity, channel and unit
    std::string mLongName;
};

ReadTable Reader::read()
{
    readHeading();
    findColumns();
    while (takeLine()) {
        if (!base::trimmed(mText).empty()) {
            readRow();
        }
    }
    mTable.mValues.sort();
    return std::move(mTable);
}

bool Reader::takeLine()
{
    ++mLine;
    return mFile.takeLine(&mText);
}

void Reader::readHeading()
{
    while (mLine < mMap.mHeadingLine) {
        if (!takeLine()) {
            throw base::CaseError(fmt::format(
                "{}:{}: expected a heading with the names of the columns", mFile.name(), mLine));
        }
    }
    const base::DecodedText text = base::decodeText(mText, "");
    splitInto(text.mText, mMap.mSeparator, mFields);
    mHeading.assign(mFields.begin(), mFields.end());
}

void Reader::findColumns()
{
    mTimeField = indexOf(mMap.mTime);
    for (const WideColumn& wide : mMap.mWide) {
        mWideFields.push_back(indexOf(wide.mColumn));
        mWideTargets.push_back(
            {&mTable.mValues.series({wide.mQuantity, wide.mChannel}), wide.mFactor});
    }
    if (mMap.mLong) {
        mQuantityField = indexOf(mMap.mLong->mQuantity);
        mValueField = indexOf(mMap.mLong->mValue);
        if (mMap.mLong->mChannel) {
            mChannelField = indexOf(*mMap.mLong->mChannel);
        }
        if (mMap.mLong->mUnit) {
            mUnitField = indexOf(*mMap.mLong->mUnit);
        }
    }
}

/** Errors name the position in the map, if there is one: that is what the user has to change. */
size_t Reader::indexOf(const ColumnName& column) const
{
    const std::string prefix =
        mMap.mFileName.empty() ? "" : states::messagePrefix(mMap.mFileName, column.mLocation);
    if (column.mNumber > 0) {
        if (column.mNumber > mHeading.size()) {
            throw base::CaseError(fmt::format("{}{}:{}: column {}: the table has {} columns",
                                              prefix, mFile.name(), mLine, column.mNumber,
                                              mHeading.size()));
        }
        return column.mNumber - 1;
    }
    const auto found = std::find(mHeading.begin(), mHeading.end(), column.mName);
    if (found == mHeading.end()) {
        throw base::CaseError(fmt::format("{}{}:{}: no column '{}'; the nearest is '{}'{}", prefix,
                                          mFile.name(), mLine, column.mName,
                                          base::nearestNames(column.mName, mHeading, 1).front(),
                                          mMap.mFileName.empty() ? "; see --map" : ""));
    }
    if (std::find(found + 1, mHeading.end(), column.mName) != mHeading.end()) {
        throw base::CaseError(fmt::format("{}{}:{}: two columns '{}'; expected a number", prefix,
                                          mFile.name(), mLine, column.mName));
    }
    return static_cast<size_t>(found - mHeading.begin());
}

void Reader::readRow()
{
    ++mTable.mRows;
    splitInto(mText, mMap.mSeparator, mFields);
    if (mFields.size() != mHeading.size()) {
        throw base::CaseError(fmt::format("{}:{}: {} fields: expected {}, as in the heading",
                                          mFile.name(), mLine, mFields.size(), mHeading.size()));
    }
    const qint64 utcNs = readTime() + mMap.mOffsetNs;
    mMap.mLong ? readLongRow(utcNs) : readWideRow(utcNs);
}

qint64 Reader::readTime() const
{
    const auto time = mMap.mFormat.parse(mFields[mTimeField], mMap.mDecimalSign);
    if (!time) {
        fail(mTimeField, "a time of the format " + mMap.mFormat.text());
    }
    return *time;
}

void Reader::readWideRow(qint64 utcNs)
{
    for (size_t i = 0; i < mWideFields.size(); ++i) {
        addValue(mWideTargets[i], mWideFields[i], utcNs);
    }
}

void Reader::readLongRow(qint64 utcNs)
{
    const FieldTarget& target = longTarget();
    if (target.mSeries != nullptr) {
        addValue(target, mValueField, utcNs);
    }
}

const FieldTarget& Reader::longTarget()
{
    const std::string_view quantity = mFields[mQuantityField];
    const std::string_view channel = mChannelField ? mFields[*mChannelField] : std::string_view();
    const std::string_view unit = mUnitField ? mFields[*mUnitField] : std::string_view();
    mLongName.assign(quantity).append(1, '\n').append(channel).append(1, '\n').append(unit);
    const auto found = mLongTargets.find(mLongName);
    return found != mLongTargets.end()
               ? found->second
               : mLongTargets.emplace(mLongName, makeTarget(quantity, channel, unit)).first->second;
}

FieldTarget Reader::makeTarget(std::string_view quantity, std::string_view channel,
                               std::string_view unit)
{
    const auto inOurWords = [](const std::map<std::string, std::string>& words,
                               std::string_view word) {
        const auto found = words.find(std::string(word));
        return found == words.end() ? std::string(word) : found->second;
    };
    const SeriesKey key{inOurWords(mMap.mQuantities, quantity),
                        inOurWords(mMap.mChannels, channel)};
    if (!isMeasured(key.mQuantity)) {
        if (mMap.mFileName.empty()) {
            fail(mQuantityField, "a quantity; the nearest is " +
                                     base::nearestNames(key.mQuantity, measuredNames(), 1).front());
        }
        if (mTable.mUnused.size() < kMaxUnused) {
            mTable.mUnused.push_back(key.mQuantity);
        }
        return {};
    }
    if (!isChannel(key.mChannel)) {
        fail(*mChannelField, "a channel; the nearest is " +
                                 base::nearestNames(key.mChannel, channelNames(), 1).front());
    }
    const std::optional<double> factor =
        mUnitField ? unitFactor(unit, unitOf(key)) : std::optional(1.0);
    if (!factor) {
        fail(*mUnitField, "a unit of " + key.mQuantity + ", such as '" + unitOf(key) + "'");
    }
    if (mTable.mFirstQuantity.empty()) {
        mTable.mFirstQuantity = key.mQuantity;
    }
    return {&mTable.mValues.series(key), *factor * mMap.mFactor};
}

void Reader::addValue(const FieldTarget& target, size_t field, qint64 utcNs)
{
    double value = 0.0;
    const std::string_view text = mFields[field];
    if (textfile::parseTextNumber(text, mMap.mDecimalSign, &value)) {
        value *= target.mFactor;
        if (std::abs(value) > kMaxMeasured) {
            fail(field, fmt::format("a number that gives at most {:g}", kMaxMeasured));
        }
        target.mSeries->add({utcNs, value});
        return;
    }
    if (std::find(mMap.mMissing.begin(), mMap.mMissing.end(), text) == mMap.mMissing.end()) {
        fail(field, "a number, or a word for a missing value");
    }
    ++mTable.mMissing;
}

void Reader::fail(size_t field, const std::string& expected) const
{
    throw base::CaseError(fmt::format(
        "{}:{}: field {} ('{}'): \"{}\": expected {}", mFile.name(), mLine, field + 1,
        mHeading[field],
        base::decodeText(std::string(mFields[field].substr(0, base::kLongestExcerpt)), "").mText,
        expected));
}
} // namespace

ReadTable readTable(const std::string& path, const MeasuredMap& map)
{
    return Reader(path, map).read();
}

} // namespace assess
