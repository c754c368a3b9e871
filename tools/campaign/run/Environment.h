#pragma once

#include <map>
#include <string>

namespace run {

/** Where a night is played: versions, the machine, the state of its clock; by their names. */
using Environment = std::map<std::string, std::string>;

/** @param version of vx-campaign */
Environment environmentNow(const std::string& version);

/** The same with the programs that are started. */
Environment environmentNow(const std::string& version, const std::string& sandbox,
                           const std::string& simulator);

/** A program beside this one, if there is one; else its bare name, to be looked up in PATH. */
std::string programBeside(const std::string& name);

} // namespace run
