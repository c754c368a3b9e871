#include "LineReader.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <utility>

namespace {
constexpr size_t kBlockBytes = 64 * 1024;
}

void LineReader::start(int descriptor)
{
    stop();
    mDescriptor = descriptor;
    mAtEnd = false;
    mBuffer.resize(kBlockBytes + kReadableBehindLine);
}

void LineReader::stop()
{
    *this = LineReader();
}

bool LineReader::findLine()
{
    bool isWhole = findLineEnd();
    while (!isWhole && fill()) {
        isWhole = findLineEnd();
    }
    mHasLine = isWhole || mBegin < mEnd;
    return mHasLine;
}

std::string_view LineReader::takeLine()
{
    const std::string_view line(mBuffer.data() + mBegin, mScanned - mBegin);
    const bool hasLineEnd = mScanned < mEnd;
    mBegin = hasLineEnd ? mScanned + 1 : mScanned;
    mScanned = mBegin;
    mHasLine = false;
    return line;
}

int LineReader::takeError()
{
    return std::exchange(mError, 0);
}

/** Leaves mScanned at the next line end, or at the end of the bytes read when there is none. */
bool LineReader::findLineEnd()
{
    if (mScanned == mEnd) {
        return false;
    }
    const char* const from = mBuffer.data() + mScanned;
    const void* const lineEnd = std::memchr(from, '\n', mEnd - mScanned);
    if (lineEnd == nullptr) {
        mScanned = mEnd;
        return false;
    }
    mScanned += static_cast<size_t>(static_cast<const char*>(lineEnd) - from);
    return true;
}

/** Reads once behind what is still untaken; false when nothing more will come. */
bool LineReader::fill()
{
    if (mAtEnd) {
        return false;
    }
    if (mBegin > 0) {
        std::memmove(mBuffer.data(), mBuffer.data() + mBegin, mEnd - mBegin);
        mScanned -= mBegin;
        mEnd -= mBegin;
        mBegin = 0;
    }
    if (mEnd + kReadableBehindLine == mBuffer.size()) {
        mBuffer.resize(2 * mBuffer.size());
    }
    const size_t room = mBuffer.size() - kReadableBehindLine - mEnd;
    ssize_t count = 0;
    do {
        count = ::read(mDescriptor, mBuffer.data() + mEnd, room);
    } while (count < 0 && errno == EINTR);
    mAtEnd = count <= 0;
    if (count < 0) {
        mError = errno;
        mScanned = mEnd = mBegin;
        return false;
    }
    mEnd += static_cast<size_t>(count);
    return !mAtEnd;
}
