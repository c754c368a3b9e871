#include "CommandInput.h"

#include <unistd.h>

#include <array>
#include <cerrno>

namespace sandbox {

CommandInput::CommandInput(bool isUsed) : mDescriptor(isUsed ? STDIN_FILENO : -1) {}

std::vector<std::string> CommandInput::takeLines()
{
    std::array<char, 4096> bytes{};
    const ssize_t count = read(mDescriptor, bytes.data(), bytes.size());
    if (count < 0 && (errno == EINTR || errno == EAGAIN)) {
        return {};
    }
    if (count <= 0) {
        mDescriptor = -1;
        return {};
    }
    mUnfinished.append(bytes.data(), static_cast<std::size_t>(count));
    std::vector<std::string> lines;
    for (std::size_t end = mUnfinished.find('\n'); end != std::string::npos;
         end = mUnfinished.find('\n')) {
        lines.push_back(mUnfinished.substr(0, end));
        mUnfinished.erase(0, end + 1);
    }
    return lines;
}

} // namespace sandbox
