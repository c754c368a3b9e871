#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "SampleRecord.h"

namespace importing {

/** A channel of the recording, by name or number, and what it is multiplied by. */
struct AssignedTerm
{
    std::string mSource;
    double mFactor = 1.0;
};

/** What was asked for one channel of the device: a sum; without terms the channel is 0. */
struct Assignment
{
    std::string mText; ///< as it was given
    std::vector<AssignedTerm> mTerms;
};

/** For each channel of the device what was asked; nothing for those that were not named. */
using Assignments = std::array<std::optional<Assignment>, kChannelCount>;

/**
 * Reads "0=UA,1=UB,2=17,3=0,4=IA*0.5,7=IA+IB+IC".
 * @return why it cannot be read, with the part at fault; empty when it was read
 */
std::string readAssignments(const std::string& text, Assignments& assignments);

} // namespace importing
