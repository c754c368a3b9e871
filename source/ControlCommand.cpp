#include "ControlCommand.h"

#include "LogText.h"

namespace {
const QChar kOnceMark = QLatin1Char('s');
}

ControlCommand::ControlCommand(const QString& line, int configurationCount)
    : mOnce(line.startsWith(kOnceMark)),
      mNumberText(mOnce ? line.mid(1) : line),
      mProblem(convert(configurationCount))
{
}

ControlCommand::Problem ControlCommand::convert(int configurationCount)
{
    if (mOnce && mNumberText.isEmpty()) {
        return Problem::TooShort;
    }
    bool ok = false;
    mNumber = static_cast<qint32>(mNumberText.toUInt(&ok));
    if (!ok) {
        return Problem::NoNumber;
    }
    return mNumber < 0 || mNumber >= configurationCount ? Problem::NoSuchConfiguration
                                                        : Problem::None;
}

std::string ControlCommand::error() const
{
    switch (mProblem) {
        case Problem::None:
            break;
        case Problem::TooShort:
            return "Config Cmd to small!";
        case Problem::NoNumber:
            return "Could not convert " + excerpt(mNumberText) + "to unsigned";
        case Problem::NoSuchConfiguration:
            return "Wrong Config: " + std::to_string(mNumber);
    }
    return {};
}
