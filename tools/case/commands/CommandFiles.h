#pragma once

#include <string>

#include "OutputCheck.h"

namespace commands {

/**
 * The files that a command reads and writes. Refuses a command that would overwrite its inputs, or
 * write two results into one file. To be used before anything is opened for writing.
 *
 * Roles are parts of a sentence ("the recording", "--events"), paths are as given by the user; an
 * empty path is ignored.
 */
class CommandFiles
{
public:
    void addInput(const std::string& role, const std::string& path);

    /** A signal of any kind, with both files of a COMTRADE recording. */
    void addSignal(const std::string& role, const std::string& path);

    /** A case configuration and its value files, whose relative names start at `directory`. */
    void addCases(const std::string& path, const std::string& directory);

    /** A file to be written, including one whose name is derived from an option. */
    void addOutput(const std::string& role, const std::string& path);

    /** @throws CLI::ValidationError that names both files */
    void expectNoConflict() const;

private:
    files::OutputCheck mCheck;
};

} // namespace commands
