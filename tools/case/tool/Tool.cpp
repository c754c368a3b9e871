#include "tool/Tool.h"

#include <CLI/CLI.hpp>
#include <clocale>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <new>
#include <sstream>
#include <vector>

#include "CaseConfiguration.h"
#include "base/CaseError.h"
#include "base/StandardOutput.h"
#include "base/WrongInput.h"

namespace tool {

namespace {
constexpr int kInputAtFault = 1;
constexpr int kCommandLineAtFault = 2;

/** Shows a positional that may be given twice without the library's "(1x)". */
class UsageFormatter : public CLI::Formatter
{
public:
    std::string make_option_usage(const CLI::Option* option) const override
    {
        const std::string name = make_option_name(option, true);
        const bool isOnceOrTwice = option->get_required() && option->get_expected_max() == 2;
        return isOnceOrTwice ? name : CLI::Formatter::make_option_usage(option);
    }
};

/** Unknown arguments are reported before missing ones, since they are the likely cause. */
std::string failureMessage(const CLI::App* app, const CLI::Error& error)
{
    const std::vector<std::string> unknown = app->remaining(true);
    return app->get_name() + ": " +
           (unknown.empty() ? error.what() : "unknown argument '" + unknown.front() + "'") +
           "; see --help\n";
}

void declare(const Tool& tool, CLI::App& app)
{
    app.formatter(std::make_shared<UsageFormatter>()); // the subcommands inherit it
    app.name(tool.mName);
    app.description(tool.mDescription);
    app.set_version_flag("-v,--version", tool.mName + " " + tool.mVersion);
    app.require_subcommand(1);
    app.failure_message(failureMessage);
    tool.mAddSubcommands(app);
}

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

int runTool(const Tool& tool, int argc, char** argv)
{
    // The program's messages go through log4cxx, which loses non-ASCII letters without this locale.
    std::setlocale(LC_CTYPE, "C.UTF-8");
    configuration::CaseConfiguration::keepLogSilent();
    CLI::App app;
    declare(tool, app);
    try {
        return parseAndRun(app, argc, argv);
    } catch (const base::EndWith& end) {
        return end.status();
    } catch (const base::WrongInput& error) {
        std::cerr << tool.mName << ": " << error.what() << std::endl;
        return kCommandLineAtFault;
    } catch (const base::CaseError& error) {
        std::cerr << tool.mName << ": " << error.what() << std::endl;
    } catch (const std::bad_alloc&) {
        std::cerr << tool.mName << ": out of memory" << std::endl;
    }
    return kInputAtFault;
}

} // namespace tool
