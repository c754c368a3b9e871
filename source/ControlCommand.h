#pragma once

#include <QString>
#include <string>

/**
 * One line of the control FIFO, judged: a number asks for a configuration to be played
 * continuously, "s" and a number for one to be played once. Only reads the text: logs nothing,
 * counts nothing, sends nothing.
 */
class ControlCommand
{
public:
    /**
     * @param line not empty; normally with its line end
     * @param configurationCount the numbers from 0 up to it, without it, are valid
     */
    ControlCommand(const QString& line, int configurationCount);

    bool isValid() const { return mProblem == Problem::None; }

    /** What is wrong, as the program words it. Requires: not isValid(). */
    std::string error() const;

    /** The configuration asked for, from 0 on. Requires: isValid(). */
    qint32 number() const { return mNumber; }

    /** To be played once, else continuously. */
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
