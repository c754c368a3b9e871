#include "CaseConfiguration.h"

#include <log4cxx/level.h>
#include <log4cxx/logger.h>

#include "ConfigurationLine.h"
#include "LogText.h"
#include "PipeOrDevice.h"

namespace configuration {

void CaseConfiguration::keepLogSilent()
{
    log4cxx::Logger::getRootLogger()->setLevel(log4cxx::Level::getOff());
}

bool CaseConfiguration::read(const QString& fileName, Rejected rejected)
{
    mRejected = rejected;
    if (isPipeOrDevice(fileName)) {
        mFileError = local8Bit(fileName) + ": " + kExpectedRegularFile;
        return false;
    }
    if (!openFile(fileName)) {
        QFile file(fileName);
        const QString reason =
            file.open(QIODevice::ReadOnly) ? QStringLiteral("cannot be read") : file.errorString();
        mFileError = local8Bit(fileName) + ": " + local8Bit(reason);
        return false;
    }
    parseLines(-1);
    mFileError = readFailure();
    closeFile();
    return mFileError.empty();
}

std::vector<std::string> CaseConfiguration::valueFiles() const
{
    std::vector<std::string> names;
    for (const QList<CaseEntry>& entries : mConfigurations) {
        for (const CaseEntry& entry : entries) {
            names.push_back(entry.mFileName.toStdString());
        }
    }
    return names;
}

bool CaseConfiguration::parseLine(QString line)
{
    if (mRejected == Rejected::Stop && !mLineErrors.empty()) {
        return false;
    }
    const ConfigurationLine fields(line);
    if (!fields.isValid()) {
        mLineErrors.push_back(linePrefix() + fields.error());
        return false;
    }
    if (fields.number() < 0) {
        mContinuousNumber = static_cast<qint32>(fields.value());
        mContinuousLine = mLineNumber;
    } else {
        mConfigurations[fields.number()].append({mLineNumber, fields.value(), fields.fileName()});
    }
    return true;
}

} // namespace configuration
