#include "waveform/ValueLines.h"

#include <unistd.h>

#include <algorithm>

#include "LogText.h"
#include "PipeOrDevice.h"
#include "waveform/ProgramMessages.h"

namespace waveform {

namespace {
constexpr int kNoFile = -1;
constexpr int kEndOfFile = -2;
} // namespace

ValueLines::ValueLines() : InputValues(typeid(ValueLines))
{
    resetIterator();
}

bool ValueLines::open(const QString& fileName)
{
    if (configuration::isPipeOrDevice(fileName)) {
        mErrors = {configuration::kExpectedRegularFile};
        return false;
    }
    const ProgramMessages messages;
    const bool isOpen = openFile(fileName);
    mErrors = messages.errors();
    return isOpen;
}

bool ValueLines::readSome()
{
    releaseItems();
    const ProgramMessages messages;
    const int lines = parseLines(kMaxLines);
    mErrors = messages.errors();
    if (lines == kNoFile) {
        mErrors.push_back(local8Bit(fileName()) + ": was removed while it was read");
    }
    resetIterator();
    return lines != kNoFile && lines != kEndOfFile;
}

double ValueLines::progress() const
{
    const qint64 size = mFile->size();
    const auto read = static_cast<double>(lseek(mFile->handle(), 0, SEEK_CUR));
    return size == 0 ? 1.0 : std::min(1.0, read / static_cast<double>(size));
}

} // namespace waveform
