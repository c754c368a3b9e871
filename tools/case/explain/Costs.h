#pragma once

#include <QtGlobal>
#include <cstddef>

#include "SampleRecord.h"

namespace explain {

/**
 * What the judge weighs, bounds and waits for, in one place.
 *
 * Costs say how unlikely a hypothesis is; only their order and their sums matter.
 */

/** A command that was given is left waiting at the end of a case: it may have come too late. */
constexpr int kCostOfWaitingCommand = 1;

/** A command of which nothing is known: as unlikely as a command that is left waiting twice. */
constexpr int kCostOfUnknownCommand = 2;

/** A recording begins elsewhere than the simulator does: rarer than a command, likelier than two.
 */
constexpr int kCostOfCutFront = 3;

/**
 * A hypothesis that costs more than this above the likeliest is dropped: it may assume three
 * commands where the likeliest assumes none, or a cut front and one command.
 */
constexpr int kMaxCostAboveLikeliest = 3 * kCostOfUnknownCommand;

/**
 * More hypotheses than these are not followed: the likeliest are kept. Reached only where that many
 * configurations go on alike for a while.
 */
constexpr size_t kMaxHypotheses = 1024;

/** Positions of one hypothesis whose past is remembered one by one: see Hypothesis. */
constexpr size_t kMaxOrigins = 100'000;

/** Limit on rows that are kept while it is ambiguous which were played. */
constexpr size_t kMaxAmbiguousRows = 256;

/** The longest gap that is searched: beyond ten minutes, the content must tell where play is. */
constexpr qint64 kMaxGapNs = 600'000'000'000;

/** Plays that one search over a gap steps through: some ms of work. */
constexpr size_t kMaxPlaysInGap = 20'000;

/** Positions that one search over a gap starts from. */
constexpr size_t kMaxGapStarts = 256;

/**
 * Records in a row that must fit before play is taken to go on there. With eight channels that
 * hardly happens by chance, and it is far less than a period, so that a short event is found.
 */
constexpr size_t kProofRecords = 16;

/** Of those, the number that may differ where the time stamp tells what happened. */
constexpr size_t kMaxDifferentInProof = 4;

/** Records that may differ in a row before play is taken to go on from another sample. */
constexpr size_t kMaxDifferentInRow = 8;

/** What a command may wait beyond the longest case: lead of the writer, and lag of the machine. */
constexpr qint64 kWaitToleranceNs = 1'000'000'000;

/** Blocks that the writer sends at once before it sleeps. */
constexpr qint64 kBlocksAhead = 11;

/** Cases that may end with a command waiting: it is polled before the next one's first block. */
constexpr int kMaxPolls = 2;

} // namespace explain
