#include "PlayList.h"

#include <QFileInfo>

namespace control {

namespace {
QString entryText(const configuration::CaseEntry& entry)
{
    return QStringLiteral("%1 x %2").arg(entry.mRepetitions).arg(entry.mFileName);
}

bool isNamed(const configuration::CaseEntry& entry, const QString& name)
{
    return QFileInfo(entry.mFileName.trimmed()).completeBaseName() == name;
}
} // namespace

QStringList PlayList::lines() const
{
    QStringList lines;
    const auto& configurations = mCases.configurations();
    for (auto it = configurations.begin(); it != configurations.end(); ++it) {
        QStringList entries;
        for (const configuration::CaseEntry& entry : it.value()) {
            entries += entryText(entry);
        }
        const bool isContinuous = it.key() == mCases.continuousNumber();
        lines += QString::number(it.key()) + QStringLiteral("  ") +
                 entries.join(QStringLiteral(", ")) +
                 (isContinuous ? QStringLiteral("  (continuous from the start)") : QString());
    }
    return lines;
}

QString PlayList::find(const QString& nameOrNumber, qint32* number) const
{
    bool isNumber = false;
    const uint asNumber = nameOrNumber.toUInt(&isNumber);
    if (isNumber) {
        const auto count = static_cast<uint>(mCases.configurations().size());
        if (asNumber >= count) {
            return QStringLiteral("%1: no such configuration; there are %2, numbered from 0")
                .arg(nameOrNumber)
                .arg(count);
        }
        *number = static_cast<qint32>(asNumber);
        return {};
    }
    const QList<qint32> numbers = numbersOf(nameOrNumber);
    if (numbers.isEmpty()) {
        return QStringLiteral("'%1': no configuration plays a value file of that name")
            .arg(nameOrNumber);
    }
    if (numbers.size() > 1) {
        QStringList texts;
        for (const qint32 each : numbers) {
            texts += QString::number(each);
        }
        return QStringLiteral("'%1' is played by several configurations; give a number: %2")
            .arg(nameOrNumber, texts.join(QStringLiteral(", ")));
    }
    *number = numbers.first();
    return {};
}

/** The configurations that play a file of that name. */
QList<qint32> PlayList::numbersOf(const QString& name) const
{
    QList<qint32> numbers;
    const auto& configurations = mCases.configurations();
    for (auto it = configurations.begin(); it != configurations.end(); ++it) {
        for (const configuration::CaseEntry& entry : it.value()) {
            if (isNamed(entry, name)) {
                numbers += it.key();
                break;
            }
        }
    }
    return numbers;
}

} // namespace control
