#include "CsvParser.h"

#include <QByteArray>

#include <cerrno>
#include <cstring>
#include <new>
#include <string_view>

#include "TrackLog.h"

namespace {
const QChar kCommentMark = QLatin1Char('#');

/** What a read in text mode makes of the bytes: no '\r' anywhere, UTF-8, ended by a NUL. */
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
    mReader.start(mFile->handle());
    return true;
}

bool CsvParser::parseCompleteFile()
{
    if (!mFile) {
        logError(mLogger, LOG4CXX_LOCATION, [] { return "config file not found"; });
        return false;
    }
    mLineNumber = 0;
    bool ok = mFile->isOpen() && mFile->seek(0);
    if (ok) {
        mReader.start(mFile->handle());
    }
    while (ok && mReader.hasLine()) {
        ok = parseNextLine();
        if (!ok) {
            logError(mLogger, LOG4CXX_LOCATION,
                     [] { return "Problem while handling line. abort."; });
        }
    }
    ok = !reportReadFailure() && ok;
    logInfo(mLogger, LOG4CXX_LOCATION,
            [this] { return "Total " + std::to_string(mLineNumber) + " lines parsed."; });
    mReader.stop();
    mFile->close();
    return ok;
}

bool CsvParser::parseNextLine()
{
    const bool hasLine = mReader.hasLine();
    ++mLineNumber;
    if (!hasLine) {
        return true;
    }
    const size_t plainBytes = takePlainLine(mReader.wholeLines());
    if (plainBytes > 0) {
        mReader.drop(plainBytes);
        return true;
    }
    const QString data = dataPart(toText(mReader.takeLine()));
    return data.isEmpty() || parseLine(data);
}

size_t CsvParser::takePlainLine(std::string_view /*lines*/)
{
    return 0;
}

int CsvParser::parseLines(int maxLines)
{
    if (!mFile || !mFile->exists() || !mFile->isOpen()) {
        return -1;
    }
    if (!mReader.hasLine()) {
        return reportReadFailure() ? 0 : -2;
    }
    int count = 0;
    while (maxLines != 0 && mReader.hasLine()) {
        if (parseNextLine()) {
            ++count;
        }
        --maxLines;
    }
    reportReadFailure();
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

/** True when a read has failed; the line that could not be read is the one after the last. */
bool CsvParser::reportReadFailure()
{
    const int error = mReader.takeError();
    if (error == 0) {
        return false;
    }
    logError(mLogger, LOG4CXX_LOCATION, [this, error] {
        return linePrefix(mLineNumber + 1) + "Reading failed: " + std::strerror(error);
    });
    return true;
}
