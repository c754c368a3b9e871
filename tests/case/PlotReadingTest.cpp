#include <gmock/gmock.h>

#include <cmath>

#include "base/CaseError.h"
#include "base/Numbers.h"
#include "plot/AxisTicks.h"
#include "plot/PictureReader.h"

using testing::ElementsAre;

namespace {
constexpr double kRate = 1000.0;

/** A sine of 1 V and 50 Hz from a time on, which doubles for a while, in blocks of any size. */
class Swell : public waveform::SignalSource
{
public:
    struct Shape
    {
        size_t mFirst = 0;    ///< sample that is given first
        size_t mEnd = 5000;   ///< behind the last
        size_t mBlock = 256;  ///< samples
        double mOffset = 0.0; ///< V, of a single sample
        double mDelay = 0.0;  ///< s, of all times
        size_t mSwell = 3000; ///< sample that the swell begins at; 100 ms long
    };

    explicit Swell(const Shape& shape) : mShape(shape), mNext(shape.mFirst)
    {
        mDescription.mNominalHz = 50.0;
        mDescription.mChannels.resize(1);
        mDescription.mChannels[0].mUnit = "V";
    }

    const waveform::SignalDescription& description() const override { return mDescription; }
    double progress() const override { return 0.0; }

    bool read(waveform::SignalBlock& block) override
    {
        block.mFirst = mNext - mShape.mFirst;
        block.resize(1, std::min(mShape.mBlock, mShape.mEnd - mNext));
        for (size_t i = 0; i < block.size(); ++i, ++mNext) {
            const double seconds = static_cast<double>(mNext) / kRate;
            const bool isHigh = mNext >= mShape.mSwell && mNext < mShape.mSwell + 100;
            block.mSeconds[i] = seconds + mShape.mDelay;
            block.mValues[0][i] = (isHigh ? 2.0 : 1.0) * std::sin(100.0 * base::kPi * seconds) +
                                  (mNext == 700 ? mShape.mOffset : 0.0);
        }
        return block.size() > 0;
    }

private:
    waveform::SignalDescription mDescription;
    Shape mShape;
    size_t mNext;
};

/** Reads two signals for a picture. */
class PictureReaderTest : public testing::Test
{
protected:
    void read(const Swell::Shape& left, const Swell::Shape& right,
              const plot::MomentRequest& request = {})
    {
        for (const Swell::Shape& shape : {left, right}) {
            mSignals.push_back(std::make_unique<plot::DrawnSignal>(
                std::make_unique<Swell>(shape), std::vector<std::string>(), 0.0, 1000));
        }
        mDifference = std::make_unique<plot::Difference>(mSignals[0]->channels(),
                                                         mSignals[1]->channels(), 1000);
        mChooser = std::make_unique<plot::MomentChooser>(
            request, std::vector<plot::PlayedPart>(),
            std::vector<plot::GivenCommand>{{1.0, "command “1”"}});
        base::ProgressLine progress("reading");
        readSignals(mSignals, mDifference.get(), *mChooser, 1000, progress);
    }

    std::vector<plot::ShownSpan> shown() const
    {
        return mChooser->choose(mSignals[0]->overview(), 0.0, 5.0);
    }

    std::vector<std::unique_ptr<plot::DrawnSignal>> mSignals;
    std::unique_ptr<plot::Difference> mDifference;
    std::unique_ptr<plot::MomentChooser> mChooser;
};
} // namespace

/** With any blocks and beginnings, the windows have all samples of both signals. */
TEST_F(PictureReaderTest, KeepsTheWindowsOfBoth)
{
    read({0, 5000, 16}, {500, 6000, 4096});
    const std::vector<plot::ShownSpan> spans = shown();
    ASSERT_EQ(spans.size(), 3);
    EXPECT_EQ(spans[0].mTitle, "1 s: command “1”");
    EXPECT_NEAR(spans[1].mSpan.mFrom, 3.0 - 2.25 / 50.0, 0.003);
    EXPECT_NEAR(*spans[2].mMark, 3.1, 0.003);
    for (const plot::ShownSpan& span : spans) {
        for (const auto& signal : mSignals) {
            const std::vector<plot::Point> points = signal->windows().curve(span.mSpan, 0, 1000);
            EXPECT_NEAR(static_cast<double>(points.size()), 0.1 * kRate, 1.0) << span.mTitle;
            EXPECT_NEAR(points.front().mX, span.mSpan.mFrom, 1.0 / kRate);
        }
    }
}

TEST_F(PictureReaderTest, ShowsTheRequestedTime)
{
    read({}, {}, {2.0, {}, {}});
    EXPECT_EQ(shown()[0].mTitle, "around 2 s");
    EXPECT_EQ(mSignals[1]->windows().curve(shown()[0].mSpan, 0, 1000).size(), 201);
    const plot::MomentChooser tooLate({9.0, {}, {}}, {}, {});
    EXPECT_THROW(tooLate.choose(mSignals[0]->overview(), 0.0, 5.0), base::CaseError);
    const plot::MomentChooser empty({{}, 3.0, 2.0}, {}, {});
    EXPECT_THROW(empty.choose(mSignals[0]->overview(), 0.0, 5.0), base::CaseError);
}

/** For a steady signal without commands, the beginning is shown. */
TEST_F(PictureReaderTest, ShowsTheBeginning)
{
    Swell::Shape steady;
    steady.mSwell = 10'000;
    read(steady, steady);
    const plot::MomentChooser chooser({}, {}, {});
    EXPECT_EQ(chooser.choose(mSignals[0]->overview(), 0.0, 5.0)[0].mTitle, "the beginning");
}

/** Compared from the beginning of the later signal; found at the differing sample. */
TEST_F(PictureReaderTest, FindsTheDifference)
{
    read({}, {500, 4000, 4096, 0.25});
    EXPECT_TRUE(mDifference->isKnown());
    EXPECT_NEAR(mDifference->largest(0).mValue, 0.25, 1e-12);
    EXPECT_NEAR(mDifference->largest(0).mSeconds, 0.7, 1e-12);
    EXPECT_EQ(mDifference->curve(0, 0).front().mX, 0.5);
}

TEST_F(PictureReaderTest, ComparesOnlyEqualInstants)
{
    read({}, {0, 5000, 100, 0.0, 0.0001});
    EXPECT_FALSE(mDifference->isKnown());
}

/** Making it coarser later gives the same as a coarse one from the beginning. */
TEST(EnvelopeTest, LimitedEnvelopeEqualsACoarseOne)
{
    for (const int count : {1, 9, 10, 39, 40, 41, 999}) {
        plot::Envelope fine(1, 100);
        plot::Envelope coarse(1, 5);
        for (int i = 0; i < count; ++i) {
            fine.add(i, {std::sin(i * i)});
            coarse.add(i, {std::sin(i * i)});
        }
        fine.limit(5);
        const auto isSame = [](const plot::Point& a, const plot::Point& b) {
            return a.mX == b.mX && a.mY == b.mY;
        };
        const auto left = fine.curve(0);
        const auto right = coarse.curve(0);
        EXPECT_TRUE(std::equal(left.begin(), left.end(), right.begin(), right.end(), isSame))
            << count;
    }
}

TEST(AxisTicksTest, AreRound)
{
    const auto labels = [](const plot::Axis& axis) {
        std::vector<std::string> texts;
        for (const plot::Tick& tick : axis.mTicks) {
            texts.push_back(tick.mLabel);
        }
        return texts;
    };
    EXPECT_THAT(labels(plot::valueAxis(-230.0, 230.0, 5.0)),
                ElementsAre("-200", "-100", "0", "100", "200"));
    EXPECT_THAT(labels(plot::valueAxis(45.0, 55.0, 2.0)), ElementsAre("45", "50", "55"));
    EXPECT_THAT(labels(plot::timeAxis(0.0, 0.9999, 30.0)),
                ElementsAre("0", "0.2", "0.4", "0.6", "0.8", "1"));
    EXPECT_THAT(labels(plot::timeAxis(20'000.0, 20'000.00004, 60.0)),
                ElementsAre("20000", "20000.00001", "20000.00002", "20000.00003", "20000.00004"));
}
