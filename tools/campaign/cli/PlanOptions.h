#pragma once

#include <string>

#include "plan/Plan.h"

namespace CLI {
class App;
}

namespace cli {

/** A plan and a part of it, the same for every subcommand. */
struct PlanOptions
{
    std::string mPlan;
    plan::Selection mSelection;
};

/** Declares PLAN, --only and --group. The options must outlive the command. */
void addPlanOptions(CLI::App& command, PlanOptions& options);

} // namespace cli
