#pragma once

#include <string>

namespace CLI {
class App;
}

namespace commands {

/**
 * The command line that a subcommand was given, for a comment in its result: "vx-case", its name,
 * and its options in their order, in one line whatever they hold.
 */
std::string commandLineOf(const CLI::App& command);

} // namespace commands
