#pragma once

#include <QString>
#include <QStringList>

#include "CaseConfiguration.h"

namespace control {

/**
 * The configurations that can be played, by number or by name. A name is that of a value file,
 * without its path and suffix. Borrows the case configuration.
 */
class PlayList
{
public:
    explicit PlayList(const configuration::CaseConfiguration& cases) : mCases(cases) {}

    /** One line per configuration: number, entries with repetitions, whether it is continuous. */
    QStringList lines() const;

    /**
     * Finds the configuration that the user means.
     * @return the error in one line; empty if *number is set
     */
    QString find(const QString& nameOrNumber, qint32* number) const;

private:
    QList<qint32> numbersOf(const QString& name) const;

    const configuration::CaseConfiguration& mCases;
};

} // namespace control
