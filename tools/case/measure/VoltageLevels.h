#pragma once

#include <array>
#include <cstddef>
#include <map>
#include <optional>

namespace measure {

/**
 * The rms values of one voltage, counted in classes of 0.1 %, so that the memory does not grow with
 * their number.
 */
class VoltageLevels
{
public:
    /** @param rms of a period, V; 0 and NaN are ignored */
    void add(double rms);

    bool isEmpty() const { return mCounts.empty(); }

    /**
     * The median in V, if it differs by more than 15 % from the nominal voltage and hardly any
     * value is nearer. No supply differs so much, and a recording of a long dip has values before
     * the dip.
     */
    std::optional<double> medianFarFrom(double nominalVolts) const;

private:
    std::map<int, size_t> mCounts; ///< by thousandths of the natural logarithm of the V
};

/**
 * The highest median, if all voltages differ so much: a voltage that is not connected is lower.
 * Voltages without values are ignored.
 */
std::optional<double> medianFarFrom(const std::array<VoltageLevels, 3>& voltages,
                                    double nominalVolts);

} // namespace measure
