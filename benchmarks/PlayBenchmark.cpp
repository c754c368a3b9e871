/** Playing: samples per second when the writer never sleeps, and the CPU share at 50 Hz. */
#include <benchmark/benchmark.h>
#include <log4cxx/logger.h>
#include <sys/resource.h>

#include <stdexcept>

#include "BenchDevice.h"
#include "BenchFiles.h"
#include "InputValues.h"
#include "PrussSimulation.h"
#include "VirtualSystem.h"

namespace {
constexpr int kSamplesPerSecond = 18'000;
constexpr int kMinuteSamples = 60 * kSamplesPerSecond;

InputValues loaded(int lines)
{
    BenchFiles files;
    InputValues values;
    if (!values.openFile(files.valueFile(lines)) || !values.parseCompleteFile()) {
        throw std::runtime_error("loading failed");
    }
    return values;
}

void play(InputValues& values, PrussSimulation& writer)
{
    values.resetIterator();
    while (writer.writeSamples(values) == 0) {
    }
}

double cpuSeconds()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

/** In virtual time sleeps cost nothing, so this measures playing alone. */
void playIntoNull(benchmark::State& state)
{
    VirtualSystem system;
    InputValues values = loaded(static_cast<int>(state.range(0)));
    PrussSimulation writer;
    if (!writer.init()) {
        throw std::runtime_error("no driver");
    }
    const quint64 before = writer.samplesWritten();
    const double cpuBefore = cpuSeconds();
    for (auto _ : state) {
        play(values, writer);
    }
    const auto samples = static_cast<double>(writer.samplesWritten() - before);
    state.counters["samples"] = benchmark::Counter(samples, benchmark::Counter::kIsRate);
    state.counters["core_at_50Hz_%"] =
        100 * (cpuSeconds() - cpuBefore) / (samples / kSamplesPerSecond);
}

BENCHMARK(playIntoNull)->Arg(kSamplesPerSecond)->Arg(kMinuteSamples)->Unit(benchmark::kMillisecond);
} // namespace

int main(int argc, char** argv)
{
    makeBenchDevice();
    log4cxx::Logger::getRootLogger()->setLevel(log4cxx::Level::getOff());
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
