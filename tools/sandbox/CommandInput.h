#pragma once

#include <string>
#include <vector>

namespace sandbox {

/** Takes commands from standard input, a line each, as they come. Never waits for them. */
class CommandInput
{
public:
    /** @param isUsed whether there is anything to take; else it has no descriptor */
    explicit CommandInput(bool isUsed);

    /** To be read when it is readable; -1 when nothing will come, or nothing more. */
    int descriptor() const { return mDescriptor; }

    /** Takes the lines that are there, without their ends. Requires: descriptor() is readable. */
    std::vector<std::string> takeLines();

private:
    int mDescriptor; ///< borrowed
    std::string mUnfinished;
};

} // namespace sandbox
