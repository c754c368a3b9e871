#include "run/StreamReader.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>

#include <cerrno>
#include <csignal>

#include "run/ChildProcess.h"

namespace {
struct ReaderPipes
{
    run::Pipe mEvents;
    run::Pipe mRecords;
};

/** All that has been written when both ends are closed. */
run::ArrivedBytes takeAll(run::StreamReader& reader)
{
    run::ArrivedBytes all;
    while (!all.mHasEnded) {
        pollfd file{reader.descriptor(), POLLIN, 0};
        poll(&file, 1, -1);
        const run::ArrivedBytes next = reader.take();
        all.mEvents += next.mEvents;
        all.mRecords += next.mRecords;
        all.mHasEnded = next.mHasEnded;
        // Each event has as many bytes as its records.
        EXPECT_GE(all.mEvents.size(), all.mRecords.size());
    }
    return all;
}

TEST(StreamReaderTest, WritersContinueWhileNobodyTakes)
{
    ReaderPipes pipes;
    run::StreamReader reader(std::move(pipes.mEvents.mReadEnd), std::move(pipes.mRecords.mReadEnd));
    constexpr int kBlocks = 2000;
    std::string expected;
    // Twenty times the capacity of both pipes: without the reader the second write would block.
    for (int i = 0; i < kBlocks; ++i) {
        const std::string block(4096, static_cast<char>('a' + i % 26));
        ASSERT_TRUE(files::writeAll(pipes.mEvents.mWriteEnd.get(), block));
        ASSERT_TRUE(files::writeAll(pipes.mRecords.mWriteEnd.get(), block));
        expected += block;
    }
    pipes.mRecords.mWriteEnd.close();
    pipes.mEvents.mWriteEnd.close();
    const run::ArrivedBytes all = takeAll(reader);
    EXPECT_EQ(all.mEvents, expected);
    EXPECT_EQ(all.mRecords, expected);
}

/** A night that gives up waits neither for a silent sandbox nor for one that floods it. */
TEST(StreamReaderTest, EndsWithItsOwner)
{
    std::signal(SIGPIPE, SIG_IGN);
    for (const bool isFull : {false, true}) {
        ReaderPipes pipes;
        const int records = pipes.mRecords.mWriteEnd.get();
        fcntl(records, F_SETFL, O_NONBLOCK);
        {
            const run::StreamReader reader(std::move(pipes.mEvents.mReadEnd),
                                           std::move(pipes.mRecords.mReadEnd));
            size_t written = 0;
            while (isFull && written <= run::StreamReader::kMaxBytes) {
                written += files::writeAll(records, std::string(4096, 'x')) ? 4096 : 0;
            }
        }
        EXPECT_FALSE(files::writeAll(records, "x"));
        EXPECT_EQ(errno, EPIPE);
    }
}
} // namespace
