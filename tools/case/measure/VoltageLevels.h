#pragma once

#include <array>
#include <cstddef>
#include <map>
#include <optional>

namespace measure {

/**
 * The rms values of one voltage, counted in classes of 0.1 %: the memory does not depend on their
 * number.
 */
class VoltageLevels
{
public:
    /** Of a period, V. What is 0 or no number does not count. */
    void add(double rms);

    bool isEmpty() const { return mCounts.empty(); }

    /**
     * The median, in V, where it is more than 15 % off the nominal voltage and hardly any value is
     * nearer: no supply is so far off, and a recording of a long dip has some values before it.
     */
    std::optional<double> medianFarFrom(double nominalVolts) const;

private:
    std::map<int, size_t> mCounts; ///< by thousandths of the natural logarithm of the V
};

/**
 * Of voltages that are all so far off, the highest median: one that is not connected is lower.
 * Those without values do not count.
 */
std::optional<double> medianFarFrom(const std::array<VoltageLevels, 3>& voltages,
                                    double nominalVolts);

} // namespace measure
