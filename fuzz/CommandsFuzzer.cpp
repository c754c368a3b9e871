/**
 * Operator commands: whatever arrives in the control FIFO, in one piece or in two, every call
 * returns, and each complete line has the effect that a short independent model predicts.
 */
#include <fcntl.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>

#include <QList>

#include "Configuration.h"
#include "FixedPaths.h"
#include "FuzzProcess.h"

namespace {
constexpr int kConfigurations = 3;
constexpr size_t kMaxBytes = 4096;

/** The current configuration after a command and one selection; -1 if the line is rejected. */
int expectedOf(const QByteArray& line)
{
    const QString text = QString::fromUtf8(line);
    bool ok = false;
    const uint number = (text.startsWith(QLatin1Char('s')) ? text.mid(1) : text).toUInt(&ok);
    return ok && number < kConfigurations ? static_cast<int>(number) : -1;
}

/** Each configuration has one entry, whose repetitions identify it. */
int currentOf(Configuration& configuration)
{
    configuration.selectNextConfiguration();
    configuration.resetIterator();
    return static_cast<int>(configuration.nextItem()->repetitions());
}

int takeAll(Configuration& configuration, const QList<QByteArray>& lines, int from)
{
    for (int line = from; line < lines.size(); ++line) {
        const int expected = expectedOf(lines[line] + '\n');
        require(configuration.readUserInput() == (expected >= 0), "valid lines are taken");
        if (expected >= 0) {
            require(currentOf(configuration) == expected, "the commanded one is selected");
        }
    }
    require(!configuration.readUserInput(), "nothing is left");
    return static_cast<int>(lines.size());
}
} // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/)
{
    enterFuzzProcess();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size == 0 || size > kMaxBytes) {
        return 0;
    }
    Configuration configuration;
    for (int number = 0; number < kConfigurations; ++number) {
        configuration.parseLine(QStringLiteral("%1,%1,x").arg(number));
    }
    const int fifo = open(kControlFifoPath, O_WRONLY | O_NONBLOCK | O_CLOEXEC);
    require(fifo >= 0, "the FIFO has a reader");
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<int>(size));
    const int cut = data[0] % bytes.size();
    int taken = 0;
    for (const QByteArray& arrived : {bytes.left(cut), bytes}) {
        const QByteArray news = arrived.mid(arrived.size() == cut ? 0 : cut);
        require(write(fifo, news.constData(), static_cast<size_t>(news.size())) == news.size(),
                "the FIFO takes the bytes");
        QList<QByteArray> lines = arrived.split('\n');
        lines.removeLast(); // an incomplete line
        taken = takeAll(configuration, lines, taken);
    }
    close(fifo);
    return 0;
}
