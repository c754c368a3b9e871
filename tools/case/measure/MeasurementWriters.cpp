#include "measure/MeasurementWriters.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <string>

#include "measure/UtcText.h"

namespace measure {

namespace {
constexpr size_t kIntervals = 3;
constexpr size_t kOrders = 51;
constexpr size_t kChannels = static_cast<size_t>(Channel::None) + 1;

/** The index of a kind of row in lookup tables. */
size_t indexOf(const RowKind& kind)
{
    const auto id = static_cast<size_t>(kind.mId);
    const auto interval = static_cast<size_t>(kind.mInterval);
    return (id * kIntervals + interval) * kOrders + static_cast<size_t>(kind.mOrder);
}

size_t kindCount()
{
    return quantities().size() * kIntervals * kOrders;
}

/** The names of all kinds of rows, each made only once. */
class RowNames
{
public:
    RowNames() : mNames(kindCount()) {}

    const std::string& of(const RowKind& kind)
    {
        std::string& name = mNames[indexOf(kind)];
        if (name.empty()) {
            name = nameOf(kind);
        }
        return name;
    }

private:
    std::vector<std::string> mNames;
};

constexpr const char* kLongLine = "{},{},{},{:.10g},{},{}\n";
constexpr const char* kJsonLine = R"({{"utc":"{}","quantity":"{}","channel":"{}","value":{:.10g},)"
                                  R"("unit":"{}","origin":"{}"}})"
                                  "\n";

/** Writes one line per value, formatted in a buffer that is reused. */
class LineWriter : public MeasurementWriter
{
public:
    /** @param format of a line: time, quantity, channel, value, unit, origin */
    LineWriter(base::ResultFile& output, const char* format) : mOutput(output), mFormat(format) {}

    void add(const Measurement& value) override
    {
        mLine.clear();
        fmt::format_to(std::back_inserter(mLine), fmt::runtime(mFormat), mUtc.of(value.mUtcNs),
                       mNames.of(value.mKind), nameOf(value.mChannel), value.mValue,
                       unitOf(value.mKind.mId, value.mChannel), nameOf(value.mOrigin));
        mOutput.write({mLine.data(), mLine.size()});
    }

    void finish() override {}

private:
    base::ResultFile& mOutput;
    const char* mFormat;
    UtcText mUtc;
    RowNames mNames;
    fmt::memory_buffer mLine;
};

/** Writes one row per instant, as soon as a value of another instant arrives. */
class WideWriter : public MeasurementWriter
{
public:
    WideWriter(const Selection& selection, base::ResultFile& output)
        : mOutput(output), mColumns(kindCount() * kChannels)
    {
        std::string heading = "utc,origin";
        for (const Quantity& quantity : quantities()) {
            if (selection.has(quantity.mId)) {
                addColumns(quantity, &heading);
            }
        }
        mOutput.write(heading + "\n");
    }

    void add(const Measurement& value) override
    {
        const size_t column = mColumns[columnKey(value.mKind, value.mChannel)];
        std::string& cell = mCells[column];
        // A second value for the same column begins another row, for example two events at one
        // instant.
        if (mHasRow && (value.mUtcNs != mUtcNs || !cell.empty())) {
            finish();
        }
        mIsMixed = mHasRow && (mIsMixed || value.mOrigin != mOrigin);
        mOrigin = value.mOrigin;
        mUtcNs = value.mUtcNs;
        mHasRow = true;
        cell = fmt::format("{:.10g}", value.mValue);
        mFilled.push_back(column);
    }

    void finish() override
    {
        if (!mHasRow) {
            return;
        }
        std::string line(mUtc.of(mUtcNs));
        line += std::string(",") + (mIsMixed ? "mixed" : nameOf(mOrigin));
        std::sort(mFilled.begin(), mFilled.end());
        size_t next = 0;
        for (const size_t column : mFilled) { // most of the thousands of cells are empty
            line.append(column + 1 - next, ',');
            line += mCells[column];
            mCells[column].clear();
            next = column + 1;
        }
        line.append(mCells.size() - next, ',');
        mFilled.clear();
        mOutput.write(line + "\n");
        mHasRow = false;
    }

private:
    static size_t columnKey(const RowKind& kind, Channel channel)
    {
        return indexOf(kind) * kChannels + static_cast<size_t>(channel);
    }

    void addColumns(const Quantity& quantity, std::string* heading)
    {
        const int intervals = quantity.mHasIntervals ? int{kIntervals} : 1;
        for (int interval = 0; interval < intervals; ++interval) {
            for (const Channel channel : quantity.mChannels) {
                for (int order = quantity.mFirstOrder; order <= quantity.mLastOrder; ++order) {
                    addColumn({quantity.mId, order, static_cast<Interval>(interval)}, channel,
                              heading);
                }
            }
        }
    }

    /** Adds a column such as "rms UA V"; empty parts are left out. */
    void addColumn(const RowKind& kind, Channel channel, std::string* heading)
    {
        *heading += ',' + nameOf(kind);
        for (const char* const part : {nameOf(channel), unitOf(kind.mId, channel)}) {
            *heading += *part == '\0' ? "" : std::string(" ") + part;
        }
        mColumns[columnKey(kind, channel)] = mCells.size();
        mCells.emplace_back();
    }

    base::ResultFile& mOutput;
    UtcText mUtc;
    std::vector<size_t> mColumns; ///< index of the cell
    std::vector<std::string> mCells;
    std::vector<size_t> mFilled; ///< cells of this row
    bool mHasRow = false;
    bool mIsMixed = false; ///< values of both origins
    Origin mOrigin = Origin::Measured;
    qint64 mUtcNs = 0;
};
} // namespace

const char* nameOf(Origin origin)
{
    return origin == Origin::Measured ? "measured" : "closed form";
}

std::unique_ptr<MeasurementWriter> makeWriter(TableForm form, const Selection& selection,
                                              base::ResultFile& output)
{
    switch (form) {
        case TableForm::Wide:
            return std::make_unique<WideWriter>(selection, output);
        case TableForm::Json:
            return std::make_unique<LineWriter>(output, kJsonLine);
        case TableForm::Long:
            break;
    }
    output.write(std::string(kLongHeading) + "\n");
    return std::make_unique<LineWriter>(output, kLongLine);
}

} // namespace measure
