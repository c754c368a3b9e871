#pragma once

#include <QtGlobal>
#include <map>
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

/** What a value is of: "rms" of "UA". */
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
    size_t mOutOfOrder = 0; ///< rows whose time is before that of a row above them

    void add(const Sample& sample);
};

/** The values of a file, 16 bytes each. */
class ValueTable
{
public:
    /** The one of that name, empty at first. Stays where it is. */
    Series& series(const SeriesKey& key) { return mSeries[key]; }

    /** None where there is none. */
    const Series* find(const SeriesKey& key) const;

    const std::map<SeriesKey, Series>& all() const { return mSeries; }

    /** Puts each series into the order of time. To be called once all values are there. */
    void sort();

private:
    std::map<SeriesKey, Series> mSeries;
};

} // namespace assess
