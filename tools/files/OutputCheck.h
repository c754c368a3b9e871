#pragma once

#include <string>
#include <vector>

namespace files {

/** Whether two names lead to one file, by the rules of OutputCheck. */
bool areSameFile(const std::string& left, const std::string& right);

/**
 * Finds out, before anything is opened for writing, whether a command would overwrite one of its
 * own inputs or write two outputs into one file. Files are compared by what they are, not by how
 * they are spelled: links are followed, and a file that does not exist yet is known by its
 * directory and name.
 *
 * Character devices (/dev/null, a terminal) never conflict: there is nothing in them to lose.
 */
class OutputCheck
{
public:
    /**
     * Adds a file that the command reads. `role` is what it is to the user, as part of a sentence
     * ("the recording", "--config"); `path` is as the user wrote it. An empty path is ignored.
     */
    void addInput(std::string role, std::string path);

    /** Adds a file that the command writes; a derived one, too. See addInput(). */
    void addOutput(std::string role, std::string path);

    /**
     * The first conflict, in the order in which the outputs were added, as one line without a line
     * end: "rec.dat: -o would overwrite the recording ./rec.dat; name another file". Empty when
     * there is none. Looks at the file system each time; opens nothing.
     */
    std::string conflict() const;

private:
    struct NamedFile
    {
        std::string mRole;
        std::string mPath;
    };

    std::vector<NamedFile> mInputs;
    std::vector<NamedFile> mOutputs;
};

} // namespace files
