#pragma once

#include "generate/SampleMeter.h"

namespace measure {

/** What is an event, in percent of the declared voltage; as the truth of generated signals has it.
 */
struct EventSettings
{
    double mDeclaredVolts = 230.0; ///< above 0
    double mNominalHz = 50.0;
    double mDipPercent = generate::EventThresholds::kDipPercent;
    double mSwellPercent = generate::EventThresholds::kSwellPercent;
    double mInterruptionPercent = generate::EventThresholds::kInterruptionPercent;
    double mHysteresisPercent = generate::EventThresholds::kHysteresisPercent;
    double mRapidChangePercent = 5.0; ///< its hysteresis is half of it
};

} // namespace measure
