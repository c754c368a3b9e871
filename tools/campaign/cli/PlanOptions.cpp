#include "cli/PlanOptions.h"

#include <CLI/CLI.hpp>

namespace cli {

void addPlanOptions(CLI::App& command, PlanOptions& options)
{
    command.add_option("PLAN", options.mPlan, "TOML file with the cases to play")
        ->required()
        ->type_name("");
    command.add_option("--only", options.mSelection.mCases, "Selects these cases; repeatable")
        ->type_name("NAME[,NAME]")
        ->delimiter(',')
        ->allow_extra_args(false);
    command
        .add_option("--group", options.mSelection.mGroups,
                    "Selects the cases of these groups; repeatable")
        ->type_name("NAME[,NAME]")
        ->delimiter(',')
        ->allow_extra_args(false);
}

} // namespace cli
