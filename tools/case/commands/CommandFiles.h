#pragma once

#include <string>

#include "OutputCheck.h"

namespace commands {

/**
 * What a command reads and writes. Ends the command when it would overwrite what it reads, or
 * write two results into one file. To be asked before anything is opened for writing.
 *
 * Roles are parts of a sentence ("the recording", "--events"), paths are as the user wrote them;
 * an empty path is no file.
 */
class CommandFiles
{
public:
    void addInput(const std::string& role, const std::string& path);

    /** A signal of any kind; with its other file where it is a COMTRADE recording in two files. */
    void addSignal(const std::string& role, const std::string& path);

    /** A case configuration, and its value files, whose relative names begin in `directory`. */
    void addCases(const std::string& path, const std::string& directory);

    /** A file that is written; one whose name is derived from an option, too. */
    void addOutput(const std::string& role, const std::string& path);

    /** @throws CLI::ValidationError that names both files */
    void expectNoConflict() const;

private:
    files::OutputCheck mCheck;
};

} // namespace commands
