#pragma once

#include <QCommandLineOption>
#include <QCommandLineParser>
#include <QString>
#include <QStringList>

namespace control {

/** The command line of vx-control. */
class ControlOptions
{
public:
    ControlOptions();

    /**
     * Reads the command line, which begins with the program's name.
     * @return what is wrong with it, in one line; empty when it is valid or when only the help or
     *         the version is asked for
     */
    QString read(const QStringList& arguments);

    bool isHelpRequested() const { return mParser.isSet(mHelp); }
    bool isVersionRequested() const { return mParser.isSet(mVersion); }
    static QString helpText();

    /** What to do: "list", "play" or "once". */
    QString verb() const { return mParser.positionalArguments().value(0); }

    /** The name or number to play; empty for "list". */
    QString target() const { return mParser.positionalArguments().value(1); }

    /** The case configuration; empty means the one that the simulator finds. */
    QString caseConfig() const { return mParser.value(mConfig); }

    QString fifo() const { return mParser.value(mFifo); }
    QString log() const { return mParser.value(mLog); }

    /** The file to which the command is appended; empty means none. */
    QString events() const { return mParser.value(mEvents); }

    /** Seconds to wait for an answer in the log; 0 means not at all. */
    double waitSeconds() const { return mWaitSeconds; }

private:
    QString problemOfArguments() const;

    QCommandLineOption mHelp;
    QCommandLineOption mVersion;
    QCommandLineOption mConfig;
    QCommandLineOption mFifo;
    QCommandLineOption mWait;
    QCommandLineOption mLog;
    QCommandLineOption mEvents;
    QCommandLineParser mParser;
    double mWaitSeconds = 0.0;
};

} // namespace control
