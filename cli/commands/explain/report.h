/* report.h - the explanation of a gate, for people and for programs. */
#ifndef CLI_COMMANDS_EXPLAIN_REPORT_H
#define CLI_COMMANDS_EXPLAIN_REPORT_H

#include <string>
#include <vector>

#include "clutterclassifier/classifier.h"
#include "commands/explain/gate.h"

namespace cli {

/* What was asked, and the answer. */
struct Explained {
    std::string file;
    int sweep = 0;
    Gate gate;
    std::vector<std::string> notes;
    clutter_explanation why = {};
};

/* A table: one line for each input. */
void printExplanation(const Explained& explained);

/* One JSON object. Numbers that are not finite are null, except that an infinite margin or
 * contribution is the string "inf" or "-inf". */
void printExplanationJson(const Explained& explained);

}  // namespace cli

#endif
