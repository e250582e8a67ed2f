/*
 * clutterclassifier_reference FOLDER: writes manual pages and completions of the program, from the
 * command line that the program itself is made of.
 */
#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "commands/commands.h"
#include "reference/command_list.h"
#include "reference/completions.h"
#include "reference/man_pages.h"

namespace {

namespace fs = std::filesystem;

void write(const fs::path& path, const std::string& text) {
    fs::create_directories(path.parent_path());
    std::ofstream file(path);
    file << text << std::flush;
    if (!file) {
        throw std::runtime_error("cannot write " + path.string());
    }
}

}  // namespace

int main(int argc, char** argv) try {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s FOLDER\n", argv[0]);
        return 2;
    }
    CLI::App app;
    cli::addProgram(app);
    const fs::path folder = argv[1];
    const std::vector<cli::CommandText> commands = cli::commandList(app);
    for (const cli::CommandText& command : commands) {
        write(folder / "man1" / (cli::pageName(command) + ".1"), cli::manPage(command, commands));
    }
    write(folder / "bash" / "clutterclassifier", cli::bashCompletion(commands));
    write(folder / "zsh" / "_clutterclassifier", cli::zshCompletion(commands));
    write(folder / "fish" / "clutterclassifier.fish", cli::fishCompletion(commands));
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
}
