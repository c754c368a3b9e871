#pragma once

#include <string>

namespace CLI {
class App;
}

namespace tool {

/** A program with subcommands, as its user meets it. */
struct Tool
{
    std::string mName;
    std::string mDescription; ///< in its help, one sentence
    std::string mVersion;
    void (*mAddSubcommands)(CLI::App& app);
};

/**
 * Reads the command line, does what the subcommand does, and says on standard error why it could
 * not. Help and version are no errors.
 * @return the exit status: 0 for success, 1 for an input at fault, 2 for a wrong command line or
 *         WrongInput, and that of EndWith
 */
int runTool(const Tool& tool, int argc, char** argv);

} // namespace tool
