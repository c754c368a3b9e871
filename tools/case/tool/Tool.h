#pragma once

#include <string>

namespace CLI {
class App;
}

namespace tool {

/** A program with subcommands. */
struct Tool
{
    std::string mName;
    std::string mDescription; ///< one sentence, for its help
    std::string mVersion;
    void (*mAddSubcommands)(CLI::App& app);
};

/**
 * Reads the command line and runs the subcommand. Prints errors on standard error. Help and version
 * are not errors.
 * @return the exit status: 0 for success, 1 for a wrong input, 2 for a wrong command line or
 *         WrongInput, and that of EndWith
 */
int runTool(const Tool& tool, int argc, char** argv);

} // namespace tool
