#include "measure/WindowMeans.h"

#include <algorithm>
#include <cmath>

namespace measure {

namespace {
bool isPower(QuantityId id)
{
    return id == QuantityId::ActivePower || id == QuantityId::ReactivePower ||
           id == QuantityId::ApparentPower;
}
} // namespace

/**
 * The rows of all windows have the same order, so the first one that is looked at belongs mostly. A
 * new row is put behind the one before it: a power factor stays behind its powers.
 */
WindowMeans::Mean& WindowMeans::meanOf(const Measurement& row)
{
    const auto belongs = [&row](const Mean& mean) {
        return mean.mKind == row.mKind && mean.mChannel == row.mChannel;
    };
    const auto next = mMeans.begin() + static_cast<std::ptrdiff_t>(mNext);
    auto found = std::find_if(next, mMeans.end(), belongs);
    if (found == mMeans.end()) {
        found = std::find_if(mMeans.begin(), next, belongs);
        if (found == next) {
            found = mMeans.insert(next, {row.mKind, row.mChannel, 0.0, 0});
        }
    }
    mNext = static_cast<size_t>(found - mMeans.begin()) + 1;
    return *found;
}

void WindowMeans::add(const Measurement& row)
{
    Mean& mean = meanOf(row);
    mean.mSum += isPower(row.mKind.mId) ? row.mValue : row.mValue * row.mValue;
    ++mean.mCount;
}

void WindowMeans::end(Interval interval, qint64 utcNs, MeasurementOutput& output)
{
    double active = 0.0; // of the channel, whose power factor follows
    double apparent = 0.0;
    for (Mean& mean : mMeans) {
        if (mean.mCount == 0) {
            continue;
        }
        const QuantityId id = mean.mKind.mId;
        const double average = mean.mSum / static_cast<double>(mean.mCount);
        Measurement row{utcNs, isPower(id) ? average : std::sqrt(average), mean.mKind,
                        mean.mChannel};
        row.mKind.mInterval = interval;
        active = id == QuantityId::ActivePower ? average : active;
        apparent = id == QuantityId::ApparentPower ? average : apparent;
        row.mValue = id == QuantityId::PowerFactor ? active / apparent : row.mValue;
        output.add(row);
        mean.mSum = 0.0;
        mean.mCount = 0;
    }
    mNext = 0;
}

} // namespace measure
