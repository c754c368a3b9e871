#pragma once

#include <string>

#include "exporting/ExportedSignal.h"

namespace exporting {

/** What is exported, and how. */
struct ExportOptions
{
    std::string mInput;
    std::string mOutput; ///< ends in .cfg, .cff or .csv
    ExportPart mPart;
    double mCountsPerVolt = 1000.0;
    double mCountsPerAmpere = 1000.0;
};

/** Whether the name of the output has a suffix that says what to write. */
bool isExportName(const std::string& output);

/** The file that is written beside the output: the data of NAME.cfg; else empty. */
std::string dataNameFor(const std::string& output);

/**
 * Writes the input as COMTRADE in two files (.cfg) or one (.cff), or as text (.csv). The input is
 * read twice; memory does not depend on its length.
 *
 * @return what the user should know about it; may be empty
 * @throws CaseError
 */
std::string exportSignal(const ExportOptions& options);

} // namespace exporting
