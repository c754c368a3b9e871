#pragma once

namespace CLI {
class App;
}

namespace cli {

/**
 * The subcommands, one file each. Each function declares its options and what is done when the
 * subcommand was given; the work itself is done in the other rooms. A subcommand throws CaseError
 * when its input is at fault and CLI::ValidationError when its options contradict each other.
 */
void addCheckCommand(CLI::App& app);

void addJudgeCommand(CLI::App& app);

void addReportCommand(CLI::App& app);

void addRunCommand(CLI::App& app);

} // namespace cli
