#include "LineReader.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

namespace {
constexpr int kBlockBytes = 256 * 1024;

/** A longer line does not fit into a QString. */
constexpr size_t kMaxLineBytes = 512 * 1024 * 1024;
} // namespace

void LineReader::start(int descriptor)
{
    stop();
    mDescriptor = descriptor;
    mAtEnd = false;
    mFailed = false;
    mBuffer = QByteArray(kBlockBytes + static_cast<int>(kReadableAfterLines), Qt::Uninitialized);
}

void LineReader::stop()
{
    *this = LineReader();
}

/** Reads until the buffer has a whole line, or the rest of the file. */
bool LineReader::findLine()
{
    while (mBegin >= mWholeEnd && fill()) {
    }
    return mBegin < mEnd;
}

std::string_view LineReader::takeLine()
{
    const std::string_view bytes(mBuffer.constData() + mBegin, mEnd - mBegin);
    const std::string_view line = bytes.substr(0, bytes.find('\n'));
    mBegin += std::min(line.size() + 1, bytes.size());
    return line;
}

int LineReader::takeError()
{
    return std::exchange(mError, 0);
}

/**
 * Reads once, behind the bytes that were not taken yet; false at the end of the file or on failure.
 */
bool LineReader::fill()
{
    if (mAtEnd) {
        return false;
    }
    std::memmove(mBuffer.data(), mBuffer.constData() + mBegin, mEnd - mBegin);
    mEnd -= mBegin;
    mBegin = 0;
    mWholeEnd = 0;
    if (mEnd + kReadableAfterLines == bufferSize()) {
        const int doubled = 2 * mBuffer.size();
        mBuffer.reserve(doubled); // exactly; resize() alone would take up to twice as much
        mBuffer.resize(doubled);
    }
    char* const free = mBuffer.data() + mEnd;
    const size_t room = bufferSize() - kReadableAfterLines - mEnd;
    ssize_t count = 0;
    do {
        count = ::read(mDescriptor, free, room);
    } while (count < 0 && errno == EINTR);
    if (mEnd > kMaxLineBytes) {
        count = -1;
        errno = EFBIG;
    }
    mAtEnd = count <= 0;
    if (count < 0) {
        mError = errno;
        mFailed = true;
        mEnd = mBegin;
        return false;
    }
    const size_t lineEnd = std::string_view(free, static_cast<size_t>(count)).rfind('\n');
    mWholeEnd = lineEnd == std::string_view::npos ? 0 : mEnd + lineEnd + 1;
    mEnd += static_cast<size_t>(count);
    return !mAtEnd;
}
