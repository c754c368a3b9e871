#pragma once

#include <map>
#include <string>

namespace run {

/**
 * Where a night is played: versions, the machine, the state of its clock; a text for each name.
 * @param version of vx-campaign
 */
std::map<std::string, std::string> environmentNow(const std::string& version,
                                                  const std::string& sandbox,
                                                  const std::string& simulator);

/** A program beside this one, if there is one; else its bare name, to be looked up in PATH. */
std::string programBeside(const std::string& name);

} // namespace run
