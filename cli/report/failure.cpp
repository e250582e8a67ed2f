/* failure.cpp - errors as lines on standard error. */
#include "report/failure.h"

#include <cstdio>
#include <iostream>
#include <new>

#include "report/terminal.h"
#include "scan/scan_error.h"

namespace cli {

namespace {

void printError(const std::string& text) {
    std::cout.flush();
    std::fflush(stdout);
    std::fprintf(stderr, "clutterclassifier: %s\n", forTerminal(text).c_str());
}

/* What a user of the program can do about a failure. */
const char* hintFor(scan::Failure failure) {
    switch (failure) {
        case scan::Failure::kNoReflectivity:
            return ": name it with --map FIELD=zhh";
        case scan::Failure::kLayoutNeeded:
            return ": give --layout 252, 260 or 280";
        case scan::Failure::kNoInputs:
            break;
    }
    return "";
}

}  // namespace

std::string reasonOf(const std::exception& error) {
    if (dynamic_cast<const std::bad_alloc*>(&error) != nullptr) {
        return "not enough memory";
    }
    if (const auto* known = dynamic_cast<const scan::ScanError*>(&error)) {
        return error.what() + std::string(hintFor(known->failure()));
    }
    return error.what();
}

void reportError(const std::string& file, const std::string& reason) {
    printError(file.empty() ? reason : file + ": " + reason);
}

void reportError(const std::string& file, const std::exception& error) {
    const bool named = dynamic_cast<const FileError*>(&error) != nullptr;
    reportError(named ? "" : file, reasonOf(error));
}

}  // namespace cli
