#pragma once

#include <QFile>
#include <QScopedPointer>
#include <QString>

#include "SampleRecord.h"
#include "TrackObject.h"

/**
 * Feeds the simulated PME device: marks one record per second of the records' time stamps and
 * writes one PME frame for each batch in which it marked a record. Without the device the records
 * are still marked and nothing is written. Self-contained: nothing else in the program uses it.
 *
 * Works on the records as the sample writer sends them (not on input items, which are larger) and
 * changes only the PME mark in their flags. Owns the device, which is looked for and opened once,
 * by the constructor. Logs under the name "Configuration". Not copyable, one thread.
 */
class PmeSimulation : public TrackObject
{
public:
    /** Never fails: a missing or unopenable device is reported. */
    PmeSimulation();
    PmeSimulation(const PmeSimulation&) = delete;
    PmeSimulation& operator=(const PmeSimulation&) = delete;
    ~PmeSimulation() override;

    QString deviceName() const { return mDeviceName; }

    /**
     * Clears the mark in every record of the batch and sets it in the first record beyond the
     * mark point of each new second. What a batch leaves open continues in the next one.
     *
     * @param records count consecutive records; may be null when count is 0 or negative
     * @return true when a record was marked in this batch
     */
    bool markRecords(SampleRecord* records, qint32 count);

    /**
     * Marks the batch and, when a record was marked, writes one frame to the device.
     * @return bytes written (56876 for a whole frame), -1 when the write failed, 0 when there was
     *         nothing to write or there is no device
     */
    qint32 processRecords(SampleRecord* records, qint32 count);

private:
    enum class MarkState
    {
        WaitingForNewSecond,
        WaitingForMarkPoint
    };

    bool isMarkPoint(const SampleRecord& record);

    QString mDeviceName;
    quint32 mMarkOffset; ///< ns into a second; the mark goes to the first record beyond it
    QScopedPointer<QFile> mDevice;
    quint32 mLastSecond = 0; ///< highest second that was taken as a new one
    MarkState mMarkState = MarkState::WaitingForNewSecond;
};
