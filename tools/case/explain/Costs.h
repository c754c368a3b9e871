#pragma once

#include <QtGlobal>
#include <cstddef>

#include "SampleRecord.h"

namespace explain {

/**
 * All costs, limits and waiting times of the judge.
 *
 * Costs say how unlikely a hypothesis is; only their order and their sums matter.
 */

/** A given command is left waiting at the end of a case: it may have come too late. */
constexpr int kCostOfWaitingCommand = 1;

/** An unknown command: as unlikely as a command that is left waiting twice. */
constexpr int kCostOfUnknownCommand = 2;

/**
 * A recording that begins elsewhere than the simulator: rarer than one command, likelier than two.
 */
constexpr int kCostOfCutFront = 3;

/**
 * A hypothesis that costs more than this above the likeliest is dropped: it may assume three
 * commands where the likeliest assumes none, or a cut front and one command.
 */
constexpr int kMaxCostAboveLikeliest = 3 * kCostOfUnknownCommand;

/**
 * Max number of hypotheses; the likeliest are kept. It is reached only if this number of
 * configurations continue equally for a while.
 */
constexpr size_t kMaxHypotheses = 1024;

/**
 * An unknown command may have restarted a repeated case after each of its passes. Limit on these
 * hypotheses: those of the first passes are kept. They also explain passes too many later on, but
 * name the wrong pass.
 */
constexpr std::ptrdiff_t kMaxRestarts = 24;

/** Max positions of a hypothesis whose past is stored separately, see Origins. */
constexpr size_t kMaxOrigins = 100'000;

/** Max rows that are kept while it is ambiguous which were played. */
constexpr size_t kMaxAmbiguousRows = 256;

/** The longest gap that is searched. After ten minutes, only the content shows the position. */
constexpr qint64 kMaxGapNs = 600'000'000'000;

/** Max plays that one search over a gap steps through: some ms of work. */
constexpr size_t kMaxPlaysInGap = 20'000;

/** Max positions that one search over a gap starts from. */
constexpr size_t kMaxGapStarts = 256;

/**
 * Records in a row that must fit before playing is assumed to continue there. With eight channels
 * this hardly happens by chance, and it is far less than a period, so a short event is found.
 */
constexpr size_t kProofRecords = 16;

/** Number of them that may differ if the time stamp shows what happened. */
constexpr size_t kMaxDifferentInProof = 4;

/** Records in a row that may differ before playing is assumed to continue from another sample. */
constexpr size_t kMaxDifferentInRow = 8;

/** Max wait of a command beyond the longest case: lead of the writer, and lag of the machine. */
constexpr qint64 kWaitToleranceNs = 1'000'000'000;

/** Blocks that the writer sends at once before it sleeps. */
constexpr qint64 kBlocksAhead = 11;

/** Cases that may end with a command waiting: it is polled before the next one's first block. */
constexpr int kMaxPolls = 2;

} // namespace explain
