#include "CommandReader.h"

#include <array>
#include <utility>

#include "VxDevice.h"

namespace {
/**
 * Max bytes that one call reads: twice the longest line. A writer that never stops must not block
 * the main loop.
 */
constexpr int kMaxReads = 2 * CommandReader::kMaxLineBytes / static_cast<int>(FifoPeek::kMaxBytes);
} // namespace

CommandReader::Result CommandReader::take(VxDevice& device, QByteArray* line)
{
    mTookBytes = false;
    std::array<char, FifoPeek::kMaxBytes> bytes{};
    for (int reads = 0; reads < kMaxReads && device.waitForReadyRead(0); ++reads) {
        const int count = device.readRaw(bytes.data(), mPeek.bytesOfFirstLine(device.handle()));
        if (count < 0) {
            break;
        }
        mTookBytes = mTookBytes || count > 0;
        const Result result = count == 0 ? Result::Line : append(bytes.data(), count);
        if (result == Result::Line) {
            *line = std::exchange(mPart, QByteArray());
        }
        if (result != Result::Nothing) {
            return result;
        }
    }
    return Result::Nothing;
}

/** Requires: a line end can only be the last of the bytes. */
CommandReader::Result CommandReader::append(const char* bytes, int count)
{
    const bool endsLine = bytes[count - 1] == '\n';
    if (mDroppingLine) {
        mDroppingLine = !endsLine;
        return Result::Nothing;
    }
    mPart.append(bytes, count);
    if (mPart.size() - (endsLine ? 1 : 0) > kMaxLineBytes) {
        mPart.clear();
        mDroppingLine = !endsLine;
        return Result::TooLong;
    }
    return endsLine ? Result::Line : Result::Nothing;
}
