#pragma once

#include <functional>
#include <string>
#include <vector>

#include "base/ResultFile.h"
#include "measure/EventSettings.h"
#include "measure/FlickerFilter.h"
#include "measure/MeasuredSignal.h"
#include "measure/MeasurementWriters.h"
#include "measure/PhasorWindow.h"

namespace measure {

/** The options of vx-case measure. */
struct MeasureOptions
{
    SignalOptions mSignal;
    std::vector<std::string> mGroups; ///< of quantities; empty for all
    double mNominalVolts = 230.0;
    double mNominalAmperes = 5.0;
    std::string mTruth; ///< of vx-case generate; empty for none
    TableForm mForm = TableForm::Long;
    std::optional<int> mFramesPerSecond; ///< of phasors; none: one per nominal period
    PhasorClass mPhasorClass = PhasorClass::M;
    Lamp mLamp = Lamp::V230;
    EventPercents mEventPercents;
    std::function<void()> mBeforeEachBlock = [] {}; ///< may throw, which ends the measuring
};

/**
 * Reads the signal once and writes the measured values; the caller commits the file.
 * @return remarks for the user
 * @throws CaseError if the input cannot be read, WrongInput for options that do not fit each other
 *         or the signal
 */
std::vector<std::string> measureSignal(const MeasureOptions& options, base::ResultFile& output);

} // namespace measure
