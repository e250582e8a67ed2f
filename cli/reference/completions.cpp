/* Completions: the commands, the options of each, the choices of an option, else files. */
#include "reference/completions.h"

#include <algorithm>
#include <sstream>

namespace cli {
namespace {

std::string joined(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words) {
        text += (text.empty() ? "" : " ") + word;
    }
    return text;
}

/* In the shells' scripts a command is "-" for the program, else "membership/check". */
std::string keyOf(const CommandText& command) {
    std::string key = command.name.empty() ? "-" : command.name;
    std::replace(key.begin(), key.end(), ' ', '/');
    return key;
}

std::string optionNames(const CommandText& command) {
    std::vector<std::string> names;
    for (const OptionText& option : command.options) {
        if (!option.argument) {
            names.insert(names.end(), option.names.begin(), option.names.end());
        }
    }
    return joined(names);
}

/* Between single quotes. */
std::string quoted(const std::string& text) {
    std::string out = "'";
    for (const char c : text) {
        out += c == '\'' ? "'\\''" : std::string(1, c);
    }
    return out + "'";
}

/* In a message of zsh's _arguments, between brackets. */
std::string bracketed(const std::string& text) {
    std::string out;
    for (const char c : text) {
        out += c == '[' || c == ']' || c == ':' || c == '\\' ? "\\" + std::string(1, c)
                                                             : std::string(1, c);
    }
    return "[" + out + "]";
}

/* Options that take a value, by what may follow: cases of a shell's choice. */
void addBashValues(std::ostringstream& out, const CommandText& command) {
    for (const OptionText& option : command.options) {
        if (option.argument || option.value.empty()) {
            continue;
        }
        for (const std::string& name : option.names) {
            out << "        " << keyOf(command) << "," << name << ") ";
            if (option.choices.empty()) {
                out << "COMPREPLY=($(compgen -f -- \"$word\"))";
            } else {
                out << "COMPREPLY=($(compgen -W " << quoted(joined(option.choices))
                    << " -- \"$word\"))";
            }
            out << "; return ;;\n";
        }
    }
}

void addZshRules(std::ostringstream& out, const OptionText& option) {
    for (const std::string& name : option.names) {
        std::string rule = name + bracketed(option.description);
        if (!option.choices.empty()) {
            rule += ":value:(" + joined(option.choices) + ")";
        } else if (!option.value.empty()) {
            rule += ":value:_files";
        }
        out << " \\\n        " << quoted(rule);
    }
}

}  // namespace

std::string bashCompletion(const std::vector<CommandText>& commands) {
    std::ostringstream out;
    out << "# Completion of clutterclassifier for bash.\n"
           "_clutterclassifier() {\n"
           "    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD-1]} command=- "
           "i\n"
           "    COMPREPLY=()\n"
           "    for ((i = 1; i < COMP_CWORD; i++)); do\n"
           "        case $command,${COMP_WORDS[i]} in\n";
    for (const CommandText& command : commands) {
        for (const std::string& name : command.commands) {
            const std::string before = command.name.empty() ? "" : keyOf(command) + "/";
            out << "        " << keyOf(command) << "," << name << ") command=" << before << name
                << " ;;\n";
        }
    }
    out << "        esac\n"
           "    done\n"
           "    case $command,$before in\n";
    for (const CommandText& command : commands) {
        addBashValues(out, command);
    }
    out << "    esac\n"
           "    case $command,$word in\n";
    for (const CommandText& command : commands) {
        out << "        " << keyOf(command) << ",-*) COMPREPLY=($(compgen -W "
            << quoted(optionNames(command)) << " -- \"$word\")) ;;\n";
        if (!command.commands.empty()) {
            out << "        " << keyOf(command) << ",*) COMPREPLY=($(compgen -W "
                << quoted(joined(command.commands)) << " -- \"$word\")) ;;\n";
        }
    }
    out << "        *) COMPREPLY=($(compgen -f -- \"$word\")) ;;\n"
           "    esac\n"
           "}\n"
           "complete -o filenames -F _clutterclassifier clutterclassifier\n";
    return out.str();
}

std::string zshCompletion(const std::vector<CommandText>& commands) {
    std::ostringstream out;
    out << "#compdef clutterclassifier\n"
           "# Completion of clutterclassifier for zsh.\n"
           "local command=-\n"
           "local -i i\n"
           "for ((i = 2; i < CURRENT; i++)); do\n"
           "    case $command,$words[i] in\n";
    for (const CommandText& command : commands) {
        for (const std::string& name : command.commands) {
            const std::string before = command.name.empty() ? "" : keyOf(command) + "/";
            out << "    " << keyOf(command) << "," << name << ") command=" << before << name
                << " ;;\n";
        }
    }
    out << "    esac\ndone\ncase $command in\n";
    for (const CommandText& command : commands) {
        out << keyOf(command) << ")\n    _arguments -s";
        for (const OptionText& option : command.options) {
            if (!option.argument) {
                addZshRules(out, option);
            }
        }
        const std::string names = joined(command.commands);
        out << " \\\n        "
            << quoted(names.empty() ? "*:file:_files" : "*:command:(" + names + ")")
            << "\n    ;;\n";
    }
    out << "esac\n";
    return out.str();
}

std::string fishCompletion(const std::vector<CommandText>& commands) {
    std::ostringstream out;
    out << "# Completion of clutterclassifier for fish.\n";
    for (const CommandText& command : commands) {
        std::string condition = command.name.empty() ? "__fish_use_subcommand" : "";
        std::istringstream words(command.name);
        for (std::string word; words >> word;) {
            condition +=
                (condition.empty() ? "" : "; and ") + ("__fish_seen_subcommand_from " + word);
        }
        for (const std::string& name : command.commands) {
            out << "complete -c clutterclassifier -n " << quoted(condition) << " -f -a " << name
                << "\n";
        }
        for (const OptionText& option : command.options) {
            if (option.argument) {
                continue;
            }
            out << "complete -c clutterclassifier -n " << quoted(condition);
            for (const std::string& name : option.names) {
                const bool isLong = name.compare(0, 2, "--") == 0;
                out << (isLong ? " -l " : " -s ") << name.substr(isLong ? 2 : 1);
            }
            if (!option.value.empty()) {
                out << " -r";
            }
            if (!option.choices.empty()) {
                out << " -f -a " << quoted(joined(option.choices));
            }
            out << " -d " << quoted(option.description) << "\n";
        }
    }
    return out.str();
}

}  // namespace cli
