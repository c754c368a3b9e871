#include "base/WholeFile.h"

#include "base/CaseError.h"
#include "base/InputFile.h"

namespace base {

std::string readWholeFile(const std::string& path, size_t maxBytes)
{
    InputFile file(path);
    if (file.size() > maxBytes) {
        throw CaseError(path + ": " + std::to_string(file.size()) + " bytes: expected at most " +
                        std::to_string(maxBytes));
    }
    return std::string(file.peek(file.size()));
}

} // namespace base
