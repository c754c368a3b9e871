#pragma once

#include "generate/SampleMeter.h"

namespace measure {

/** In percent of the declared voltage; as the truth of generated signals has them. */
struct EventPercents
{
    double mDip = generate::EventThresholds::kDipPercent;
    double mSwell = generate::EventThresholds::kSwellPercent;
    double mInterruption = generate::EventThresholds::kInterruptionPercent;
};

/** What is an event. */
struct EventSettings
{
    double mDeclaredVolts = 230.0; ///< above 0
    double mNominalHz = 50.0;
    EventPercents mPercents;
    double mHysteresisPercent = generate::EventThresholds::kHysteresisPercent;
    double mRapidChangePercent = 5.0; ///< its hysteresis is half of it
};

} // namespace measure
