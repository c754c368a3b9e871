#include "cli/NightArgument.h"

#include <CLI/CLI.hpp>
#include <QFileInfo>

#include "report/Report.h"

namespace cli {

void addNightArgument(CLI::App& command, std::string& folder)
{
    command.add_option("FOLDER", folder, "Folder of the night, written by run")
        ->required()
        ->type_name("")
        ->check([](const std::string& name) {
            const std::string journal = name + "/" + report::kJournalFile;
            return QFileInfo(QString::fromStdString(journal)).isFile()
                       ? std::string()
                       : name + ": has no " + report::kJournalFile +
                             "; expected the folder of a night";
        });
}

} // namespace cli
