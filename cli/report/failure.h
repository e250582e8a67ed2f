/* failure.h - what went wrong: one line on standard error, and the exit code. */
#ifndef CLI_REPORT_FAILURE_H
#define CLI_REPORT_FAILURE_H

#include <CLI/Error.hpp>
#include <stdexcept>
#include <string>

namespace cli {

constexpr int kExitFailure = 1;  // a file could not be read, classified or written
constexpr int kExitUsage = 2;    // the command line makes no sense

/* Ends a command that has reported its errors already. */
struct CommandFailed {
    int code = kExitFailure;
};

/* An error whose text begins with the name of the file. */
struct FileError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/* What an exception says to a user; std::bad_alloc is "not enough memory". */
std::string reasonOf(const std::exception& error);

/* One line on standard error: "clutterclassifier: <file>: <reason>". */
void reportError(const std::string& file, const std::string& reason);

/* The same for an exception, with file in front unless it names a file already. */
void reportError(const std::string& file, const std::exception& error);

/* Runs a step on a file. Its exceptions become FileErrors that begin with the file's name; those
 * of a wrong call pass. */
template <class Step>
auto naming(const std::string& file, Step step) {
    try {
        return step();
    } catch (const CLI::Error&) {
        throw;
    } catch (const FileError&) {
        throw;
    } catch (const std::exception& error) {
        throw FileError(file + ": " + reasonOf(error));
    }
}

/* Runs a step on one of several files: whether it succeeded. A failure is reported, and does not
 * keep the other files from being worked on; a wrong call passes. */
template <class Step>
bool attempt(const std::string& file, Step step) {
    try {
        step();
        return true;
    } catch (const CLI::Error&) {
        throw;
    } catch (const std::exception& error) {
        reportError(file, error);
        return false;
    }
}

}  // namespace cli

#endif
