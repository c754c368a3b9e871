#pragma once

#include <map>
#include <string>

namespace run {

/** Where a night is played: versions, machine and state of its clock, by name. */
using Environment = std::map<std::string, std::string>;

/** @param version of vx-campaign */
Environment environmentNow(const std::string& version);

/** The same with the programs that are started. */
Environment environmentNow(const std::string& version, const std::string& sandbox,
                           const std::string& simulator);

/** The path of a program beside this one, if it exists; otherwise its name, to find in PATH. */
std::string programBeside(const std::string& name);

} // namespace run
