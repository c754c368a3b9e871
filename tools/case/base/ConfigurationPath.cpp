#include "base/ConfigurationPath.h"

#include <QFileInfo>

#include "base/CaseError.h"

namespace base {

std::string configurationPath(const std::string& name)
{
    const QString path = QFileInfo(QString::fromStdString(name)).absoluteFilePath();
    if (path.contains(',') || path.contains('#') || path != path.simplified()) {
        throw CaseError(path.simplified().toStdString() +
                        ": expected a path without ',', '#', line ends and blanks in a row, which "
                        "a case configuration cannot hold");
    }
    return path.toStdString();
}

} // namespace base
