#include "LineReader.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

namespace {
constexpr size_t kBlockBytes = 256 * 1024;

/** A line beyond it would not fit into a text. */
constexpr size_t kMostLineBytes = 512 * 1024 * 1024;
} // namespace

void LineReader::start(int descriptor)
{
    stop();
    mDescriptor = descriptor;
    mAtEnd = false;
    mFailed = false;
    mBuffer.resize(kBlockBytes + kReadableBehindLines);
}

void LineReader::stop()
{
    *this = LineReader();
}

/** Reads on until there is a whole line, or the rest of the file. */
bool LineReader::findLine()
{
    while (mBegin >= mWholeEnd && fill()) {
    }
    return mBegin < mEnd;
}

std::string_view LineReader::takeLine()
{
    const std::string_view bytes(mBuffer.data() + mBegin, mEnd - mBegin);
    const std::string_view line = bytes.substr(0, bytes.find('\n'));
    mBegin += std::min(line.size() + 1, bytes.size());
    return line;
}

int LineReader::takeError()
{
    return std::exchange(mError, 0);
}

/** Reads once behind what is still untaken; false when nothing more will come. */
bool LineReader::fill()
{
    if (mAtEnd) {
        return false;
    }
    std::memmove(mBuffer.data(), mBuffer.data() + mBegin, mEnd - mBegin);
    mEnd -= mBegin;
    mBegin = 0;
    mWholeEnd = 0;
    if (mEnd + kReadableBehindLines == mBuffer.size()) {
        mBuffer.resize(2 * mBuffer.size());
    }
    char* const news = mBuffer.data() + mEnd;
    const size_t room = mBuffer.size() - kReadableBehindLines - mEnd;
    ssize_t count = 0;
    do {
        count = ::read(mDescriptor, news, room);
    } while (count < 0 && errno == EINTR);
    if (mEnd > kMostLineBytes) {
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
    const size_t lineEnd = std::string_view(news, static_cast<size_t>(count)).rfind('\n');
    mWholeEnd = lineEnd == std::string_view::npos ? 0 : mEnd + lineEnd + 1;
    mEnd += static_cast<size_t>(count);
    return !mAtEnd;
}
