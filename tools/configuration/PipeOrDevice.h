#pragma once

#include <QFileInfo>
#include <QString>

namespace configuration {

inline const char* const kExpectedRegularFile = "expected a regular file";

/** Whether opening the file could wait for a writer forever, or reading it could never end. */
inline bool isPipeOrDevice(const QString& fileName)
{
    const QFileInfo info(fileName);
    return info.exists() && !info.isFile() && !info.isDir();
}

} // namespace configuration
