#include "commands/CommandFiles.h"

#include <CLI/CLI.hpp>
#include <QDir>

#include "CaseConfiguration.h"
#include "input/OpenInput.h"

namespace commands {

void CommandFiles::addInput(const std::string& role, const std::string& path)
{
    mCheck.addInput(role, path);
}

void CommandFiles::addSignal(const std::string& role, const std::string& path)
{
    addInput(role, path);
    addInput(role, input::otherFileOf(path));
}

/** Errors in the configuration are left to the command to report. */
void CommandFiles::addCases(const std::string& path, const std::string& directory)
{
    using configuration::CaseConfiguration;
    if (path.empty()) {
        return;
    }
    addInput("the configuration", path);
    CaseConfiguration cases;
    cases.read(QString::fromStdString(path), CaseConfiguration::Rejected::Continue);
    const QDir folder(QString::fromStdString(directory));
    for (const std::string& name : cases.valueFiles()) {
        addInput(
            "the value file",
            directory.empty() ? name : folder.filePath(QString::fromStdString(name)).toStdString());
    }
}

void CommandFiles::addOutput(const std::string& role, const std::string& path)
{
    mCheck.addOutput(role, path);
}

void CommandFiles::expectNoConflict() const
{
    const std::string conflict = mCheck.conflict();
    if (!conflict.empty()) {
        throw CLI::ValidationError(conflict);
    }
}

} // namespace commands
