#pragma once

#include <string>

namespace CLI {
class App;
class Option;
} // namespace CLI

namespace commands {

/**
 * The command line of a subcommand in one line, for a comment in its result: "vx-case", its name,
 * and its options in their order.
 */
std::string commandLineOf(const CLI::App& command);

/** Makes an option repeatable, with one value each time; the help shows one value. */
void takeOneValueEach(CLI::Option& option);

/** "-o FILE". The text must outlive the command; it stays empty for standard output. */
CLI::Option* addOutputOption(CLI::App& command, std::string& file);

/**
 * "--directory DIRECTORY" for relative names in a case configuration; empty for the working
 * directory.
 */
void addDirectoryOption(CLI::App& command, std::string& directory);

} // namespace commands
