#include <cstdlib>
#include <exception>
#include <optional>

#include "Console.h"
#include "DriverFiles.h"
#include "FuseServer.h"
#include "Options.h"
#include "PrivateMounts.h"
#include "ProgramProcess.h"
#include "SimulatedDriver.h"
#include "Supervisor.h"

namespace {

int runSandbox(const Options& options, Console& console)
{
    // The output files belong to the host, so they are opened before its directories are covered.
    SimulatedDriver driver(options.mOutputs, options.mFaults, console);

    PrivateMounts mounts;
    mounts.enter();
    mounts.makePrivateDev();
    mounts.makeEtcVx();
    mounts.makeDriverDirectory();

    FuseServer server(driver, driverFiles(options.wantsPmeDevice()));
    return Supervisor(options, driver, server, mounts, console).run();
}

} // namespace

int main(int argc, char** argv)
{
    Console console;
    try {
        const std::optional<Options> options = parseOptions(argc, argv);
        return options ? runSandbox(*options, console) : EXIT_SUCCESS;
    } catch (const std::exception& failure) {
        console.message(failure.what());
        return kExitSandboxFailed;
    }
}
