#include <CLI/CLI.hpp>
#include <string>

#include "base/CaseError.h"
#include "base/StandardOutput.h"
#include "cli/NightArgument.h"
#include "cli/Subcommands.h"
#include "report/Report.h"
#include "report/ReportText.h"

namespace cli {

namespace {
constexpr char kReportFooter[] =
    R"(Writes FOLDER/report.html, FOLDER/junit.xml and FOLDER/cases.csv again, from the
journal and the other files of the night. It also works for a night that was cut off
or is still running.

Exit status: 0 if every play passed; 1 if one did not, or the night was cut off or is
still running; 2 if FOLDER is not the folder of a night; 130 if the night was
interrupted.

Example:
  vx-campaign report night-0411)";

void reportNight(const std::string& folder)
{
    const report::NightSummary night = report::writeReports(folder);
    base::writeToStandardOutput(report::verdictText(night) + "\n" + folder + "/" +
                                report::kPageFile + "\n");
    if (const int status = report::statusOf(night); status != EXIT_SUCCESS) {
        throw base::EndWith(status);
    }
}
} // namespace

void addReportCommand(CLI::App& app)
{
    CLI::App& command = *app.add_subcommand("report", "Writes the reports of a night again");
    command.footer(kReportFooter);
    const auto folder = std::make_shared<std::string>();
    addNightArgument(command, *folder);
    command.callback([folder] { reportNight(*folder); });
}

} // namespace cli
