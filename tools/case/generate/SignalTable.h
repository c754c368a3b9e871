#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "generate/SignalFamily.h"

namespace generate {

/** A signal with a name: a family with some of its parameters set. */
struct Signal
{
    std::string mName;
    FamilyKind mFamily = FamilyKind::Steady;
    std::string mText;  ///< one line for the user
    Settings mSettings; ///< those that differ from the family's defaults
    bool mIsInCatalogue = true;
    double mPst = 0.0; ///< flicker by the standard's table; 0 for none

    /** Adds the signal to a wave, and sets its frequency and duration. */
    void applyTo(WaveParameters& wave) const;
};

/** In the catalogue, the neutral conductor carries the sum of the phase currents, at no voltage. */
inline constexpr Neutral kCatalogueNeutral{NeutralRule::Sum, NeutralRule::Zero};

/** All signals, one row each. The first one is the steady signal, which is played by default. */
const std::vector<Signal>& signalTable();

/** Null if there is none with this name. */
const Signal* findSignal(std::string_view name);

/** The message about an unknown name, with the nearest names. */
std::string unknownSignal(const std::string& name);

} // namespace generate
