#include "base/ConfigurationPath.h"

#include <QFileInfo>

#include "base/CaseError.h"

namespace base {

std::string configurationPath(const std::string& name)
{
    const QString path = QFileInfo(QString::fromStdString(name)).absoluteFilePath();
    if (path.contains(',') || path.contains('#') || path != path.simplified()) {
        throw CaseError(path.simplified().toStdString() +
                        ": a case configuration cannot have this path; expected one without ',', "
                        "'#', line ends and repeated blanks");
    }
    return path.toStdString();
}

} // namespace base
