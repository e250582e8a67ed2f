/* selection.h - the sweep and the field that a command was asked for. */
#ifndef CLI_OPTIONS_SELECTION_H
#define CLI_OPTIONS_SELECTION_H

#include <optional>
#include <string>
#include <vector>

#include "scan/scan.h"

namespace cli {

/* The sweep of a number. Without a number: the first sweep, all sweeps, or the only sweep. Throw
 * std::runtime_error when there is no such sweep, or when the only one is wanted of several. */
const scan::Sweep& findSweep(const scan::Scan& scan, std::optional<int> number);
std::vector<const scan::Sweep*> findSweeps(const scan::Scan& scan, std::optional<int> number);
const scan::Sweep& findOnlySweep(const scan::Scan& scan, std::optional<int> number);

/* The field of a name. Without a name: the reflectivity, else the first field. */
const scan::Field& chooseField(const scan::Sweep& sweep, const std::string& name);

}  // namespace cli

#endif
