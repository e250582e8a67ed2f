/* call.h - one call of the commands `classify` and `clean`. */
#ifndef CLI_COMMANDS_CLASSIFY_CALL_H
#define CLI_COMMANDS_CLASSIFY_CALL_H

#include <optional>
#include <string>
#include <vector>

#include "options/classify_options.h"
#include "scan/classes/clean.h"
#include "scan/formats/read_scan.h"

namespace cli {

struct ClassifyCall {
    std::vector<std::string> inputs;
    std::string output, plot, format, classes = "ground";
    ClassifyArguments how;
    std::optional<int> sweep;
    int jobs = 1;
    bool removeIsolated = false, certainty = false, quiet = false, json = false;
    bool classQuantity = false;
    std::string codes = "library";
    std::optional<scan::CleanOptions> clean;  // of the command `clean`
    scan::ReadOptions read;
};

}  // namespace cli

#endif
