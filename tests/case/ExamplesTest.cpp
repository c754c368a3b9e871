#include <nlohmann/json.hpp>

#include <cmath>

#include "SandboxedTest.h"
#include "base/Numbers.h"

using testing::HasSubstr;

namespace {
constexpr double kPeakCounts = 1000.0 * 1.4142135623730951; ///< of 1 V or 1 A rms
constexpr size_t kPhases = 3;

double sineOf(double degrees)
{
    return std::sin(std::fmod(degrees, 360.0) * base::kRadiansPerDegree);
}

struct Phasor
{
    double mRms;
    double mDegrees;
};

using Phasors = std::array<Phasor, kPhases>;

Phasors balanced(double rms, double degrees)
{
    return {{{rms, degrees}, {rms, degrees - 120.0}, {rms, degrees + 120.0}}};
}

/** A state of an example in closed form. */
struct ClosedState
{
    Phasors mVoltages;
    Phasors mCurrents;
    std::array<double, kPhases> mTau{};      ///< s, of an offset; 0 for none
    std::array<size_t, kPhases> mOffsetOf{}; ///< in which state that offset begins
    bool mHasHarmonics = false;
    bool mSwings = false;
    bool mHasInrush = false;
};

struct Example
{
    const char* mName;
    std::vector<ClosedState> mStates;
    bool mIsSaturated;
};

const Phasors kNoCurrents = balanced(0.0, 0.0);
const Phasors kOfTwoPhases = {{{60, -70}, {65, 170}, {5, 90}}};

const Example kExamples[] = {
    {"ct-saturation",
     {{balanced(230, 0), balanced(1, -20)},
      {balanced(80, 0), balanced(20, -80), {0.08, 0.08, 0.08}, {1, 1, 1}},
      {balanced(230, 0), kNoCurrents}},
     true},
    {"evolving-fault",
     {{balanced(230, 0), balanced(5, -30)},
      {{{{90, -5}, {230, -120}, {230, 120}}}, {{{60, -70}, {5, -150}, {5, 90}}}, {0.05}, {1}},
      {{{{90, -5}, {85, -125}, {230, 120}}}, kOfTwoPhases, {0.05, 0.05}, {1, 2}},
      {balanced(225, 0), kNoCurrents},
      {balanced(230, 0), balanced(5, -30), {}, {}, true}},
     false},
    {"inrush",
     {{balanced(230, 0), kNoCurrents}, {balanced(230, 0), kNoCurrents, {}, {}, false, false, true}},
     false},
    {"power-swing",
     {{balanced(230, 0), balanced(5, -10)},
      {balanced(60, -10), balanced(30, -80)},
      {balanced(225, 0), balanced(6, -15), {}, {}, false, true},
      {balanced(225, 0), balanced(6, -15)}},
     false},
};

/** The lines of an example's value file, beside its closed form. */
class ClosedExample
{
public:
    ClosedExample(const Example& example, const std::string& values, const std::string& truth)
        : mExample(example)
    {
        for (const std::string& text : split(values, '\n')) {
            if (text[0] != '#') {
                const Words fields = split(text, ';');
                mSeconds.push_back(std::stod(fields.at(1)));
                mCounts.emplace_back();
                for (size_t channel = 0; channel < 8; ++channel) {
                    mCounts.back()[channel] = std::stod(fields.at(5 + channel));
                }
            }
        }
        const auto states = nlohmann::json::parse(truth);
        for (const auto& state : states.at("states")) {
            mBegins.push_back(state.at("begin").at("line"));
        }
    }

    /** The largest difference of a count from the closed form. */
    double largestError()
    {
        double largest = 0.0;
        size_t state = 0;
        for (size_t line = 0; line < mCounts.size(); ++line) {
            state += state + 1 < mBegins.size() && mBegins[state + 1] == line ? 1 : 0;
            double sum = 0.0;
            for (size_t phase = 0; phase < kPhases; ++phase) {
                const double current = saturated(phase, currentAt(state, phase, line));
                sum += current;
                largest = std::max({largest,
                                    std::abs(mCounts[line][phase] - voltageAt(state, phase, line)),
                                    std::abs(mCounts[line][4 + phase] - current)});
            }
            largest =
                std::max({largest, std::abs(mCounts[line][3]), std::abs(mCounts[line][7] - sum)});
        }
        return largest;
    }

    const std::vector<size_t>& begins() const { return mBegins; }

private:
    double secondsSince(size_t state, size_t line) const
    {
        return mSeconds[line] - mSeconds[mBegins[state]];
    }

    double swingAt(size_t state, size_t line) const
    {
        return mExample.mStates[state].mSwings ? sineOf(360.0 * 1.2 * secondsSince(state, line))
                                               : 0.0;
    }

    double voltageAt(size_t number, size_t phase, size_t line) const
    {
        const ClosedState& state = mExample.mStates[number];
        const auto [rms, angle] = state.mVoltages[phase];
        const double degrees = double(line) + angle;
        const double harmonics =
            state.mHasHarmonics ? 0.03 * sineOf(5 * degrees) + 0.02 * sineOf(7 * degrees + 180.0)
                                : 0.0;
        return kPeakCounts * rms * (1.0 - 0.1 * swingAt(number, line)) *
               (sineOf(degrees) + harmonics);
    }

    double waveAt(size_t state, size_t phase, size_t line) const
    {
        const auto [rms, angle] = mExample.mStates[state].mCurrents[phase];
        const double swing = swingAt(state, line);
        return kPeakCounts * rms * (1.0 + 0.4 * swing) *
               sineOf(double(line) + angle + 20.0 * swing);
    }

    double currentAt(size_t number, size_t phase, size_t line) const
    {
        const ClosedState& state = mExample.mStates[number];
        double current = waveAt(number, phase, line);
        if (state.mTau[phase] > 0.0) {
            const size_t since = state.mOffsetOf[phase];
            const size_t begin = mBegins[since];
            current += (waveAt(since - 1, phase, begin) - waveAt(since, phase, begin)) *
                       std::exp(-secondsSince(since, line) / state.mTau[phase]);
        }
        return current + (state.mHasInrush ? inrushAt(number, phase, line) : 0.0);
    }

    /** Up to 40 A above a flux of 1.2; the DC component of the flux decays with 0.2 s. */
    double inrushAt(size_t state, size_t phase, size_t line) const
    {
        const double remanence = phase == 0 ? 0.4 : -0.2;
        const double angle = mExample.mStates[state].mVoltages[phase].mDegrees + 90.0;
        const double flux = (remanence + sineOf(double(mBegins[state]) + angle)) *
                                std::exp(-secondsSince(state, line) / 0.2) -
                            sineOf(double(line) + angle);
        return std::copysign(std::max(0.0, std::abs(flux) - 1.2), flux) / 0.8 * 40'000.0;
    }

    /** By the volt-second area: a knee of 100 V, 2 ohms, a remanence of 0.3. */
    double saturated(size_t phase, double current)
    {
        if (!mExample.mIsSaturated) {
            return current;
        }
        const double limit = std::sqrt(2.0) * 100.0 / (base::kTwoPi * 50.0);
        const double fluxOfCount = 2.0 / 1000.0 / (50.0 * 360.0);
        mFlux.resize(kPhases, 0.3 * limit);
        const double next = std::clamp(mFlux[phase] + current * fluxOfCount, -limit, limit);
        return (next - std::exchange(mFlux[phase], next)) / fluxOfCount;
    }

    const Example& mExample;
    std::vector<double> mSeconds;
    std::vector<std::array<double, 8>> mCounts;
    std::vector<size_t> mBegins; ///< of the states
    std::vector<double> mFlux;
};
} // namespace

class ExamplesTest : public SandboxedTest
{
};

/** Each agrees with its description to the last count, and reaches the driver unchanged. */
TEST_F(ExamplesTest, MatchTheirDescriptionAndArePlayed)
{
    std::string configuration;
    for (const Example& example : kExamples) {
        const std::string name = example.mName;
        const CommandResult result =
            mRunner.run({VX_CASE, "generate", "--states", VX_EXAMPLES "/" + name + ".toml",
                         "--truth", "truth.json", "-o", name + ".csv"});
        ASSERT_EQ(result.mExitCode, 0) << result;
        ClosedExample closed(example, mRunner.readFile(name + ".csv"),
                             mRunner.readFile("truth.json"));
        ASSERT_EQ(closed.begins().size(), example.mStates.size());
        EXPECT_EQ(closed.begins()[1] % 360, 0U) << "at A@0, or after whole periods";
        EXPECT_LE(closed.largestError(), 1.0) << name;
        configuration += "0,1," + name + ".csv\n";
    }
    mRunner.writeFile("vx-simulator.conf", configuration);
    const CommandResult played =
        sandbox({"--for", "8.5", "--record", "r.bin", "--events", "e.jsonl"}, kSimulator);
    ASSERT_EQ(played.mExitCode, 0) << played;
    const CommandResult explained = mRunner.run(
        {VX_CASE, "explain", "r.bin", "--config", "vx-simulator.conf", "--events", "e.jsonl"});
    EXPECT_EQ(explained.mExitCode, 0) << explained;
    EXPECT_THAT(explained.mOutput, HasSubstr("power-swing.csv "));
    EXPECT_THAT(explained.mOutput, HasSubstr("verdict: good: "));
}
