#include "InputValues.h"

#include <QStringList>

#include "FieldCount.h"
#include "PlainFields.h"
#include "TrackLog.h"

namespace {
const QChar kSeparator = QLatin1Char(';');
constexpr int kFieldCount = 13;

/** The fields of a line as texts, converted by the general operations, which log errors. */
class TextFields
{
public:
    TextFields(InputValues* values, const QStringList& fields) : mValues(values), mFields(fields) {}

    bool skip()
    {
        ++mIndex;
        return true;
    }
    bool read(quint32* value) { return mValues->parseUInt(mFields[mIndex++], value); }
    bool read(qint32* value) { return mValues->parseInt(mFields[mIndex++], value); }
    bool read(float* value) { return mValues->parseFloat(mFields[mIndex++], value); }

private:
    InputValues* mValues;
    const QStringList& mFields;
    int mIndex = 0;
};

static_assert(LineReader::kReadableAfterLines >= PlainFields::kReadableAfter);

/** Reads a line field by field; false at the first field that does not convert. */
template <typename Fields>
bool readItem(Fields* fields, InputValueItem* item)
{
    item->mSeconds = 0;
    item->mNanoseconds = 0;
    bool ok = fields->skip() && fields->skip() && fields->read(&item->mAuxWord) &&
              fields->read(&item->mFlags) && fields->read(&item->mFrequency);
    for (qint32& value : item->mValues) {
        ok = ok && fields->read(&value);
    }
    return ok;
}
} // namespace

InputValues::InputValues() : InputValues(typeid(InputValues)) {}

InputValues::InputValues(const std::type_info& subclass)
{
    setFastPath(subclass, [](CsvParser* parser, std::string_view lines) {
        return static_cast<InputValues*>(parser)->takePlainLine(lines);
    });
}

InputValues::~InputValues() = default;

bool InputValues::parseLine(QString line)
{
    const QStringList fields = line.split(kSeparator);
    if (fields.size() != kFieldCount) {
        logError(mLogger, LOG4CXX_LOCATION,
                 [&] { return linePrefix() + wrongFieldCount(kFieldCount, fields.size(), line); });
        return false;
    }
    InputValueItem item;
    TextFields texts(this, fields);
    if (!readItem(&texts, &item)) {
        return false;
    }
    mItems.append(item);
    return true;
}

size_t InputValues::takePlainLine(std::string_view lines)
{
    if (lines.empty()) {
        return 0;
    }
    PlainFields fields(lines.data());
    if (readItem(&fields, mItems.appendEmpty()) && fields.endLine()) {
        return fields.taken();
    }
    mItems.removeLast();
    return 0;
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

/** Logs at the location of its caller. */
void InputValues::reportField(const QString& text, const char* type,
                              const log4cxx::spi::LocationInfo& location) const
{
    logError(mLogger, location, [&] {
        return linePrefix() + "Parameter (" + excerpt(text) + ") is not of type " + type;
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
