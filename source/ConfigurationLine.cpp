#include "ConfigurationLine.h"

#include "FieldCount.h"
#include "LogText.h"

namespace {
const QChar kSeparator = QLatin1Char(',');
}

ConfigurationLine::ConfigurationLine(const QString& line)
    : mLine(line), mFields(line.split(kSeparator)), mProblem(convert())
{
}

ConfigurationLine::Problem ConfigurationLine::convert()
{
    if (mFields.size() != kFieldCount) {
        return Problem::FieldCount;
    }
    bool ok = false;
    mNumber = mFields[kNumber].toInt(&ok);
    if (!ok) {
        return Problem::Number;
    }
    mValue = mFields[kValue].toUInt(&ok);
    return ok ? Problem::None : Problem::Value;
}

std::string ConfigurationLine::error() const
{
    switch (mProblem) {
        case Problem::None:
            break;
        case Problem::FieldCount:
            return wrongFieldCount(kFieldCount, mFields.size(), mLine);
        case Problem::Number:
            return "First parameter (" + excerpt(mFields[kNumber]) + ") is not of type quint32";
        case Problem::Value:
            return "Second parameter (" + excerpt(mFields[kValue]) + ") is not of type quint32";
    }
    return {};
}
