/** Loading: the program compared to a plain reader, over file sizes; time and memory per line. */
#include <benchmark/benchmark.h>
#include <log4cxx/logger.h>
#include <malloc.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <QFile>
#include <QList>
#include <QStringList>

#include <algorithm>
#include <memory>
#include <stdexcept>
#include <vector>

#include "BenchFiles.h"
#include "InputValues.h"
#include "LineReader.h"
#include "explain/PlayedFile.h"

namespace {
constexpr int kMillionLines = 1'000'000;

BenchFiles& files()
{
    static BenchFiles sFiles;
    return sFiles;
}

/** A line read in the plain way; the values are stored as the program stores them. */
bool appendPlainLine(const QByteArray& line, QList<InputValueItem>* items)
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
        item.mValues[channel] = fields[5 + channel].toInt(&ok[3 + channel]);
    }
    items->append(item);
    return std::all_of(std::begin(ok), std::end(ok), [](bool good) { return good; });
}

QList<InputValueItem> loadWithPlainReader(const QString& path)
{
    QFile file(path);
    bool ok = file.open(QIODevice::ReadOnly);
    QList<InputValueItem> items;
    while (ok && !file.atEnd()) {
        ok = appendPlainLine(file.readLine(), &items);
    }
    if (!ok) {
        throw std::runtime_error("the plain way failed");
    }
    return items;
}

InputValues load(const QString& path)
{
    InputValues values;
    if (!values.openFile(path) || !values.parseCompleteFile()) {
        throw std::runtime_error("loading failed");
    }
    return values;
}

/** The minimum that loading can do: read the bytes and find the line ends. */
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

/** Cost of one run, in a process of its own. */
struct Cost
{
    double mSeconds;   ///< CPU time
    double mHeapBytes; ///< heap in use afterwards
    double mPeakBytes; ///< growth of the process at its peak
    double mFaults;    ///< pages and huge pages that the kernel had to provide
};

double heapInUse()
{
    const struct mallinfo2 info = mallinfo2();
    return static_cast<double>(info.uordblks) + static_cast<double>(info.hblkhd);
}

rusage usageSoFar()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage;
}

double cpuSeconds()
{
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

/** Runs the operation once; its result is kept until the cost has been measured. */
template <typename Operation>
Cost costOf(const QString& path, Operation operation)
{
    const double heapBefore = heapInUse();
    const rusage before = usageSoFar();
    const double begin = cpuSeconds();
    const auto kept = operation(path);
    const double end = cpuSeconds();
    const rusage after = usageSoFar();
    benchmark::DoNotOptimize(&kept);
    return {end - begin, heapInUse() - heapBefore,
            1024.0 * static_cast<double>(after.ru_maxrss - before.ru_maxrss),
            static_cast<double>(after.ru_minflt - before.ru_minflt)};
}

/**
 * As at the start of the program: untouched memory, and nothing is freed.
 * @param filesBefore number of files that the process has loaded before, and keeps
 */
template <typename Operation>
Cost costInNewProcess(const QString& path, Operation operation, int filesBefore)
{
    int ends[2];
    if (pipe(ends) != 0) {
        throw std::runtime_error("no pipe");
    }
    const pid_t child = fork();
    if (child == 0) {
        using Result = decltype(operation(path));
        std::vector<std::unique_ptr<Result>> kept;
        for (int file = 0; file < filesBefore; ++file) {
            kept.emplace_back(new Result(operation(path))); // nothing is copied, nothing freed
        }
        const Cost cost = costOf(path, operation);
        _exit(write(ends[1], &cost, sizeof(cost)) == sizeof(cost) ? 0 : 1);
    }
    close(ends[1]);
    Cost cost{};
    if (read(ends[0], &cost, sizeof(cost)) != sizeof(cost)) {
        throw std::runtime_error("the child failed");
    }
    close(ends[0]);
    waitpid(child, nullptr, 0);
    return cost;
}

template <typename Operation>
void measure(benchmark::State& state, Operation operation, int filesBefore = 0)
{
    const auto lines = static_cast<int>(state.range(0));
    const QString path = files().valueFile(lines);
    Cost cost{};
    for (auto _ : state) {
        cost = costInNewProcess(path, operation, filesBefore);
        state.SetIterationTime(cost.mSeconds);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * QFile(path).size());
    using benchmark::Counter;
    state.counters["s/line"] = Counter(
        lines, static_cast<Counter::Flags>(Counter::kIsIterationInvariantRate | Counter::kInvert));
    state.counters["heap_B/line"] = cost.mHeapBytes / lines;
    state.counters["peak_B/line"] = cost.mPeakBytes / lines;
    state.counters["faults"] = cost.mFaults;
}

void plainReader(benchmark::State& state)
{
    measure(state, loadWithPlainReader);
}

void program(benchmark::State& state)
{
    measure(state, load);
}

void programFurtherFile(benchmark::State& state)
{
    measure(state, load, 3);
}

explain::PlayedFile loadToExplain(const QString& path)
{
    explain::PlayedFile file("");
    file.read(path);
    return file;
}

/** The file in the form in which vx-case explain holds it. */
void explainFile(benchmark::State& state)
{
    measure(state, loadToExplain);
}

void floorReadAndFindLineEnds(benchmark::State& state)
{
    measure(state, countLines);
}

void floorReadAndTouchBytes(benchmark::State& state)
{
    measure(state, touchBytes);
}

void floorTouchMemoryForItems(benchmark::State& state)
{
    const auto lines = static_cast<size_t>(state.range(0));
    measure(state, [lines](const QString&) {
        constexpr size_t kPageBytes = 4096;
        std::vector<char> memory;
        memory.reserve(lines * sizeof(InputValueItem));
        for (size_t byte = 0; byte < memory.capacity(); byte += kPageBytes) {
            *const_cast<volatile char*>(memory.data() + byte) = 0;
        }
        return memory;
    });
}

void asTable(benchmark::internal::Benchmark* table)
{
    table->UseManualTime()->Unit(benchmark::kMillisecond)->MinTime(1);
}

BENCHMARK(plainReader)->Arg(kMillionLines)->Apply(asTable);
BENCHMARK(floorReadAndFindLineEnds)->Arg(kMillionLines)->Apply(asTable);
BENCHMARK(floorReadAndTouchBytes)->Arg(kMillionLines)->Apply(asTable);
BENCHMARK(floorTouchMemoryForItems)->Arg(kMillionLines)->Apply(asTable);
BENCHMARK(program)
    ->Arg(10'000)
    ->Arg(100'000)
    ->Arg(kMillionLines)
    ->Arg(5 * kMillionLines)
    ->Apply(asTable);
BENCHMARK(explainFile)->Arg(10'000)->Arg(kMillionLines)->Arg(1'300'000)->Apply(asTable);
BENCHMARK(programFurtherFile)->Arg(10'000)->Apply(asTable);
} // namespace

int main(int argc, char** argv)
{
    log4cxx::Logger::getRootLogger()->setLevel(log4cxx::Level::getOff());
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
