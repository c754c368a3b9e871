#pragma once

#include <gtest/gtest.h>

#include <memory>

#include "FixedPaths.h"
#include "InputValues.h"
#include "LogCapture.h"
#include "PrussSimulation.h"
#include "Records.h"
#include "TestDevice.h"
#include "VirtualSystem.h"

inline constexpr qint64 kStepOf50Hz = 55'555;
inline constexpr qint64 kBlockOf50Hz = 360 * kStepOf50Hz;

/** A sample writer on a driver of regular files, in virtual time. */
class WriterFixture : public testing::Test
{
protected:
    WriterFixture() { TestDevice::makeDriver(); }

    /** Makes the writer and opens its files. */
    void startWriter()
    {
        mWriter = std::make_unique<PrussSimulation>();
        ASSERT_TRUE(mWriter->init());
        mLog.take();
    }

    /** Items that carry their number in the auxiliary word. */
    static InputValues items(int count, const char* frequency = "50")
    {
        InputValues values;
        const QString line = QStringLiteral(";;%1;2;%2;1;-2;3;-4;5;-6;7;-8");
        for (int i = 0; i < count; ++i) {
            values.parseLine(line.arg(i).arg(QLatin1String(frequency)));
        }
        values.resetIterator();
        return values;
    }

    /** Plays the values from their beginning; returns the result of the last call. */
    qint32 play(InputValues& values)
    {
        values.resetIterator();
        qint32 result = 0;
        while (result == 0) {
            result = mWriter->writeSamples(values);
        }
        return result;
    }

    qint32 play(int count, const char* frequency = "50")
    {
        InputValues values = items(count, frequency);
        return play(values);
    }

    qint64 now() const { return toNanoseconds(mSystem.mRealtime); }
    static qint64 lastStamp() { return stampOf(TestDevice::records().back()); }

    VirtualSystem mSystem;
    TestDevice mDevice;
    LogCapture mLog;
    std::unique_ptr<PrussSimulation> mWriter;
};
