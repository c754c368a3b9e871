#pragma once

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>

#include "explain/Explanation.h"

/**
 * Results in short form: "0,1: a.csv x2" is a segment of two passes, "!missing 360 @801" a finding.
 */
class ShortOutput : public explain::ExplanationOutput
{
public:
    void add(const explain::PlayedSegment& it) override
    {
        mText +=
            fmt::format("{}: {} x{}", fmt::join(it.mConfigurations, ","), it.mFile, it.mPasses);
        if (it.mFirstSample > 0 || it.mLastSample + 1 < it.mFileSamples) {
            mText += fmt::format(" [{}-{}]", it.mFirstSample + 1, it.mLastSample + 1);
        }
        mText += "; ";
        mSamples += it.mSamples;
        std::exchange(mFirstSegment, [] {})();
        EXPECT_LE(it.mFirstStampNs, it.mLastStampNs);
    }
    void add(const explain::CommandOutcome& it) override
    {
        mText += it.mText + " ";
        if (it.mFirstSampleArrivalNs) {
            mText += fmt::format("after {}", *it.mFirstSampleArrivalNs - it.mArrivalNs);
        }
        mText += it.mProblem + "; ";
    }
    void add(const explain::Finding& it) override
    {
        mText += fmt::format("!{} {} @{}; ", nameOf(it.mKind).mKey, it.mCount, it.mRecord + 1);
    }
    void add(const explain::Verdict& it) override
    {
        mText += it.mFindings.isClean() ? "good" : "bad";
    }

    std::string mText;
    size_t mSamples = 0; ///< of all segments
    std::function<void()> mFirstSegment = [] {};
};
