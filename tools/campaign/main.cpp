#include <CLI/CLI.hpp>
#include <clocale>
#include <exception>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "CaseConfiguration.h"
#include "base/CaseError.h"
#include "base/StandardOutput.h"
#include "base/WrongInput.h"
#include "cli/Subcommands.h"
#include "plan/Plan.h"

namespace {
constexpr int kInputAtFault = 1;
constexpr int kCommandLineAtFault = 2; ///< or the plan

/** What was not understood comes before what is missing: it is why that is missing. */
std::string failureMessage(const CLI::App* app, const CLI::Error& error)
{
    const std::vector<std::string> unknown = app->remaining(true);
    return "vx-campaign: " +
           (unknown.empty() ? error.what() : "'" + unknown.front() + "' is not known here") +
           "; see --help\n";
}

void declare(CLI::App& app)
{
    app.name("vx-campaign");
    app.description("Plays the cases of a plan, judges what arrives and reports.");
    app.set_version_flag("-v,--version", "vx-campaign " VX_VERSION);
    app.require_subcommand(1);
    app.failure_message(failureMessage);
    cli::addCheckCommand(app);
    cli::addRunCommand(app);
    cli::addReportCommand(app);
    cli::addJudgeCommand(app);
}

/** Help and version are no errors; every other remark of the parser is one of status 2. */
int parseAndRun(CLI::App& app, int argc, char** argv)
{
    try {
        app.parse(argc, argv);
        return EXIT_SUCCESS;
    } catch (const CLI::ParseError& error) {
        std::ostringstream result;
        const int status = app.exit(error, result, std::cerr);
        base::writeToStandardOutput(result.str());
        return status == EXIT_SUCCESS ? EXIT_SUCCESS : kCommandLineAtFault;
    }
}
} // namespace

int main(int argc, char** argv)
{
    // The program's messages go through log4cxx, which goes by the locale and else loses umlauts.
    std::setlocale(LC_CTYPE, "C.UTF-8");
    configuration::CaseConfiguration::keepLogSilent();
    CLI::App app;
    declare(app);
    try {
        return parseAndRun(app, argc, argv);
    } catch (const plan::PlanError& error) {
        std::cerr << "vx-campaign: " << error.what() << std::endl;
        return kCommandLineAtFault;
    } catch (const base::WrongInput& error) {
        std::cerr << "vx-campaign: " << error.what() << std::endl;
        return kCommandLineAtFault;
    } catch (const base::CaseError& error) {
        std::cerr << "vx-campaign: " << error.what() << std::endl;
    } catch (const cli::EndWith& end) {
        return end.status();
    } catch (const std::bad_alloc&) {
        std::cerr << "vx-campaign: out of memory" << std::endl;
    }
    return kInputAtFault;
}
