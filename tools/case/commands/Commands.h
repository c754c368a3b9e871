#pragma once

namespace CLI {
class App;
}

namespace commands {

/**
 * The subcommands, one file each. Each function declares the options of its subcommand and the
 * action; the work is done in the other folders. A command throws CaseError for a wrong input and
 * CLI::ValidationError for options that contradict each other.
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
