#include "report/damage_note.h"

#include <cstdio>

#include "report/exit_code.h"

namespace cli {

void noteDamage(const scan::Scan& scan, Beside place) {
    for (const std::string& sentence : scan.damage) {
        if (place == Beside::kResults)
            std::printf("  note: %s\n", sentence.c_str());
        else
            reportError(scan.path, sentence);
    }
}

}  // namespace cli
