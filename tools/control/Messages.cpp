#include "Messages.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace control {

QString systemText(int error)
{
    return QString::fromLocal8Bit(std::strerror(error));
}

void warn(const QString& text)
{
    std::fprintf(stderr, "vx-control: %s\n", text.toLocal8Bit().constData());
}

int fail(const QString& problem, int status)
{
    warn(problem);
    return status;
}

int print(const QString& text)
{
    const QByteArray bytes = text.toLocal8Bit();
    errno = 0;
    if (std::fputs(bytes.constData(), stdout) >= 0 && std::fflush(stdout) == 0) {
        return EXIT_SUCCESS;
    }
    return fail(QStringLiteral("cannot write to standard output: ") + systemText(errno));
}

} // namespace control
