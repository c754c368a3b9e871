#include "cli/PlanOptions.h"

#include <fmt/format.h>

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

std::string durationText(qint64 nanoseconds)
{
    constexpr qint64 kNanosecondsPerSecond = 1'000'000'000;
    constexpr qint64 kSecondsPerMinute = 60;
    const qint64 seconds = (nanoseconds + kNanosecondsPerSecond - 1) / kNanosecondsPerSecond;
    const qint64 minutes = seconds / kSecondsPerMinute;
    return fmt::format("{}:{:02}:{:02}", minutes / kSecondsPerMinute, minutes % kSecondsPerMinute,
                       seconds % kSecondsPerMinute);
}

} // namespace cli
