#pragma once

#include <string>

#include "run/SandboxDesk.h"

namespace run {

/**
 * Runs the simulator in the sandbox once, for its version only: so both can be run here, and the
 * sandbox takes the faults.
 * @throws WrongInput when it is not so
 */
void checkPrograms(const SandboxSetup& setup);

/**
 * That the control FIFO is one that a program reads, and the log is a file that can be read.
 * @throws WrongInput when it is not so
 */
void checkDevice(const std::string& fifo, const std::string& log);

} // namespace run
