/* failure.cpp - errors as lines on standard error. */
#include "report/failure.h"

#include <cstdio>
#include <iostream>
#include <new>

#include "report/terminal.h"

namespace cli {

namespace {

void printError(const std::string& text) {
    std::cout.flush();
    std::fflush(stdout);
    std::fprintf(stderr, "clutterclassifier: %s\n", forTerminal(text).c_str());
}

}  // namespace

std::string reasonOf(const std::exception& error) {
    if (dynamic_cast<const std::bad_alloc*>(&error) != nullptr) {
        return "not enough memory";
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
