#include "commands/CommandLine.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <map>

namespace commands {

std::string commandLineOf(const CLI::App& command)
{
    std::string text = "vx-case " + command.get_name();
    std::map<const CLI::Option*, size_t> used; // parse_order() repeats a repeated option
    for (const CLI::Option* const option : command.parse_order()) {
        text += option->get_positional() ? "" : ' ' + option->get_name();
        const size_t index = used[option]++;
        if (option->get_items_expected_max() > 0 && index < option->results().size()) {
            text += ' ' + option->results()[index];
        }
    }
    std::replace_if(
        text.begin(), text.end(), [](char c) { return c == '\n' || c == '\r'; }, ' ');
    return text;
}

void takeOneValueEach(CLI::Option& option)
{
    // One below the value that the parser shows as "...".
    option.expected(1, CLI::detail::expected_max_vector_size - 1)->allow_extra_args(false);
}

CLI::Option* addOutputOption(CLI::App& command, std::string& file)
{
    return command.add_option("-o", file, "Writes to FILE instead of standard output")
        ->type_name("FILE");
}

void addDirectoryOption(CLI::App& command, std::string& directory)
{
    command
        .add_option("--directory", directory,
                    "Directory of value files with relative names (default: the current one)")
        ->type_name("DIRECTORY");
}

} // namespace commands
