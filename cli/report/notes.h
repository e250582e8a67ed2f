/* notes.h - what is worth knowing about a file, beside the results. */
#ifndef CLI_REPORT_NOTES_H
#define CLI_REPORT_NOTES_H

#include <string>
#include <vector>

#include "scan/scan.h"

namespace cli {

/* One line among the results of a file: "  note: <text>". */
void printNote(const std::string& text);
void printNotes(const std::vector<std::string>& texts);

/* One line of what is printed about a sweep: a label and what it says. */
void printDetail(const char* label, const std::string& text);

/* One line for each kind of damage to a file that was read. It goes to standard output among the
 * results or, where these are silent or are data themselves, to standard error with the file's
 * name. */
enum class Beside { kResults, kErrors };
void noteDamage(const scan::Scan& scan, Beside place);

/* "  wrote <path>" for each file. */
void announce(const std::vector<std::string>& paths);

}  // namespace cli

#endif
