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
    std::string mText;  ///< one line for its user
    Settings mSettings; ///< what differs from the family's defaults
    bool mIsInCatalogue = true;
    double mPst = 0.0; ///< flicker by the standard's table; 0 where there is none

    /** Adds the signal to a wave, and sets its frequency and duration. */
    void applyTo(WaveParameters& wave) const;
};

/** In the catalogue: the neutral conductor carries what the phases leave, at no voltage. */
inline constexpr Neutral kCatalogueNeutral{NeutralRule::Sum, NeutralRule::Zero};

/** All signals, a row each. The first of them is what plays when nothing else is asked for. */
const std::vector<Signal>& signalTable();

/** Null when there is none of that name. */
const Signal* findSignal(std::string_view name);

/** The message about a name that no signal has, with the nearest names. */
std::string unknownSignal(const std::string& name);

} // namespace generate
