#pragma once

#include "generate/SampleMeter.h"

namespace measure {

/** Thresholds in percent of the declared voltage; defaults as in the truth of generated signals. */
struct EventPercents
{
    double mDip = generate::EventThresholds::kDipPercent;
    double mSwell = generate::EventThresholds::kSwellPercent;
    double mInterruption = generate::EventThresholds::kInterruptionPercent;
};

/** Definition of events. */
struct EventSettings
{
    double mDeclaredVolts = 230.0; ///< above 0
    double mNominalHz = 50.0;
    EventPercents mPercents;
    double mHysteresisPercent = generate::EventThresholds::kHysteresisPercent;
    double mRapidChangePercent = 5.0; ///< its hysteresis is half of it
};

} // namespace measure
