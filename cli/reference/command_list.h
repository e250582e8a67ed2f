/* command_list.h - what the program's command line knows about itself, as plain data. */
#ifndef CLI_REFERENCE_COMMAND_LIST_H
#define CLI_REFERENCE_COMMAND_LIST_H

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace cli {

struct OptionText {
    std::vector<std::string> names;    // "-o", "--output"; of an argument without dashes its name
    std::string value;                 // "TEXT"; empty for a flag
    std::vector<std::string> choices;  // the only values, where there is a list
    std::string standard;              // the value without the option; empty: none
    std::string description;
    bool argument = false;  // by position
    bool required = false;
    bool several = false;
};

struct CommandText {
    std::string name;  // empty: the program; "membership check": a command of a command
    std::string description;
    std::string footer;
    std::vector<OptionText> options;
    std::vector<std::string> commands;  // names of its own commands
};

/* The program, then its commands in their order, each before its own commands. */
std::vector<CommandText> commandList(const CLI::App& app);

}  // namespace cli

#endif
