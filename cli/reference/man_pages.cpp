/* Manual pages: the text of --help, in the language of man(7). */
#include "reference/man_pages.h"

#include <algorithm>
#include <sstream>

namespace cli {
namespace {

constexpr char kProgram[] = "clutterclassifier";

std::string upperCase(std::string text) {
    for (char& c : text) {
        c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    }
    return text;
}

/* Dashes are minus signs, which can be searched for and copied; a point or an apostrophe does not
 * begin a request. */
std::string escaped(const std::string& text) {
    std::string out;
    for (const char c : text) {
        const bool begins = out.empty() || out.back() == '\n';
        if (begins && (c == '.' || c == '\'')) {
            out += "\\&";
        }
        out += c == '\\' ? "\\e" : c == '-' ? "\\-" : std::string(1, c);
    }
    return out;
}

std::string italic(const std::string& text) {
    return "\\fI" + escaped(text) + "\\fR";
}

std::string bold(const std::string& text) {
    return "\\fB" + escaped(text) + "\\fR";
}

std::string synopsis(const CommandText& command) {
    std::string line = bold(kProgram);
    line += command.name.empty() ? "" : " " + bold(command.name);
    if (!command.commands.empty()) {
        return line + " " + italic("COMMAND") + " ...\n";
    }
    line += " [" + italic("OPTIONS") + "]";
    for (const OptionText& option : command.options) {
        if (option.argument) {
            const std::string name = italic(option.names[0]) + (option.several ? "..." : "");
            line += option.required ? " " + name : " [" + name + "]";
        }
    }
    return line + "\n";
}

void addOption(std::ostringstream& page, const OptionText& option) {
    page << ".TP\n";
    for (std::size_t i = 0; i < option.names.size(); ++i) {
        const std::string& name = option.names[i];
        page << (i > 0 ? ", " : "") << (option.argument ? italic(name) : bold(name));
    }
    if (!option.argument && !option.value.empty()) {
        page << " " << italic(option.value);
    }
    page << "\n" << escaped(option.description) << "\n";
    if (!option.choices.empty()) {
        page << ".br\nOne of:";
        for (const std::string& choice : option.choices) {
            page << " " << bold(choice);
        }
        page << "\n";
    }
    if (!option.standard.empty()) {
        page << ".br\nDefault: " << bold(option.standard) << "\n";
    }
}

void addOptions(std::ostringstream& page, const CommandText& command, bool arguments) {
    bool first = true;
    for (const OptionText& option : command.options) {
        if (option.argument == arguments) {
            if (first) {
                page << ".SH " << (arguments ? "ARGUMENTS" : "OPTIONS") << "\n";
            }
            addOption(page, option);
            first = false;
        }
    }
}

void addCommands(std::ostringstream& page, const CommandText& owner,
                 const std::vector<CommandText>& all) {
    page << ".SH COMMANDS\n";
    const std::string before = owner.name.empty() ? "" : owner.name + " ";
    for (const CommandText& command : all) {
        for (const std::string& name : owner.commands) {
            if (command.name == before + name) {
                page << ".TP\n" << bold(name) << "\n" << escaped(command.description) << "\n";
            }
        }
    }
}

}  // namespace

std::string pageName(const CommandText& command) {
    std::string name = kProgram;
    if (!command.name.empty()) {
        name += "-" + command.name;
    }
    std::replace(name.begin(), name.end(), ' ', '-');
    return name;
}

std::string manPage(const CommandText& command, const std::vector<CommandText>& all) {
    std::ostringstream page;
    page << ".TH " << upperCase(pageName(command)) << " 1 \"\" \"" << kProgram << " "
         << CLUTTERCLASSIFIER_VERSION << "\" \"User Commands\"\n";
    page << ".SH NAME\n"
         << escaped(pageName(command)) << " \\- " << escaped(command.description) << "\n";
    page << ".SH SYNOPSIS\n" << synopsis(command);
    if (!command.commands.empty()) {
        addCommands(page, command, all);
    }
    addOptions(page, command, true);
    addOptions(page, command, false);
    if (!command.footer.empty()) {
        page << ".SH NOTES\n.nf\n" << escaped(command.footer) << "\n.fi\n";
    }
    page
        << ".SH EXIT STATUS\n0 when all is done, 1 when something failed, 2 when the command makes "
           "no sense.\n";
    page << ".SH ENVIRONMENT\n.TP\n"
         << bold("CLUTTERCLASSIFIER_MEMBERSHIP")
         << "\nDirectory of the membership functions; the default is the set that came with the "
            "program.\n";
    page << ".SH SEE ALSO\n";
    std::string separator;
    for (const CommandText& other : all) {
        if (pageName(other) != pageName(command)) {
            page << separator << ".BR " << escaped(pageName(other)) << " (1)";
            separator = ",\n";
        }
    }
    page << "\n";
    return page.str();
}

}  // namespace cli
