#pragma once

#include <string>

#include "plan/Mistakes.h"
#include "plan/Plan.h"

namespace plan {

/** The correct parts of a plan, and its mistakes. Faulty cases are left out. */
struct Draft
{
    Plan mPlan;
    Mistakes mMistakes;
};

/** The text of a plan's file. Throws PlanError. */
std::string planText(const std::string& path);

/** @param path of the file, for messages; relative paths in the plan start at its folder */
Draft draftPlan(const std::string& text, const std::string& path);

} // namespace plan
