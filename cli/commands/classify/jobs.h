/* jobs.h - what `classify` writes for each of its inputs, and where. */
#ifndef CLI_COMMANDS_CLASSIFY_JOBS_H
#define CLI_COMMANDS_CLASSIFY_JOBS_H

#include <string>
#include <vector>

#include "commands/classify/call.h"
#include "options/input_file.h"

namespace cli {

struct Job {
    const InputFile* input;
    std::string output, plot;  // empty: not wanted
};

/* Whether a name is that of a directory: one that exists, or one that ends in a separator. */
bool isDirectoryName(const std::string& path);

/* One job for each input, whose results have names of their own. Throws CLI::ValidationError. */
std::vector<Job> planJobs(const ClassifyCall& call, const std::vector<InputFile>& inputs);

/* Creates the directories that the call names with a separator at the end. */
void makeDirectories(const ClassifyCall& call);

}  // namespace cli

#endif
