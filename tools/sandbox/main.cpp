#include <cstdlib>
#include <exception>
#include <optional>

#include "Clocks.h"
#include "Console.h"
#include "DriverFiles.h"
#include "FuseServer.h"
#include "OperatorCommands.h"
#include "Options.h"
#include "PrivateMounts.h"
#include "ProgramProcess.h"
#include "SimulatedDriver.h"
#include "Supervisor.h"

namespace {

int runProgram(const sandbox::Options& options, sandbox::SimulatedDriver& driver,
               sandbox::OperatorCommands& commands, sandbox::Console& console)
{
    sandbox::PrivateMounts mounts;
    mounts.enter();
    mounts.makePrivateDev();
    mounts.makeEtcVx();
    mounts.makeDriverDirectory();

    sandbox::FuseServer server(driver, sandbox::driverFiles(options.wantsPmeDevice()));
    return sandbox::Supervisor(options, driver, server, mounts, commands, console).run();
}

int runSandbox(const sandbox::Options& options, sandbox::Console& console)
{
    // The output files belong to the host, so they are opened before its directories are covered.
    sandbox::SimulatedDriver driver(options.mOutputs, options.mFaults, console);
    sandbox::OperatorCommands commands(options.mCommands, driver.events(), console);
    try {
        return runProgram(options, driver, commands, console);
    } catch (const std::exception&) {
        commands.recordUnsent();
        driver.events().addRunEnd(sandbox::realtimeNs(), "error");
        throw;
    }
}

} // namespace

int main(int argc, char** argv)
{
    sandbox::Console console;
    try {
        const std::optional<sandbox::Options> options = sandbox::parseOptions(argc, argv);
        return options ? runSandbox(*options, console) : EXIT_SUCCESS;
    } catch (const std::exception& failure) {
        console.message(failure.what());
        return sandbox::kExitSandboxFailed;
    }
}
