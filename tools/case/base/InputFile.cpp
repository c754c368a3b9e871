#include "base/InputFile.h"

#include <QFileInfo>
#include <algorithm>
#include <cstring>

#include "base/CaseError.h"

namespace base {

namespace {
constexpr size_t kBlockBytes = size_t{256} << 10U;
} // namespace

InputFile::InputFile(const std::string& path) : mName(path), mFile(QString::fromStdString(path))
{
    const QFileInfo info(mFile.fileName());
    if (!info.exists()) {
        throw CaseError(mName + ": no such file");
    }
    if (!info.isFile()) {
        throw CaseError(mName + ": expected a regular file");
    }
    if (!mFile.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        throw CaseError(mName + ": " + mFile.errorString().toStdString());
    }
    mSize = static_cast<size_t>(mFile.size());
    setPart(0, mSize);
}

void InputFile::setPart(size_t begin, size_t end)
{
    mPartEnd = std::min(end, mSize);
    mPartBegin = std::min(begin, mPartEnd);
    mBlockPosition = mPartBegin;
    mNext = 0;
    mBlockEnd = 0;
    if (!mFile.seek(static_cast<qint64>(mPartBegin))) {
        throw CaseError(mName + ": " + mFile.errorString().toStdString());
    }
}

void InputFile::continueAt(size_t position)
{
    mSize = static_cast<size_t>(mFile.size());
    setPart(position, mSize);
}

std::string_view InputFile::peek(size_t bytes)
{
    while (block().size() < bytes && readMore(bytes)) {
    }
    return block().substr(0, bytes);
}

bool InputFile::takeLine(std::string_view* line)
{
    size_t searched = 0;
    size_t end = std::string_view::npos;
    do {
        end = block().find('\n', searched);
        searched = block().size();
    } while (end == std::string_view::npos && searched <= kMaxLineBytes && readMore(searched + 1));
    *line = block().substr(0, end);
    if (line->size() > kMaxLineBytes) {
        throw CaseError(mName + ": byte " + std::to_string(position()) +
                        ": expected a line end within 1 MiB");
    }
    const bool isThere = end != std::string_view::npos || !line->empty();
    mNext += line->size() + (end != std::string_view::npos ? 1 : 0);
    if (!line->empty() && line->back() == '\r') {
        line->remove_suffix(1);
    }
    return isThere;
}

double InputFile::progress() const
{
    const size_t bytes = mPartEnd - mPartBegin;
    return bytes == 0 ? 1.0
                      : static_cast<double>(position() - mPartBegin) / static_cast<double>(bytes);
}

/** Makes room for `wanted` bytes from mNext on and reads; false at the end of the part to read. */
bool InputFile::readMore(size_t wanted)
{
    const auto begin = mBlock.begin();
    std::copy(begin + static_cast<qint64>(mNext), begin + static_cast<qint64>(mBlockEnd), begin);
    mBlockPosition += mNext;
    mBlockEnd -= mNext;
    mNext = 0;
    const size_t unread = mPartEnd - mBlockPosition - mBlockEnd;
    if (mBlock.size() < wanted) {
        mBlock.resize(std::max({2 * mBlock.size(), kBlockBytes, wanted}));
    }
    const size_t bytes = std::min(mBlock.size() - mBlockEnd, unread);
    const qint64 count = mFile.read(mBlock.data() + mBlockEnd, static_cast<qint64>(bytes));
    if (count < 0) {
        throw CaseError(mName + ": " + mFile.errorString().toStdString());
    }
    mBlockEnd += static_cast<size_t>(count);
    return count > 0;
}

} // namespace base
