/* selection.h - the sweep and the field that a command was asked for. */
#ifndef CLI_OPTIONS_SELECTION_H
#define CLI_OPTIONS_SELECTION_H

#include <optional>
#include <string>
#include <vector>

#include "scan/scan.h"

namespace cli {

/* The sweep of a number; without one the first, all, or the only one of a scan. Throw
 * std::runtime_error when there is none, or more than the only one. */
const scan::Sweep& findSweep(const scan::Scan& scan, std::optional<int> number);
std::vector<const scan::Sweep*> findSweeps(const scan::Scan& scan, std::optional<int> number);
const scan::Sweep& findOnlySweep(const scan::Scan& scan, std::optional<int> number);

/* The field of a name; without one the reflectivity, or else whatever comes first. */
const scan::Field& chooseField(const scan::Sweep& sweep, const std::string& name);

}  // namespace cli

#endif
