/*
 * configuration.h - the settings file as a user sees it: its keys, an example, and what is wrong
 * with one. The library reads it into a context.
 */
#ifndef SCAN_PROCESS_CONFIGURATION_H
#define SCAN_PROCESS_CONFIGURATION_H

#include <cstdio>
#include <string>
#include <vector>

namespace scan {

struct ConfigurationProblem {
    int line;
    std::string text;
    bool fatal;  // the library would take another value than the one that is meant, or run forever
};

/* The pairs of a file as the library takes them, and what is wrong with them. */
struct Configuration {
    std::vector<std::string> keys;  // known ones, in the file's order
    std::vector<ConfigurationProblem> problems;

    [[nodiscard]] bool names(const std::string& key) const;
};

/* Looks through the text of a configuration file. */
Configuration examineConfiguration(const std::string& text);

/* The same for a file. Throws std::runtime_error when it cannot be read. */
Configuration examineConfigurationFile(const std::string& path);

/* A complete, valid file: every key with its default, but all stages selected. Without a directory
 * of membership functions its key is left out. */
std::string exampleConfiguration(const std::string& membership);

/* A table of all keys: values, defaults, meaning. The file itself cannot hold comments. */
std::string configurationTable();

}  // namespace scan

#endif
