#include "cli/PlanOptions.h"

#include <CLI/CLI.hpp>

namespace cli {

void addPlanOptions(CLI::App& command, PlanOptions& options)
{
    command.add_option("PLAN", options.mPlan, "What is to be played, in TOML")
        ->required()
        ->type_name("");
    command.add_option("--only", options.mSelection.mCases, "These cases alone; repeatable")
        ->type_name("NAME,...")
        ->delimiter(',')
        ->allow_extra_args(false);
    command.add_option("--group", options.mSelection.mGroups, "The cases of a group; repeatable")
        ->type_name("NAME,...")
        ->delimiter(',')
        ->allow_extra_args(false);
}

} // namespace cli
