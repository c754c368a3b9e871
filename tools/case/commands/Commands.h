#pragma once

namespace CLI {
class App;
}

namespace commands {

/**
 * The subcommands, one file each. Each function declares its options and what is done when the
 * subcommand was given; the work itself is done in the other rooms. A command throws CaseError
 * when its input is at fault and CLI::ValidationError when its options contradict each other.
 */

void addCatalogueCommand(CLI::App& app);
void addGenerateCommand(CLI::App& app);
void addCheckCommand(CLI::App& app);
void addExplainCommand(CLI::App& app);
void addExportCommand(CLI::App& app);
void addInfoCommand(CLI::App& app);
void addImportCommand(CLI::App& app);
void addMeasureCommand(CLI::App& app);
void addJudgeCommand(CLI::App& app);
void addPlotCommand(CLI::App& app);

} // namespace commands
