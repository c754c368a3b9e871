#pragma once

#include <QList>
#include <QMap>
#include <QString>
#include <string>
#include <vector>

#include "CsvParser.h"

namespace configuration {

/** One entry of a case configuration, as its line gives it. */
struct CaseEntry
{
    quint32 mLineNumber = 0; ///< counted from 1
    quint32 mRepetitions = 0;
    QString mFileName; ///< as in the file
};

/**
 * The case configuration for the tools. Reads the file with the program's own classes, so that the
 * tools accept what the program accepts; touches neither the control FIFO nor the value files.
 *
 * Its base class logs through log4cxx, as in the program; a tool without a log calls
 * keepLogSilent() first.
 */
class CaseConfiguration : private CsvParser
{
public:
    /** What to do after a rejected line: the program stops there and plays what it has read. */
    enum class Rejected
    {
        Stop,
        Continue
    };

    /** Turns off all logging of the process. */
    static void keepLogSilent();

    /**
     * Reads the file. Requires: nothing was read yet.
     * @return false when it cannot be opened or read to its end; fileError() then says why
     */
    bool read(const QString& fileName, Rejected rejected);

    /** Why the file could not be read, in one line that begins with its name; else empty. */
    const std::string& fileError() const { return mFileError; }

    /** The program's message for each rejected line, after "file:line: ". */
    const std::vector<std::string>& lineErrors() const { return mLineErrors; }

    /** The entries of each number, in the order of the file. */
    const QMap<qint32, QList<CaseEntry>>& configurations() const { return mConfigurations; }

    /** The names of the value files, in the order of the numbers; one may come twice. */
    std::vector<std::string> valueFiles() const;

    /** The configuration that is played continuously from the start. */
    qint32 continuousNumber() const { return mContinuousNumber; }

    /** The line that chose the continuous configuration; 0 when none did. */
    quint32 continuousLine() const { return mContinuousLine; }

private:
    bool parseLine(QString line) override;

    Rejected mRejected = Rejected::Stop;
    QMap<qint32, QList<CaseEntry>> mConfigurations;
    qint32 mContinuousNumber = 0;
    quint32 mContinuousLine = 0;
    std::vector<std::string> mLineErrors;
    std::string mFileError;
};

} // namespace configuration
