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
#include "commands/Commands.h"

namespace {
constexpr int kInputAtFault = 1;
constexpr int kCommandLineAtFault = 2;

/** What was not understood comes before what is missing: it is why that is missing. */
std::string failureMessage(const CLI::App* app, const CLI::Error& error)
{
    const std::vector<std::string> unknown = app->remaining(true);
    return "vx-case: " +
           (unknown.empty() ? error.what() : "'" + unknown.front() + "' is not known here") +
           "; see --help\n";
}

void declare(CLI::App& app)
{
    app.name("vx-case");
    app.description("Makes, reads and checks what vx-simulator plays.");
    app.set_version_flag("-v,--version", "vx-case " VX_VERSION);
    app.require_subcommand(1);
    app.failure_message(failureMessage);
    commands::addGenerateCommand(app);
    commands::addCheckCommand(app);
    commands::addExplainCommand(app);
    commands::addExportCommand(app);
    commands::addInfoCommand(app);
    commands::addCatalogueCommand(app);
    commands::addImportCommand(app);
    commands::addMeasureCommand(app);
    commands::addJudgeCommand(app);
    commands::addPlotCommand(app);
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
    } catch (const base::WrongInput& error) {
        std::cerr << "vx-case: " << error.what() << std::endl;
        return kCommandLineAtFault;
    } catch (const base::CaseError& error) {
        std::cerr << "vx-case: " << error.what() << std::endl;
    } catch (const base::BadVerdict&) {
        return kInputAtFault;
    } catch (const std::bad_alloc&) {
        std::cerr << "vx-case: out of memory" << std::endl;
    }
    return kInputAtFault;
}
