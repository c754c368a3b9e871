#include "cli/Subcommands.h"
#include "tool/Tool.h"

namespace {
void addSubcommands(CLI::App& app)
{
    cli::addCheckCommand(app);
    cli::addRunCommand(app);
    cli::addReportCommand(app);
    cli::addJudgeCommand(app);
}
} // namespace

int main(int argc, char** argv)
{
    return tool::runTool(
        {"vx-campaign", "Plays the cases of a plan, judges what arrives and reports.", VX_VERSION,
         addSubcommands},
        argc, argv);
}
