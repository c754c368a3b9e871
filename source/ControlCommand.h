#pragma once

#include <QString>
#include <string>

/**
 * One line of the control FIFO, parsed: a number selects a configuration to be played continuously,
 * "s" and a number one to be played once. Only reads the text: logs nothing, counts nothing, sends
 * nothing.
 */
class ControlCommand
{
public:
    /**
     * @param line not empty; normally with its line end
     * @param configurationCount the numbers below it are valid
     */
    ControlCommand(const QString& line, int configurationCount);

    bool isValid() const { return mProblem == Problem::None; }

    /** The program's message. Requires: not isValid(). */
    std::string error() const;

    /** The selected configuration, from 0 on. Requires: isValid(). */
    qint32 number() const { return mNumber; }

    /** Whether it is played once; otherwise continuously. */
    bool isOnce() const { return mOnce; }

private:
    enum class Problem
    {
        None,
        TooShort,
        NoNumber,
        NoSuchConfiguration
    };

    Problem convert(int configurationCount);

    bool mOnce;
    QString mNumberText;
    qint32 mNumber = 0;
    Problem mProblem;
};
