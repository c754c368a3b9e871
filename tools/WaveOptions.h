#pragma once

#include <QCommandLineOption>
#include <QCommandLineParser>
#include <QString>
#include <QStringList>

#include "WaveParameters.h"

/** The command line of vx-wave. */
class WaveOptions
{
public:
    WaveOptions();

    /**
     * Reads the command line, the program's name first.
     *
     * @return what is wrong with it, in one line with the value and what was expected; empty
     * when parameters() can be used or help is requested
     */
    QString read(const QStringList& arguments);

    /** Whether the help text is all that was asked for. */
    bool isHelpRequested() const { return mParser.isSet(mHelp); }
    static QString helpText();

    /** Requires: read() gave an empty string and help is not requested. */
    const WaveParameters& parameters() const { return mParameters; }

    /** Name of the file to write; empty for standard output. */
    QString outputName() const { return mParser.value(mOutput); }

private:
    QString readValues();

    QCommandLineOption mHelp;
    QCommandLineOption mFrequency;
    QCommandLineOption mDuration;
    QCommandLineOption mAmplitudes;
    QCommandLineOption mPhases;
    QCommandLineOption mHarmonic;
    QCommandLineOption mDisturbance;
    QCommandLineOption mOutput;
    QCommandLineParser mParser;
    WaveParameters mParameters;
};
