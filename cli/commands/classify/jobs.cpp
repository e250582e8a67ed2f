/* jobs.cpp - names for the results of each input. */
#include "commands/classify/jobs.h"

#include <exception>
#include <filesystem>
#include <set>
#include <stdexcept>

#include "scan/formats/write_classes.h"

namespace cli {

namespace {

namespace fs = std::filesystem;

/* The name for one input: the given one, or in a directory one made from the input's. */
std::string targetFor(const std::string& given, const InputFile& input, const std::string& ending) {
    if (given.empty() || !isDirectoryName(given)) {
        return given;
    }
    return (fs::path(given) / (input.stem() + ending)).string();
}

/* The format of outputs in a directory: as the call asks, else that of the input. */
std::string endingFor(const ClassifyCall& call, const InputFile& input) {
    if (!call.format.empty()) {
        return "." + call.format;
    }
    try {
        return scan::usualEnding(input.path());
    } catch (const std::exception&) {
        return ".plv";  // reading the input will report the reason
    }
}

void requireDistinct(const Job& job, std::set<std::string>& taken) {
    for (const std::string& target : {job.output, job.plot}) {
        if (target.empty()) {
            continue;
        }
        if (!taken.insert(target).second) {
            throw CLI::ValidationError("two results would be written to " + target);
        }
        std::error_code ignored;
        if (fs::equivalent(target, job.input->name(), ignored)) {
            throw CLI::ValidationError(target + " would overwrite its input");
        }
    }
}

void requireDirectories(const ClassifyCall& call, std::size_t inputs) {
    for (const std::string& target : {call.output, call.plot}) {
        if (inputs > 1 && !target.empty() && !isDirectoryName(target)) {
            throw CLI::ValidationError("with several inputs " + target +
                                       " must be a directory (end it in /)");
        }
    }
}

}  // namespace

bool isDirectoryName(const std::string& path) {
    std::error_code ignored;
    return !path.empty() && (path.back() == '/' || fs::is_directory(path, ignored));
}

std::vector<Job> planJobs(const ClassifyCall& call, const std::vector<InputFile>& inputs) {
    requireDirectories(call, inputs.size());
    std::vector<Job> jobs;
    std::set<std::string> taken;
    for (const InputFile& input : inputs) {
        jobs.push_back({&input, targetFor(call.output, input, endingFor(call, input)),
                        targetFor(call.plot, input, ".png")});
        requireDistinct(jobs.back(), taken);
    }
    return jobs;
}

void makeDirectories(const ClassifyCall& call) {
    for (const std::string& target : {call.output, call.plot}) {
        if (target.empty() || target.back() != '/') {
            continue;
        }
        std::error_code error;
        fs::create_directories(target, error);
        if (error) {
            throw std::runtime_error(target + ": " + error.message());
        }
    }
}

}  // namespace cli
