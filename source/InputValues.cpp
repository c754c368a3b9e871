#include "InputValues.h"

#include <QStringList>

#include "TrackLog.h"

namespace {
const QChar kSeparator = QLatin1Char(';');
constexpr int kFieldCount = 13;
constexpr int kAuxWordColumn = 2;
constexpr int kFlagsColumn = 3;
constexpr int kFrequencyColumn = 4;
constexpr int kFirstValueColumn = 5;
static_assert(kFirstValueColumn + kChannelCount == kFieldCount);
} // namespace

InputValues::~InputValues() = default;

bool InputValues::parseLine(QString line)
{
    const QStringList fields = line.split(kSeparator);
    if (fields.size() != kFieldCount) {
        logError(mLogger, LOG4CXX_LOCATION, [&] {
            return linePrefix() +
                   "Wrong number of parameter. Expected: " + std::to_string(kFieldCount) +
                   ", found " + std::to_string(fields.size()) + ": " + local8Bit(line);
        });
        return false;
    }
    InputValueItem item;
    item.mSeconds = 0;
    item.mNanoseconds = 0;
    bool ok = parseUInt(fields[kAuxWordColumn], &item.mAuxWord) &&
              parseUInt(fields[kFlagsColumn], &item.mFlags) &&
              parseFloat(fields[kFrequencyColumn], &item.mFrequency);
    for (int channel = 0; ok && channel < kChannelCount; ++channel) {
        ok = parseInt(fields[kFirstValueColumn + channel], &item.mValues[channel]);
    }
    if (ok) {
        mItems.append(item);
    }
    return ok;
}

bool InputValues::parseUInt(QString text, quint32* value)
{
    bool ok = false;
    const quint32 number = text.toUInt(&ok);
    if (!ok) {
        reportField(text, "quint32", LOG4CXX_LOCATION);
        return false;
    }
    *value = number;
    return true;
}

bool InputValues::parseInt(QString text, qint32* value)
{
    bool ok = false;
    const qint32 number = text.toInt(&ok);
    if (!ok) {
        reportField(text, "qint32", LOG4CXX_LOCATION);
        return false;
    }
    *value = number;
    return true;
}

bool InputValues::parseFloat(QString text, float* value)
{
    bool ok = false;
    const float number = text.toFloat(&ok);
    if (!ok) {
        reportField(text, "float", LOG4CXX_LOCATION);
        return false;
    }
    *value = number;
    return true;
}

/** Reports as its caller, whose location it gets. */
void InputValues::reportField(const QString& text, const char* type,
                              const log4cxx::spi::LocationInfo& location) const
{
    logError(mLogger, location, [&] {
        return linePrefix() + "Parameter (" + local8Bit(text) + ") is not of type " + type;
    });
}

void InputValues::resetIterator()
{
    mItems.rewind();
}

InputValueItem* InputValues::nextItem()
{
    return mItems.next();
}
