#pragma once

#include <QString>
#include <map>
#include <string>
#include <vector>

#include "CaseConfiguration.h"
#include "check/FileFacts.h"

namespace check {

/** One configuration: a row of the table. */
struct CheckedConfiguration
{
    qint32 mNumber = 0;
    int mEntries = 0;
    std::vector<std::string> mFiles; ///< in the order of the entries
    qint64 mSamples = 0;             ///< of one pass, repetitions included
    double mSeconds = 0;             ///< of one pass
    float mLowestHz = 0;
    float mHighestHz = 0;
    bool mIsContinuous = false;
};

/**
 * Checks a case configuration and its value files like the simulator, with its messages, but
 * continues where the simulator stops. Touches neither the control FIFO nor the driver.
 */
class CaseCheck
{
public:
    /** @param configuration the file; its relative names start at the working directory */
    explicit CaseCheck(const QString& configuration);

    /**
     * What the simulator would refuse or not play. Each begins with the file and, if there is one,
     * the line.
     */
    const std::vector<std::string>& errors() const { return mErrors; }

    /** Number of errors, including those that errors() only counts. */
    qint64 errorCount() const;

    /** What can be played, but probably not as intended. */
    const std::vector<std::string>& warnings() const { return mWarnings; }

    /** In the order of their numbers. */
    const std::vector<CheckedConfiguration>& configurations() const { return mConfigurations; }

    /** Memory in bytes that the program takes for the samples of all entries, on each machine. */
    qint64 bytesHere() const;
    qint64 bytesOn32Bits() const;

private:
    void checkNumbers();
    void checkEntry(const configuration::CaseEntry& entry);
    void checkFile(const configuration::CaseEntry& entry, const FileFacts& facts);
    void checkPlay(const configuration::CaseEntry& entry, const FileFacts& facts);
    void checkSeams(const QList<configuration::CaseEntry>& entries);
    void checkSeam(const configuration::CaseEntry& from, const configuration::CaseEntry& to);
    void describe(qint32 number, const QList<configuration::CaseEntry>& entries);

    const FileFacts& factsFor(const configuration::CaseEntry& entry);
    std::string lineOf(const configuration::CaseEntry& entry) const;

    std::string mName;
    configuration::CaseConfiguration mCases;
    std::map<QString, FileFacts> mFacts; ///< each file is read once
    std::vector<std::string> mErrors;
    qint64 mUnlistedErrors = 0; ///< counted in mErrors, without an own entry
    std::vector<std::string> mWarnings;
    std::vector<CheckedConfiguration> mConfigurations;
    qint64 mLoadedSamples = 0; ///< in the program, each entry has its own samples
};

} // namespace check
