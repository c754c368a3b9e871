/**
 * Pacing compared with a loop of relative sleeps for the same blocks: over a long virtual time with
 * sleeps that end late, as a kernel's do, and then over the given number of real seconds.
 * Usage: vx-bench-pacing [SECONDS] (of real time; none by default)
 */
#include <log4cxx/logger.h>

#include <QThread>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <future>
#include <random>
#include <vector>

#include "BenchDevice.h"
#include "InputValues.h"
#include "PrussSimulation.h"
#include "TimeUtils.h"
#include "VirtualSystem.h"

namespace {
constexpr qint64 kStepNanoseconds = 55'555;
constexpr qint64 kBurstSamples = 11 * 360;
constexpr qint64 kBurstNanoseconds = kBurstSamples * kStepNanoseconds;
constexpr qint64 kNanosecondsPerSecond = 1'000'000'000;
constexpr qint64 kMinutes = 10;
constexpr qint64 kBursts = kMinutes * 60 * kNanosecondsPerSecond / kBurstNanoseconds;
constexpr qint64 kMaxLateness = 100'000;
constexpr unsigned kSeed = 20240229;

/** Lateness of sleeps in ns, the same sequence for both loops. */
class LateSleeps
{
public:
    explicit LateSleeps(VirtualSystem* system) : mSystem(system) {}

    /** Starts the sleeps of the next burst. */
    void renew() { mSystem->mOversleep = mLateness(mRandom); }

private:
    VirtualSystem* mSystem;
    std::mt19937 mRandom{kSeed};
    std::uniform_int_distribution<qint64> mLateness{50'000, kMaxLateness};
};

InputValues oneBurst()
{
    InputValues values;
    for (qint64 sample = 0; sample < kBurstSamples; ++sample) {
        values.parseLine(QStringLiteral(";;0;0;50;1;2;3;4;5;6;7;8"));
    }
    return values;
}

/** The sleeps that the writer requests, in ns: each is the writer's lead before it. */
std::vector<qint64> leadsOfWriter()
{
    VirtualSystem system;
    LateSleeps late(&system);
    InputValues values = oneBurst();
    PrussSimulation writer;
    if (!writer.init()) {
        return {};
    }
    for (qint64 burst = 0; burst < kBursts; ++burst) {
        late.renew();
        values.resetIterator();
        while (writer.writeSamples(values) == 0) {
        }
    }
    return system.mSleeps;
}

/** How late the loop of relative sleeps is at its end, in ns. */
qint64 lagOfRelativeSleeps()
{
    VirtualSystem system;
    LateSleeps late(&system);
    const qint64 start = toNanoseconds(system.mMonotonic);
    for (qint64 burst = 0; burst < kBursts; ++burst) {
        late.renew();
        QThread::usleep(static_cast<unsigned long>(kBurstNanoseconds / 1000));
    }
    return toNanoseconds(system.mMonotonic) - start - kBursts * kBurstNanoseconds;
}

/** Slope of a line through equally spaced values, in units per step. */
double trend(const std::vector<qint64>& values)
{
    const double middle = (static_cast<double>(values.size()) - 1) / 2;
    double sumXy = 0;
    double sumXx = 0;
    for (size_t i = 0; i < values.size(); ++i) {
        const double x = static_cast<double>(i) - middle;
        sumXy += x * static_cast<double>(values[i]);
        sumXx += x * x;
    }
    return sumXy / sumXx;
}

qint64 now()
{
    return toNanoseconds(TimeUtils::monotonicTime());
}

/** Sleeps burst after burst until the time is over. Returns how late it then is, in ns. */
qint64 driftOfRelativeSleeps(qint64 bursts)
{
    const qint64 start = now();
    for (qint64 burst = 0; burst < bursts; ++burst) {
        QThread::usleep(static_cast<unsigned long>(kBurstNanoseconds / 1000));
    }
    return now() - start - bursts * kBurstNanoseconds;
}

/** How far the stream falls behind from its first sleep to its last, in ns. */
qint64 driftOfWriter(qint64 bursts)
{
    InputValues values = oneBurst();
    PrussSimulation writer;
    if (!writer.init()) {
        return -1;
    }
    qint64 first = 0;
    qint64 last = 0;
    for (qint64 burst = 0; burst <= bursts; ++burst) {
        values.resetIterator();
        qint32 result = writer.writeSamples(values);
        // The first block of a burst is paced.
        last = now() - burst * kBurstNanoseconds;
        first = burst == 0 ? last : first;
        while (result == 0) {
            result = writer.writeSamples(values);
        }
    }
    return last - first;
}

void reportRealTime(qint64 seconds)
{
    const qint64 bursts = seconds * kNanosecondsPerSecond / kBurstNanoseconds;
    std::future<qint64> relative =
        std::async(std::launch::async, [bursts] { return driftOfRelativeSleeps(bursts); });
    const qint64 drift = driftOfWriter(bursts);
    std::printf("Pacing over %lld s of real time:\n", static_cast<long long>(seconds));
    std::printf("  lag of the stream at the last sleep against the first, us: %+.1f\n",
                1e-3 * static_cast<double>(drift));
    std::printf("  lag of a loop of relative sleeps at the end, us: %.1f\n",
                1e-3 * static_cast<double>(relative.get()));
}
} // namespace

int main(int argc, char** argv)
{
    makeBenchDevice();
    log4cxx::Logger::getRootLogger()->setLevel(log4cxx::Level::getOff());
    std::vector<qint64> leads = leadsOfWriter();
    if (leads.size() < 2) {
        std::fprintf(stderr, "vx-bench-pacing: nothing was paced\n");
        return 1;
    }
    leads.erase(leads.begin()); // the first block is paced alone
    const auto [least, most] = std::minmax_element(leads.begin(), leads.end());
    std::printf("Pacing over %lld min of virtual time, every sleep 50 to 100 us late:\n",
                static_cast<long long>(kMinutes));
    std::printf("  lead before a sleep, us: least %.1f, most %.1f (eleven blocks: %.1f)\n",
                1e-3 * static_cast<double>(*least), 1e-3 * static_cast<double>(*most),
                1e-3 * static_cast<double>(kBurstNanoseconds));
    std::printf("  trend of the lead: %+.6f us a second\n",
                1e-3 * trend(leads) * 1e9 / static_cast<double>(kBurstNanoseconds));
    std::printf("  lag of a loop of relative sleeps at the end: %.1f us\n",
                1e-3 * static_cast<double>(lagOfRelativeSleeps()));
    if (argc > 1) {
        reportRealTime(std::strtoll(argv[1], nullptr, 10));
    }
    return 0;
}
