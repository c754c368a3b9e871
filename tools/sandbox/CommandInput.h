#pragma once

#include <string>
#include <vector>

namespace sandbox {

/** Takes commands from standard input, one per line, as they arrive. Never waits for them. */
class CommandInput
{
public:
    /** @param isUsed whether commands come from standard input; otherwise there is no descriptor */
    explicit CommandInput(bool isUsed);

    /** To be read when it is readable; -1 if no more commands can come. */
    int descriptor() const { return mDescriptor; }

    /** Takes the available lines, without their ends. Requires: descriptor() is readable. */
    std::vector<std::string> takeLines();

private:
    int mDescriptor; ///< borrowed
    std::string mUnfinished;
};

} // namespace sandbox
