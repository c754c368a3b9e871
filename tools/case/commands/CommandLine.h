#pragma once

#include <string>

namespace CLI {
class App;
class Option;
} // namespace CLI

namespace commands {

/**
 * The command line that a subcommand was given, for a comment in its result: "vx-case", its name,
 * and its options in their order, in one line whatever they hold.
 */
std::string commandLineOf(const CLI::App& command);

/** Makes an option one that is given once for each of its values; the help shows one value. */
void takeOneValueEach(CLI::Option& option);

/** "-o FILE". The text must outlive the command; it stays empty for standard output. */
CLI::Option* addOutputOption(CLI::App& command, std::string& file);

/** "--directory DIRECTORY", of relative names in a case configuration; empty for here. */
void addDirectoryOption(CLI::App& command, std::string& directory);

} // namespace commands
