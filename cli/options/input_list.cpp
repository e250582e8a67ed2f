/* input_list.cpp - folders and patterns as lists of files. */
#include "options/input_list.h"

#include <glob.h>

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "report/in_order.h"

namespace cli {

namespace {

namespace fs = std::filesystem;

bool isHidden(const fs::path& path) {
    return path.filename().string().front() == '.';
}

/* The files below a folder. Links to folders are not followed: they may lead in a circle. */
std::vector<std::string> filesBelow(const std::string& folder) {
    std::vector<std::string> files;
    std::error_code error;
    fs::recursive_directory_iterator entry(folder, error);
    for (; !error && entry != fs::recursive_directory_iterator(); entry.increment(error)) {
        if (isHidden(entry->path())) {
            entry.disable_recursion_pending();
        } else if (entry->is_regular_file(error)) {
            files.push_back(entry->path().string());
        }
    }
    if (error) {
        throw CLI::ValidationError(folder + ": " + error.message());
    }
    std::sort(files.begin(), files.end());
    return files;
}

std::vector<std::string> matchesOf(const std::string& pattern) {
    std::vector<std::string> files;
    glob_t found = {};
    if (glob(pattern.c_str(), 0, nullptr, &found) == 0) {
        files.assign(found.gl_pathv, found.gl_pathv + found.gl_pathc);
    }
    globfree(&found);
    return files;
}

void add(const std::string& name, std::vector<InputFile>& inputs);

void addAll(const std::vector<std::string>& names, const std::string& given,
            std::vector<InputFile>& inputs) {
    if (names.empty()) {
        throw CLI::ValidationError(given + ": no files");
    }
    for (const std::string& name : names) {
        add(name, inputs);
    }
}

void add(const std::string& name, std::vector<InputFile>& inputs) {
    std::error_code ignored;
    if (fs::is_directory(name, ignored)) {
        return addAll(filesBelow(name), name, inputs);
    }
    const bool isPattern = name.find_first_of("*?[") != std::string::npos;
    if (isPattern && !fs::exists(name, ignored)) {
        return addAll(matchesOf(name), name, inputs);
    }
    inputs.emplace_back(name);
}

}  // namespace

std::vector<InputFile> inputFiles(const std::vector<std::string>& given) {
    std::vector<InputFile> inputs;
    for (const std::string& name : given) {
        add(name, inputs);
    }
    return inputs;
}

void addJobsOption(CLI::App& command, int& jobs) {
    jobs = processorCount();
    command
        .add_option("-j,--jobs", jobs,
                    "Files to work on at a time (default: one for each processor)")
        ->check(CLI::Range(1, 256));
}

}  // namespace cli
