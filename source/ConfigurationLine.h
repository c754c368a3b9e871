#pragma once

#include <QString>
#include <QStringList>
#include <string>

/**
 * One line of the case configuration: three fields separated by ",", converted. Only reads the
 * text: logs nothing, counts nothing, opens nothing, so that the tools can check a file like the
 * program.
 */
class ConfigurationLine
{
public:
    /** @param line the text before the first '#', simplified, as CsvParser hands it out */
    explicit ConfigurationLine(const QString& line);

    bool isValid() const { return mProblem == Problem::None; }

    /** The program's message, without "file:line: ". Requires: not isValid(). */
    std::string error() const;

    /** The configuration of the entry; negative when the line chooses the continuous one. */
    qint32 number() const { return mNumber; }

    /** Repetitions of the entry, or the number of the continuous configuration. */
    quint32 value() const { return mValue; }

    /** The value file as in the line; meaningless if number() is negative. */
    QString fileName() const { return mFields.at(kFileName); }

private:
    enum Field : int
    {
        kNumber,
        kValue,
        kFileName,
        kFieldCount
    };
    enum class Problem
    {
        None,
        FieldCount,
        Number,
        Value
    };

    Problem convert();

    QString mLine;
    QStringList mFields;
    qint32 mNumber = 0;
    quint32 mValue = 0;
    Problem mProblem;
};
