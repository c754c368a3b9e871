#include "run/StartTime.h"

#include <QDateTime>

namespace run {

namespace {
constexpr qint64 kNsPerMillisecond = 1'000'000;

QTime timeOf(const std::string& text)
{
    return QTime::fromString(QString::fromStdString(text), QStringLiteral("HH:mm"));
}

QDateTime dateTimeOf(const std::string& text)
{
    return QDateTime::fromString(QString::fromStdString(text), QStringLiteral("yyyy-MM-ddTHH:mm"));
}
} // namespace

std::string startTimeProblem(const std::string& text)
{
    if (timeOf(text).isValid() || dateTimeOf(text).isValid()) {
        return "";
    }
    return "'" + text + "': expected a time such as 22:30 or 2026-11-25T22:30";
}

qint64 startTimeNs(const std::string& text, qint64 nowNs)
{
    const QDateTime now = QDateTime::fromMSecsSinceEpoch(nowNs / kNsPerMillisecond);
    QDateTime start = dateTimeOf(text);
    if (!start.isValid()) {
        start = QDateTime(now.date(), timeOf(text));
        start = start < now ? start.addDays(1) : start;
    }
    return start.toMSecsSinceEpoch() * kNsPerMillisecond;
}

std::string startTimeText(qint64 ns)
{
    return QDateTime::fromMSecsSinceEpoch(ns / kNsPerMillisecond)
        .toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"))
        .toStdString();
}

} // namespace run
