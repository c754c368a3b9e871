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
        "Example, the signals in a directory of their own, and their configuration played:\n"
        "  vx-case catalogue signals\n"
        "  vx-sandbox --for 10 --send 3:s4 -- vx-simulator --config signals/vx-simulator.conf");
    const auto options = std::make_shared<Options>();
    command.add_option("DIRECTORY", options->mDirectory, "Output directory; created when missing")
        ->required()
        ->type_name("");
    command
        .add_option("NAME", options->mNames,
                    "Signals, as vx-case generate --list shows them (default: the catalogue)")
        ->type_name("");
    command.callback([options] { generate::writeCatalogue(options->mDirectory, options->mNames); });
}

} // namespace commands
