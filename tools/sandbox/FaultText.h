#pragma once

#include <string>

#include "Faults.h"

namespace sandbox {

/**
 * Reads a fault as --fault has it, FILE:WHEN:WHAT[:COUNT]. Throws a std::runtime_error, one line
 * that says what is expected, for anything else.
 */
Fault parseFault(const std::string& text);

} // namespace sandbox
