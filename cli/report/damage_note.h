/* damage_note.h - that a file which was read is damaged must not pass unnoticed. */
#ifndef CLI_REPORT_DAMAGE_NOTE_H
#define CLI_REPORT_DAMAGE_NOTE_H

#include "scan/scan.h"

namespace cli {

/* One line for each kind of damage. On standard output among the results, or, where these are
 * silent or are data themselves, with the file's name on standard error. */
enum class Beside { kResults, kErrors };
void noteDamage(const scan::Scan& scan, Beside place);

}  // namespace cli

#endif
