#include <benchmark/benchmark.h>

#include <QTemporaryDir>
#include <cmath>

#include "base/ResultFile.h"
#include "importing/Importer.h"
#include "input/OpenInput.h"
#include "waveform/Measures.h"

/**
 * Cost of an import, from the recording to the value file on disk: eight channels at 4,800
 * samples/s, BINARY; and cost of reading a whole recording, as `vx-case info` does.
 */
namespace {
constexpr int kRate = 4800;
constexpr double kTwoPi = 6.28318530717958647692;

std::string configurationOf(int samples, const char* kind)
{
    std::string text = "S,D,1999\n8,8A,0D\n";
    const char* const names[] = {"UA", "UB", "UC", "UN", "IA", "IB", "IC", "IN"};
    for (int i = 0; i < 8; ++i) {
        text += std::to_string(i + 1) + ',' + names[i] + ",,," + (i < 4 ? 'V' : 'A') +
                ",0.02,0,0,-32767,32767,1,1,P\n";
    }
    return text + "50\n1\n4800," + std::to_string(samples) +
           "\n01/01/2020,00:00:00\n01/01/2020,00:00:00\n" + kind + "\n1\n";
}

qint32 valueAt(int sample, int channel)
{
    const double phase = 50.02 * sample / kRate - channel / 3.0;
    return static_cast<qint32>(16'000.0 * std::cos(kTwoPi * phase));
}

int stampOf(int sample)
{
    return static_cast<int>(sample * 1e6 / kRate);
}

std::string asciiDataOf(int samples)
{
    std::string data;
    for (int i = 0; i < samples; ++i) {
        data += std::to_string(i + 1) + ',' + std::to_string(stampOf(i));
        for (int channel = 0; channel < 8; ++channel) {
            data += ',' + std::to_string(valueAt(i, channel));
        }
        data += '\n';
    }
    return data;
}

std::string dataOf(int samples)
{
    std::string data;
    const auto append = [&data](qint32 value, size_t size) {
        data.append(reinterpret_cast<const char*>(&value), size);
    };
    for (int i = 0; i < samples; ++i) {
        append(i + 1, sizeof(qint32));
        append(stampOf(i), sizeof(qint32));
        for (int channel = 0; channel < 8; ++channel) {
            append(valueAt(i, channel), sizeof(qint16));
        }
    }
    return data;
}

void write(const std::string& name, const std::string& bytes)
{
    base::ResultFile file(name);
    file.write(bytes);
    file.commit();
}

void importRecording(benchmark::State& state)
{
    const QTemporaryDir directory;
    const std::string name = directory.filePath("recording").toStdString();
    const int samples = static_cast<int>(state.range(0)) * kRate;
    write(name + ".cfg", configurationOf(samples, "BINARY"));
    write(name + ".dat", dataOf(samples));
    size_t lines = 0;
    for (auto _ : state) {
        const auto source = input::openInput(name + ".cfg", {});
        base::ResultFile output(name + ".csv");
        lines = importing::importSignal(*source, {}, output).mLines;
        output.commit();
    }
    state.counters["lines"] = static_cast<double>(lines);
    state.counters["lines/s"] = benchmark::Counter(static_cast<double>(lines),
                                                   benchmark::Counter::kIsIterationInvariantRate);
}

void readInfo(benchmark::State& state, const char* kind, const std::string& data, int samples)
{
    const QTemporaryDir directory;
    const std::string name = directory.filePath("recording").toStdString();
    write(name + ".cfg", configurationOf(samples, kind));
    write(name + ".dat", data);
    for (auto _ : state) {
        const auto source = input::openInput(name + ".cfg", {});
        waveform::Measures measures(source->description());
        waveform::SignalBlock block;
        while (source->read(block)) {
            measures.add(block);
        }
        benchmark::DoNotOptimize(measures.frequency());
    }
    state.SetBytesProcessed(static_cast<qint64>(data.size()) * state.iterations());
}

void infoOfBinary(benchmark::State& state)
{
    const int samples = static_cast<int>(state.range(0));
    readInfo(state, "BINARY", dataOf(samples), samples);
}

void infoOfAscii(benchmark::State& state)
{
    const int samples = static_cast<int>(state.range(0));
    readInfo(state, "ASCII", asciiDataOf(samples), samples);
}

/** The argument is the length of the recording in s. */
BENCHMARK(importRecording)->Arg(60)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime();

/** The argument is the number of samples; both recordings are about 100 MB. */
BENCHMARK(infoOfBinary)->Arg(4'166'667)->Unit(benchmark::kMillisecond);
BENCHMARK(infoOfAscii)->Arg(1'500'000)->Unit(benchmark::kMillisecond);
} // namespace

BENCHMARK_MAIN();
