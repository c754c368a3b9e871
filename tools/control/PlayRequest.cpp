#include "PlayRequest.h"

#include <cctype>

namespace control {

namespace {
/** True if the text contains the words without a digit after them. */
bool says(const QByteArray& text, const QByteArray& words)
{
    const int begin = text.indexOf(words);
    if (begin < 0) {
        return false;
    }
    const int end = begin + words.size();
    return end == text.size() || std::isdigit(static_cast<unsigned char>(text[end])) == 0;
}
} // namespace

QByteArray PlayRequest::line() const
{
    return (mOnce ? "s" : "") + QByteArray::number(mNumber) + '\n';
}

RequestVerdict verdictOf(const QByteArray& logLine, const PlayRequest& request)
{
    const QByteArray number = QByteArray::number(request.mNumber);
    const QByteArray way = request.mOnce ? " once" : " continuous";
    if (says(logLine, "Execute Config " + number + way)) {
        return RequestVerdict::Executed;
    }
    if (says(logLine, "Wrong Config: " + number)) {
        return RequestVerdict::Rejected;
    }
    // An unfinished line of another writer was in the FIFO and now precedes ours.
    const bool isGarbled =
        logLine.contains("Could not convert ") && logLine.trimmed().endsWith(number);
    return isGarbled ? RequestVerdict::Rejected : RequestVerdict::Unknown;
}

} // namespace control
