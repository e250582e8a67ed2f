/* notes.cpp - notes and the names of written files, among the results. */
#include "report/notes.h"

#include <cstdio>

#include "report/failure.h"
#include "report/terminal.h"

namespace cli {

void printNote(const std::string& text) {
    std::printf("  note: %s\n", forTerminal(text).c_str());
}

void printNotes(const std::vector<std::string>& texts) {
    for (const std::string& text : texts) {
        printNote(text);
    }
}

void printDetail(const char* label, const std::string& text) {
    std::printf("    %-12s %s\n", label, forTerminal(text).c_str());
}

void noteDamage(const scan::Scan& scan, Beside place) {
    for (const std::string& sentence : scan.damage) {
        if (place == Beside::kResults) {
            printNote(sentence);
        } else {
            reportError(scan.path, sentence);
        }
    }
}

void announce(const std::vector<std::string>& paths) {
    for (const std::string& path : paths) {
        std::printf("  wrote %s\n", forTerminal(path).c_str());
    }
}

}  // namespace cli
