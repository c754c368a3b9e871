#include "CsvParser.h"

#include <QByteArray>

#include <cerrno>
#include <cstring>
#include <new>
#include <string_view>

#include "TrackLog.h"

namespace {
const QChar kCommentMark = QLatin1Char('#');

/** As a read in text mode converts the bytes: every '\r' removed, UTF-8, up to the first NUL. */
QString toText(std::string_view bytes)
{
    QByteArray line(bytes.data(), static_cast<int>(bytes.size()));
    line.replace("\r", "");
    return QString::fromUtf8(line);
}

QString dataPart(const QString& text)
{
    return text.split(kCommentMark).first().simplified();
}
} // namespace

CsvParser::CsvParser()
{
    initTrack("CsvParser");
}

CsvParser::~CsvParser() = default;

bool CsvParser::openFile(const QString& fileName)
{
    mFileName = fileName;
    const bool ok = openFileInternal();
    mLineNumber = 0;
    return ok;
}

bool CsvParser::openFileInternal()
{
    mReader.stop();
    mFile.reset();
    auto* const file = new (std::nothrow) QFile(mFileName);
    if (file == nullptr) {
        logFatal(mLogger, LOG4CXX_LOCATION, [] {
            return std::string(
                       "openFileInternal() : Das File-Objekt kann nicht erstellt werden: ") +
                   std::strerror(ENOMEM) + ".";
        });
        return false;
    }
    mFile.reset(file);
    if (!mFile->exists()) {
        logFatal(mLogger, LOG4CXX_LOCATION, [this] {
            return "openFileInternal() : Das I/O-Device '" + local8Bit(mFileName) +
                   "' existiert nicht.";
        });
        mFile.reset();
        return false;
    }
    if (!mFile->open(QIODevice::ReadOnly | QIODevice::Text | QIODevice::Unbuffered)) {
        logFatal(mLogger, LOG4CXX_LOCATION, [this] {
            return "openFileInternal() : Das I/O-Device '" + local8Bit(mFileName) +
                   local8Bit(QStringLiteral("' kann nicht geöffnet werden: ")) +
                   local8Bit(mFile->errorString()) + ".";
        });
        mFile.reset();
        return false;
    }
    startReading();
    return true;
}

void CsvParser::setFastPath(const std::type_info& ofClass, TakePlainLine takePlainLine)
{
    mFastClass = &ofClass;
    mTakePlainLine = takePlainLine;
}

/** Requires: the file is at its beginning. */
void CsvParser::startReading()
{
    mReadFailure.clear();
    mReader.start(mFile->handle());
    mHasFastPath = mFastClass != nullptr && *mFastClass == typeid(*this);
}

bool CsvParser::parseCompleteFile()
{
    if (!mFile) {
        logError(mLogger, LOG4CXX_LOCATION, [] { return "config file not found"; });
        return false;
    }
    mLineNumber = 0;
    bool ok = mFile->isOpen() && goToBeginning(LOG4CXX_LOCATION);
    while (ok && mReader.hasLine()) {
        ok = handleLine();
        if (!ok) {
            logError(mLogger, LOG4CXX_LOCATION,
                     [] { return "Problem while handling line. abort."; });
        }
    }
    ok = !reportReadFailure(LOG4CXX_LOCATION) && ok;
    logInfo(mLogger, LOG4CXX_LOCATION,
            [this] { return "Total " + std::to_string(mLineNumber) + " lines parsed."; });
    mReader.stop();
    mFile->close();
    return ok;
}

bool CsvParser::parseNextLine()
{
    mReader.lookAgain();
    if (!mReader.hasLine()) {
        ++mLineNumber;
        return true;
    }
    return handleLine();
}

/** Requires: there is a line. */
bool CsvParser::handleLine()
{
    ++mLineNumber;
    if (takeFastPath()) {
        return true;
    }
    const QString data = dataPart(toText(mReader.takeLine()));
    return data.isEmpty() || parseLine(data);
}

/** True if the fast path has handled the line. Requires: there is a line. */
bool CsvParser::takeFastPath()
{
    if (!mHasFastPath) {
        return false;
    }
    const size_t bytes = mTakePlainLine(this, mReader.wholeLines());
    mReader.drop(bytes);
    return bytes > 0;
}

int CsvParser::parseLines(int maxLines)
{
    if (!mFile || !mFile->exists() || !mFile->isOpen()) {
        return -1;
    }
    mReader.lookAgain();
    if (!mReader.hasLine()) {
        return reportReadFailure(LOG4CXX_LOCATION) ? 0 : -2;
    }
    int count = 0;
    while (maxLines != 0 && mReader.hasLine()) {
        if (handleLine()) {
            ++count;
        }
        --maxLines;
    }
    reportReadFailure(LOG4CXX_LOCATION);
    return count;
}

bool CsvParser::canReadLine() const
{
    return !mFile || mFile->canReadLine();
}

void CsvParser::closeFile()
{
    if (!mFile) {
        return;
    }
    mReader.stop();
    mFile->close();
    mFile.reset();
}

std::string CsvParser::linePrefix(quint32 lineNumber) const
{
    return local8Bit(mFileName) + ":" + std::to_string(lineNumber) + ": ";
}

/**
 * True when the file is at its beginning. A pipe or a device, which cannot seek, is not read. Logs
 * at the location of its caller, as does reportReadFailure().
 */
bool CsvParser::goToBeginning(const log4cxx::spi::LocationInfo& location)
{
    if (mFile->isSequential() || !mFile->seek(0)) {
        logInfo(mLogger, location, [this] {
            return local8Bit(mFileName) +
                   " is not read: it has no beginning to go back to, as a pipe or a device";
        });
        return false;
    }
    startReading();
    return true;
}

/** True when a read has failed. The line that could not be read follows the last counted one. */
bool CsvParser::reportReadFailure(const log4cxx::spi::LocationInfo& location)
{
    const int error = mReader.takeError();
    if (error == 0) {
        return false;
    }
    mReadFailure = linePrefix(mLineNumber + 1) + "Reading failed: " + std::strerror(error);
    logError(mLogger, location, [this] { return mReadFailure; });
    return true;
}
