/** Loading: the program against the plain way, over file sizes; time and memory a line. */
#include <benchmark/benchmark.h>
#include <log4cxx/logger.h>
#include <malloc.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QFile>
#include <QList>
#include <QStringList>

#include <algorithm>
#include <stdexcept>
#include <string_view>

#include "BenchFiles.h"
#include "InputValues.h"
#include "LineReader.h"

namespace {
constexpr int kMillionLines = 1'000'000;

BenchFiles& files()
{
    static BenchFiles sFiles;
    return sFiles;
}

/** A line as anybody would read it; the values go the way that the program's would. */
bool appendPlainly(const QByteArray& line, QList<InputValueItem>* items)
{
    const QStringList fields = QString::fromUtf8(line).split(QLatin1Char(';'));
    if (fields.size() != 13) {
        return false;
    }
    InputValueItem item;
    bool ok[11];
    item.mSeconds = 0;
    item.mNanoseconds = 0;
    item.mAuxWord = fields[2].toUInt(&ok[0]);
    item.mFlags = fields[3].toUInt(&ok[1]);
    item.mFrequency = fields[4].toFloat(&ok[2]);
    for (int channel = 0; channel < kChannelCount; ++channel) {
        item.mValues[channel] = fields[5 + channel].trimmed().toInt(&ok[3 + channel]);
    }
    items->append(item);
    return std::all_of(std::begin(ok), std::end(ok), [](bool good) { return good; });
}

void loadPlainly(const QString& path)
{
    QFile file(path);
    bool ok = file.open(QIODevice::ReadOnly);
    QList<InputValueItem> items;
    while (ok && !file.atEnd()) {
        ok = appendPlainly(file.readLine(), &items);
    }
    if (!ok) {
        throw std::runtime_error("the plain way failed");
    }
    benchmark::DoNotOptimize(items);
}

void load(const QString& path, InputValues* values)
{
    if (!values->openFile(path) || !values->parseCompleteFile()) {
        throw std::runtime_error("loading failed");
    }
}

/** The least that loading could do: read the bytes and find the line ends. */
size_t countLines(const QString& path)
{
    QFile file(path);
    file.open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    LineReader reader;
    reader.start(file.handle());
    size_t bytes = 0;
    while (reader.hasLine()) {
        bytes += reader.takeLine().size();
    }
    return bytes;
}

/** Reads the bytes and looks at each of them. */
quint64 touchBytes(const QString& path)
{
    QFile file(path);
    file.open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    static char sBlock[64 * 1024];
    quint64 sum = 0;
    for (qint64 count = 0; (count = file.read(sBlock, sizeof(sBlock))) > 0;) {
        for (qint64 i = 0; i < count; ++i) {
            sum += static_cast<unsigned char>(sBlock[i]);
        }
    }
    return sum;
}

struct Memory
{
    double mKept; ///< bytes of heap in use after loading
    double mPeak; ///< bytes that the process grew by at its largest
};

double heapInUse()
{
    const struct mallinfo2 info = mallinfo2();
    return static_cast<double>(info.uordblks) + static_cast<double>(info.hblkhd);
}

double peakResident()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return 1024.0 * static_cast<double>(usage.ru_maxrss);
}

/** In a process of its own, so that nothing that was loaded before counts. */
Memory memoryOf(const QString& path)
{
    int ends[2];
    if (pipe(ends) != 0) {
        throw std::runtime_error("no pipe");
    }
    const pid_t child = fork();
    if (child == 0) {
        const double heapBefore = heapInUse();
        const double peakBefore = peakResident();
        InputValues values;
        load(path, &values);
        const Memory memory{heapInUse() - heapBefore, peakResident() - peakBefore};
        _exit(write(ends[1], &memory, sizeof(memory)) == sizeof(memory) ? 0 : 1);
    }
    Memory memory{};
    if (read(ends[0], &memory, sizeof(memory)) != sizeof(memory)) {
        throw std::runtime_error("the loading child failed");
    }
    waitpid(child, nullptr, 0);
    close(ends[0]);
    close(ends[1]);
    return memory;
}

/** Runs the operation on a file of that many lines; bytes a second and ns a line. */
template <typename Operation>
void measure(benchmark::State& state, Operation operation)
{
    const auto lines = static_cast<int>(state.range(0));
    const QString path = files().valueFile(lines);
    for (auto _ : state) {
        operation(path);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * QFile(path).size());
    state.counters["s_per_line"] = benchmark::Counter(
        static_cast<double>(lines),
        benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void plainWay(benchmark::State& state)
{
    measure(state, loadPlainly);
}

void program(benchmark::State& state)
{
    const Memory memory = memoryOf(files().valueFile(static_cast<int>(state.range(0))));
    measure(state, [](const QString& path) {
        InputValues values;
        load(path, &values);
    });
    const auto lines = static_cast<double>(state.range(0));
    state.counters["kept_B_per_line"] = memory.mKept / lines;
    state.counters["peak_B_per_line"] = memory.mPeak / lines;
}

void readAndFindLineEnds(benchmark::State& state)
{
    measure(state, [](const QString& path) { benchmark::DoNotOptimize(countLines(path)); });
}

void readAndTouchBytes(benchmark::State& state)
{
    measure(state, [](const QString& path) { benchmark::DoNotOptimize(touchBytes(path)); });
}

BENCHMARK(plainWay)->Arg(kMillionLines)->Unit(benchmark::kMillisecond);
BENCHMARK(readAndFindLineEnds)->Arg(kMillionLines)->Unit(benchmark::kMillisecond);
BENCHMARK(readAndTouchBytes)->Arg(kMillionLines)->Unit(benchmark::kMillisecond);
BENCHMARK(program)
    ->Arg(10'000)
    ->Arg(100'000)
    ->Arg(kMillionLines)
    ->Arg(5 * kMillionLines)
    ->Unit(benchmark::kMillisecond);
} // namespace

int main(int argc, char** argv)
{
    log4cxx::Logger::getRootLogger()->setLevel(log4cxx::Level::getOff());
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
