/* Reads the parser's own description of the command line. */
#include "reference/command_list.h"

#include <CLI/CLI.hpp>

namespace cli {
namespace {

/* "TEXT:{uf,csv}" is a value with choices. */
std::vector<std::string> choicesOf(const std::string& type) {
    const std::size_t open = type.find('{'), close = type.find('}');
    if (open == std::string::npos || close == std::string::npos) {
        return {};
    }
    return CLI::detail::split(type.substr(open + 1, close - open - 1), ',');
}

OptionText describe(const CLI::Option& option) {
    OptionText text;
    text.argument = option.get_positional();
    for (const std::string& name : option.get_snames()) {
        text.names.push_back("-" + name);
    }
    for (const std::string& name : option.get_lnames()) {
        text.names.push_back("--" + name);
    }
    if (text.argument) {
        text.names = {option.get_name(true, false)};
    }
    if (option.get_items_expected_max() > 0) {
        const std::string type = option.get_type_name();
        text.value = type.substr(0, type.find(':'));
        text.choices = choicesOf(type);
    }
    text.standard = option.get_default_str();
    text.description = option.get_description();
    text.required = option.get_required();
    text.several = option.get_items_expected_max() > 1;
    return text;
}

CommandText describe(const CLI::App& app, const std::string& name) {
    CommandText text{name, app.get_description(), app.get_footer(), {}, {}};
    for (const CLI::Option* option : app.get_options()) {
        if (!option->get_group().empty()) {  // not hidden
            text.options.push_back(describe(*option));
        }
    }
    return text;
}

/* Adds the commands of app, which the list ends with. */
void addCommands(const CLI::App& app, std::vector<CommandText>& list) {
    const std::size_t owner = list.size() - 1;
    for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; })) {
        if (!command->get_group().empty()) {
            const std::string& before = list[owner].name;
            const std::string name = (before.empty() ? "" : before + " ") + command->get_name();
            list[owner].commands.push_back(command->get_name());
            list.push_back(describe(*command, name));
            addCommands(*command, list);
        }
    }
}

}  // namespace

std::vector<CommandText> commandList(const CLI::App& app) {
    std::vector<CommandText> list = {describe(app, "")};
    addCommands(app, list);
    return list;
}

}  // namespace cli
