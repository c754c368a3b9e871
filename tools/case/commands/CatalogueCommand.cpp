#include <CLI/CLI.hpp>
#include <memory>

#include "commands/Commands.h"
#include "generate/Catalogue.h"

namespace commands {

void addCatalogueCommand(CLI::App& app)
{
    struct Options
    {
        std::string mDirectory;
        std::vector<std::string> mNames;
    };
    CLI::App& command = *app.add_subcommand(
        "catalogue", "Writes test signals, their true values, and a case configuration");
    command.footer(
        "Example: writes the signals into a new directory and plays their configuration:\n"
        "  vx-case catalogue signals\n"
        "  vx-sandbox --for 10 --send 3:s4 -- vx-simulator --config signals/vx-simulator.conf");
    const auto options = std::make_shared<Options>();
    command.add_option("DIRECTORY", options->mDirectory, "Output directory; created if missing")
        ->required()
        ->type_name("");
    command
        .add_option("NAME", options->mNames,
                    "Signals of vx-case generate --list (default: those of a test bench)")
        ->type_name("");
    command.callback([options] { generate::writeCatalogue(options->mDirectory, options->mNames); });
}

} // namespace commands
