#pragma once

#include <QFile>
#include <QString>
#include <memory>
#include <string>
#include <string_view>
#include <typeinfo>

#include "LineReader.h"
#include "TrackObject.h"

/**
 * Base of the program's text formats: owns the file, reads it line by line, removes comments and
 * redundant white space, counts the lines and hands each remaining line to the subclass's
 * parseLine(). Knows nothing of fields or separators.
 *
 * A copy shares the file object of its original; the last of them releases it. Copies are made
 * only while no file is held.
 */
class CsvParser : public TrackObject
{
public:
    CsvParser();
    CsvParser(const CsvParser&) = default;
    CsvParser& operator=(const CsvParser&) = default;
    ~CsvParser() override;

    /**
     * The handler of one line.
     *
     * @param line the text before the first '#', simplified, never empty
     * @return false rejects the line; the handler has then reported and counted it
     */
    virtual bool parseLine(QString line) = 0;

    /**
     * Opens the file and starts at line 0.
     * @return false after a FATAL message when the file does not exist or does not open; no file
     *         is held then.
     */
    bool openFile(const QString& fileName);

    /** The step of openFile() that can fail: creates and opens the file object for mFileName. */
    bool openFileInternal();

    /**
     * Reads the open file from its beginning to its end and closes it; the object is kept.
     * @return true when every line was accepted. false when the handler rejected a line (the
     *         rest is not read), a read failed, the file is closed, or none is held. What the
     *         accepted lines did stays.
     */
    bool parseCompleteFile();

    /** Reads and handles one line; false only when parseLine() rejects it. */
    bool parseNextLine();

    /**
     * Reads and handles at most maxLines further lines (all when negative). A rejected line does
     * not stop it, a failing read does.
     * @return the number of accepted lines; -1 without an open file, -2 at the end of the file.
     */
    int parseLines(int maxLines);

    /** True when no file is held, else QIODevice::canReadLine() of the file. */
    bool canReadLine() const;

    /** Closes and releases the file; nothing when none is held. */
    void closeFile();

    /** Path as last given to openFile(); null until then. */
    const QString& fileName() const { return mFileName; }

protected:
    /**
     * Handles a line from its bytes, before they become text: faster than by parseLine(), with
     * the same result.
     *
     * @param lines whole lines of the file, as LineReader::wholeLines() gives them
     * @return the bytes of the first line, with its line end, when it is accepted and handled;
     *         0 hands it to parseLine()
     */
    using TakePlainLine = size_t (*)(CsvParser* parser, std::string_view lines);

    /**
     * To be called by the constructor of a class that can. Holds for objects of exactly that
     * class: one derived from it may have a parseLine() of its own, which sees every line.
     */
    void setFastPath(const std::type_info& ofClass, TakePlainLine takePlainLine);

    /** "file:line: ", the beginning of every message about a line, in the local encoding. */
    std::string linePrefix() const { return linePrefix(mLineNumber); }

    /** What was logged when a read of the file failed; empty while none has. */
    const std::string& readFailure() const { return mReadFailure; }

    QString mFileName;
    /** Lines read so far; while a line is handled, its number, counted from 1. */
    quint32 mLineNumber = 0;
    std::shared_ptr<QFile> mFile;

private:
    std::string linePrefix(quint32 lineNumber) const;
    void startReading();
    bool handleLine();
    bool takeFastPath();
    bool goToBeginning(const log4cxx::spi::LocationInfo& location);
    bool reportReadFailure(const log4cxx::spi::LocationInfo& location);

    TakePlainLine mTakePlainLine = nullptr;
    const std::type_info* mFastClass = nullptr;
    bool mHasFastPath = false; ///< this object may take it
    LineReader mReader;
    std::string mReadFailure;
};
