#pragma once

#include <string>

#include "exporting/ExportedSignal.h"

namespace exporting {

/** Options of an export. */
struct ExportOptions
{
    std::string mInput;
    std::string mOutput; ///< ends in .cfg, .cff or .csv
    ExportPart mPart;
    double mCountsPerVolt = 1000.0;
    double mCountsPerAmpere = 1000.0;
};

/** Whether the name of the output has a suffix of a known format. */
bool isExportName(const std::string& output);

/** The additional file: the data of NAME.cfg; otherwise empty. */
std::string dataNameFor(const std::string& output);

/**
 * Writes the input as COMTRADE in two files (.cfg) or one (.cff), or as text (.csv). The input is
 * read twice, in constant memory.
 *
 * @return a remark for the user; may be empty
 * @throws CaseError
 */
std::string exportSignal(const ExportOptions& options);

} // namespace exporting
