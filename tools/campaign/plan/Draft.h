#pragma once

#include <string>

#include "plan/Mistakes.h"
#include "plan/Plan.h"

namespace plan {

/** What could be read of a plan, without the cases that are faulty, and what is wrong with it. */
struct Draft
{
    Plan mPlan;
    Mistakes mMistakes;
};

/** The text of a plan's file. Throws PlanError. */
std::string planText(const std::string& path);

/** @param path of the file, as messages give it; relative paths in the plan begin in its folder */
Draft draftPlan(const std::string& text, const std::string& path);

} // namespace plan
