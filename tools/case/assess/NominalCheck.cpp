#include "assess/NominalCheck.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "assess/QuantityNames.h"
#include "measure/VoltageLevels.h"

namespace assess {

std::string nominalProblem(const ValueTable& expected, double nominalVolts)
{
    constexpr std::array<const char*, 3> kPhases{"UA", "UB", "UC"};
    std::array<measure::VoltageLevels, kPhases.size()> levels;
    for (const char* const quantity : {"rms-half", "rms", kMagnitude}) {
        for (size_t i = 0; i < kPhases.size(); ++i) {
            const Series* const series = expected.find({quantity, kPhases[i]});
            if (series != nullptr) {
                std::for_each(series->mSamples.begin(), series->mSamples.end(),
                              [&](const Sample& it) { levels[i].add(it.mValue); });
            }
        }
    }
    const auto median =
        nominalVolts > 0.0 ? measure::medianFarFrom(levels, nominalVolts) : std::nullopt;
    return median
               ? fmt::format(
                     "the median of the expected voltages is {:.3g} V, but the nominal "
                     "voltage is {:g} V: limits in percent of it are probably wrong; see --nominal",
                     *median, nominalVolts)
               : "";
}

} // namespace assess
