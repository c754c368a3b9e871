#include "commands/Commands.h"
#include "tool/Tool.h"

namespace {
void addSubcommands(CLI::App& app)
{
    commands::addGenerateCommand(app);
    commands::addCheckCommand(app);
    commands::addExplainCommand(app);
    commands::addExportCommand(app);
    commands::addInfoCommand(app);
    commands::addCatalogueCommand(app);
    commands::addImportCommand(app);
    commands::addMeasureCommand(app);
    commands::addJudgeCommand(app);
    commands::addPlotCommand(app);
}
} // namespace

int main(int argc, char** argv)
{
    return tool::runTool(
        {"vx-case", "Makes, reads and checks what vx-simulator plays.", VX_VERSION, addSubcommands},
        argc, argv);
}
