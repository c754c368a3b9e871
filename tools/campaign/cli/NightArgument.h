#pragma once

#include <string>

namespace CLI {
class App;
}

namespace cli {

/** Declares FOLDER, which has a night. The folder must outlive the command. */
void addNightArgument(CLI::App& command, std::string& folder);

} // namespace cli
