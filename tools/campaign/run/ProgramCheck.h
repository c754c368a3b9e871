#pragma once

#include <string>

#include "run/SandboxDesk.h"

namespace run {

/**
 * Runs vx-simulator --version in the sandbox. This checks that both can be run here, and that the
 * sandbox accepts the faults.
 * @throws WrongInput if not
 */
void checkPrograms(const SandboxSetup& setup);

/**
 * Checks that a program reads the control FIFO, and that the log can be read.
 * @throws WrongInput if not
 */
void checkDevice(const std::string& fifo, const std::string& log);

} // namespace run
