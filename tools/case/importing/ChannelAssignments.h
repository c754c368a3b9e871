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

/** The assignment of one channel of the device: a sum; without terms the channel is 0. */
struct Assignment
{
    std::string mText; ///< as given
    std::vector<AssignedTerm> mTerms;
};

/** The assignment of each channel of the device; no value for channels that were not named. */
using Assignments = std::array<std::optional<Assignment>, kChannelCount>;

/**
 * Reads "0=UA,1=UB,2=17,3=0,4=IA*0.5,7=IA+IB+IC".
 * @return the error with the invalid part; empty on success
 */
std::string readAssignments(const std::string& text, Assignments& assignments);

} // namespace importing
