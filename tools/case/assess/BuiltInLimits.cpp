#include "assess/BuiltInLimits.h"

#include <algorithm>
#include <array>

#include "assess/Limits.h"

namespace assess {

namespace {
constexpr char kPmuP[] = R"(
title = "IEC/IEEE 60255-118-1, class P, more than 20 frames per second; compare with the standard"
tolerance = 0.001

[[limit]]
quantity = "tve"
while = "steady"
edge = "2/f0"
absolute = 1
note = "steady state"
[[limit]]
quantity = "tve"
while = "ramp"
edge = "2/f0"
absolute = 1
note = "frequency ramp"
[[limit]]
quantity = "tve"
while = "varying"
edge = "2/f0"
absolute = 3
note = "measurement bandwidth, modulation"

[[limit]]
quantity = "frequency-pmu"
while = "steady"
edge = "4.5/f0"
absolute = 0.005
[[limit]]
quantity = "frequency-pmu"
while = "ramp"
edge = "4.5/f0"
absolute = 0.01
[[limit]]
quantity = "frequency-pmu"
while = "varying"
edge = "4.5/f0"
absolute = 0.06

[[limit]]
quantity = "rocof"
while = "steady"
edge = "6/f0"
absolute = 0.4
[[limit]]
quantity = "rocof"
while = "ramp"
edge = "6/f0"
absolute = 0.4
[[limit]]
quantity = "rocof"
while = "varying"
edge = "6/f0"
absolute = 2.3

[[limit]]
quantity = "step-response-tve"
absolute = "2/f0"
[[limit]]
quantity = "step-response-frequency"
absolute = "4.5/f0"
[[limit]]
quantity = "step-response-rocof"
absolute = "6/f0"
[[limit]]
quantity = "step-delay"
absolute = "0.25/fr"
[[limit]]
quantity = "step-overshoot"
absolute = 5
)";

constexpr char kPmuM[] = R"(
title = "IEC/IEEE 60255-118-1, class M, more than 20 frames per second; compare with the standard"
tolerance = 0.001

[[limit]]
quantity = "tve"
while = "steady"
edge = "7/fr"
absolute = 1
note = "steady state"
[[limit]]
quantity = "tve"
while = "ramp"
edge = "7/fr"
absolute = 1
note = "frequency ramp"
[[limit]]
quantity = "tve"
while = "varying"
edge = "7/fr"
absolute = 3
note = "measurement bandwidth, modulation"

[[limit]]
quantity = "frequency-pmu"
while = "steady"
edge = ["14/f0", "14/fr"]
absolute = 0.005
[[limit]]
quantity = "frequency-pmu"
while = "ramp"
edge = ["14/f0", "14/fr"]
absolute = 0.01
[[limit]]
quantity = "frequency-pmu"
while = "varying"
edge = ["14/f0", "14/fr"]
absolute = 0.3

[[limit]]
quantity = "rocof"
while = "steady"
edge = ["14/f0", "14/fr"]
absolute = 0.1
[[limit]]
quantity = "rocof"
while = "ramp"
edge = ["14/f0", "14/fr"]
absolute = 0.2
[[limit]]
quantity = "rocof"
while = "varying"
edge = ["14/f0", "14/fr"]
absolute = 14

[[limit]]
quantity = "step-response-tve"
absolute = "7/fr"
[[limit]]
quantity = ["step-response-frequency", "step-response-rocof"]
absolute = ["14/f0", "14/fr"]
[[limit]]
quantity = "step-delay"
absolute = "0.25/fr"
[[limit]]
quantity = "step-overshoot"
absolute = 10
)";

constexpr char kPqA[] = R"(
title = "IEC 61000-4-30 ed. 3, class A; compare with the standard"
tolerance = 0.02

[[limit]]
quantity = "frequency-10s"
from = 42.5
to = 69
after = 0
absolute = 0.01
clause = "5.1"

[[limit]]
quantity = "rms"
channel = ["UA", "UB", "UC", "UN"]
from = "10 %"
to = "150 %"
after = 0
nominal = 0.1
clause = "5.2"

[[limit]]
quantity = ["pst", "plt"]
from = 0.2
to = 10
after = 0
reading = 5
clause = "5.3"
note = "class F1 of IEC 61000-4-15"

[[limit]]
quantity = "rms-half"
channel = ["UA", "UB", "UC"]
edge = "2/f0"
nominal = 0.2
clause = "5.4"
note = "as for the residual voltage, which is computed from it"
[[limit]]
quantity = ["dip-residual", "swell-max"]
nominal = 0.2
clause = "5.4"
[[limit]]
quantity = ["dip-start", "swell-start"]
absolute = "0.5/f0"
clause = "5.4"
[[limit]]
quantity = ["dip-duration", "swell-duration"]
absolute = "1/f0"
clause = "5.4"
[[limit]]
quantity = "interruption-residual"
nominal = 0.2
clause = "5.5"
[[limit]]
quantity = "interruption-start"
absolute = "0.5/f0"
clause = "5.5"
[[limit]]
quantity = "interruption-duration"
absolute = "1/f0"
clause = "5.5"

[[limit]]
quantity = ["u2", "u0"]
after = 0
absolute = 0.15
clause = "5.7"

[[limit]]
quantity = "harmonic"
from = 1
after = 0
reading = 5
clause = "5.8"
note = "class I of IEC 61000-4-7; percent of the fundamental instead of the nominal value"
[[limit]]
quantity = "harmonic"
to = 1
after = 0
absolute = 0.05
clause = "5.8"
[[limit]]
quantity = "interharmonic"
from = 1
after = 0
reading = 5
clause = "5.9"
note = "class I of IEC 61000-4-7; percent of the fundamental instead of the nominal value"
[[limit]]
quantity = "interharmonic"
to = 1
after = 0
absolute = 0.05
clause = "5.9"
)";

constexpr char kPqS[] = R"(
title = "IEC 61000-4-30 ed. 3, class S; compare with the standard"
tolerance = 5
event-tolerance = 5

[[limit]]
quantity = "frequency-10s"
from = 42.5
to = 69
after = 0
absolute = 0.05
clause = "5.1"

[[limit]]
quantity = "rms"
channel = ["UA", "UB", "UC", "UN"]
from = "20 %"
to = "120 %"
after = 0
nominal = 0.5
clause = "5.2"

[[limit]]
quantity = "rms-half"
channel = ["UA", "UB", "UC"]
edge = "2/f0"
nominal = 1
clause = "5.4"
note = "as for the residual voltage, which is computed from it"
[[limit]]
quantity = ["dip-residual", "swell-max"]
nominal = 1
clause = "5.4"
[[limit]]
quantity = ["dip-duration", "swell-duration"]
absolute = "2/f0"
clause = "5.4"
[[limit]]
quantity = "interruption-residual"
nominal = 1
clause = "5.5"
[[limit]]
quantity = "interruption-duration"
absolute = "2/f0"
clause = "5.5"

[[limit]]
quantity = ["u2", "u0"]
after = 0
absolute = 0.3
clause = "5.7"

[[limit]]
quantity = "harmonic"
from = 3
after = 0
reading = 5
clause = "5.8"
note = "class II of IEC 61000-4-7; percent of the fundamental instead of the nominal value"
[[limit]]
quantity = "harmonic"
to = 3
after = 0
absolute = 0.15
clause = "5.8"
)";

struct BuiltIn
{
    std::string_view mName;
    std::string_view mText;
};
constexpr std::array<BuiltIn, 4> kBuiltIns{
    {{"pmu-p", kPmuP}, {"pmu-m", kPmuM}, {"pq-a", kPqA}, {"pq-s", kPqS}}};
} // namespace

std::string_view builtInLimits(std::string_view name)
{
    const auto* const found = std::find_if(kBuiltIns.begin(), kBuiltIns.end(),
                                           [name](const BuiltIn& it) { return it.mName == name; });
    return found == kBuiltIns.end() ? std::string_view() : found->mText;
}

std::vector<std::string> builtInLimitNames()
{
    std::vector<std::string> names(kBuiltIns.size());
    std::transform(kBuiltIns.begin(), kBuiltIns.end(), names.begin(),
                   [](const BuiltIn& it) { return std::string(it.mName); });
    return names;
}

} // namespace assess
