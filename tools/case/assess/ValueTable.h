#pragma once

#include <QtGlobal>
#include <map>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

namespace assess {

/** A value and the time it is for, in ns since the epoch. */
struct Sample
{
    qint64 mUtcNs = 0;
    double mValue = 0.0;
};

/** A quantity and its channel: "rms" and "UA". */
struct SeriesKey
{
    std::string mQuantity;
    std::string mChannel; ///< may be empty

    bool operator<(const SeriesKey& other) const
    {
        return std::tie(mQuantity, mChannel) < std::tie(other.mQuantity, other.mChannel);
    }
    bool operator==(const SeriesKey& other) const
    {
        return mQuantity == other.mQuantity && mChannel == other.mChannel;
    }
};

/** "rms UA", or the quantity alone. */
inline std::string nameOf(const SeriesKey& key)
{
    return key.mChannel.empty() ? key.mQuantity : key.mQuantity + " " + key.mChannel;
}

/** All values of one quantity and channel. */
struct Series
{
    std::vector<Sample> mSamples;
    size_t mOutOfOrder = 0; ///< number of rows that are earlier than a row before them

    void add(const Sample& sample);
};

/** From the first to the last of some values. */
struct TimeRange
{
    qint64 mBeginNs = 0;
    qint64 mEndNs = 0;
};

/** The values of a file, 16 bytes each. */
class ValueTable
{
public:
    /** The series of that name; it is created empty. The reference stays valid. */
    Series& series(const SeriesKey& key) { return mSeries[key]; }

    /** Null if there is none. */
    const Series* find(const SeriesKey& key) const;

    const std::map<SeriesKey, Series>& all() const { return mSeries; }

    /** Of all values; nothing without any. Requires: sort() was called. */
    std::optional<TimeRange> range() const;

    /** Sorts each series by time. To be called once all values are there. */
    void sort();

private:
    std::map<SeriesKey, Series> mSeries;
};

} // namespace assess
