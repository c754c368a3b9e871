#pragma once

#include <QIODevice>
#include <QString>

#include "Wave.h"

/**
 * Writes the wave as an input value file: a comment that records the command line and names the
 * columns, then a line of 13 fields per sample. The sample's number in the file stands in the
 * auxiliary word too, so that a recording of the sample stream shows where each record comes
 * from; the flags are 0.
 *
 * @param output an open device
 * @param commandLine the text after "# made by"; line breaks in it become blanks
 * @return false when the device took less than everything; its errorString() says why
 */
bool writeWave(const Wave& wave, const QString& commandLine, QIODevice& output);
