/* process_output.h - processed sweeps as files: fields, and samples at points. */
#ifndef CLI_OUTPUT_PROCESS_OUTPUT_H
#define CLI_OUTPUT_PROCESS_OUTPUT_H

#include <string>
#include <vector>

#include "scan/formats/writing/output_file.h"
#include "scan/points/samples.h"
#include "scan/process/process_sweep.h"

namespace cli {

/* Universal Format, or a field record file with all fields and the classes. Return notes about what
 * the format cannot hold; throw std::runtime_error. */
std::vector<std::string> writeProcessedWords(const scan::OutputFile& file, const scan::Scan& scan,
                                             const scan::ProcessedSweep& processed);
std::vector<std::string> writeProcessedRecords(const scan::OutputFile& file, const scan::Scan& scan,
                                               const scan::ProcessedSweep& processed);

/* A field by its record name or by its Universal Format name; the classes are CCl. Throws
 * std::runtime_error that lists the names. */
scan::Field processedField(const scan::ProcessedSweep& processed, const std::string& name);

/*
 * Appends the samples of each field at the points, one line for each sweep, to a file of its own
 * whose name begins with prefix, and adds these names to written. Returns the number of points
 * outside the sweep, which get the value of the nearest gate. Throws std::runtime_error when a
 * line cannot be written.
 */
std::size_t appendSamples(const std::string& prefix, const scan::DateTime& time,
                          scan::ProcessedSweep& processed, const scan::Points& points,
                          std::vector<std::string>& written);

}  // namespace cli

#endif
