/* did_you_mean.cpp - distances between words. */
#include "options/did_you_mean.h"

#include <algorithm>
#include <cstddef>

namespace cli {

namespace {

/* Letters to change, add, leave out or swap with their neighbour. */
std::size_t distance(const std::string& a, const std::string& b) {
    std::vector<std::size_t> previous(b.size() + 1);
    std::vector<std::size_t> before;
    std::vector<std::size_t> current(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j) {
        previous[j] = j;
    }
    for (std::size_t i = 1; i <= a.size(); ++i) {
        current[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t changed = previous[j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
            current[j] = std::min({previous[j] + 1, current[j - 1] + 1, changed});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) {
                current[j] = std::min(current[j], before[j - 2] + 1);
            }
        }
        before = previous;
        previous = current;
    }
    return previous[b.size()];
}

std::vector<std::string> optionsOf(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::Option* option : app.get_options()) {
        for (const std::string& name : option->get_lnames()) {
            names.push_back("--" + name);
        }
    }
    return names;
}

std::vector<std::string> commandsOf(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; })) {
        names.push_back(command->get_name());
    }
    return names;
}

}  // namespace

std::string closestName(const std::string& word, const std::vector<std::string>& names) {
    std::string closest;
    std::size_t least = std::max<std::size_t>(1, word.size() / 3) + 1;
    for (const std::string& name : names) {
        const std::size_t letters = distance(word, name);
        if (letters < least) {
            least = letters;
            closest = name;
        }
    }
    return closest;
}

std::string didYouMean(const CLI::App& app) {
    const CLI::App* command = app.get_subcommands().empty() ? &app : app.get_subcommands().front();
    std::vector<std::string> words = command->remaining();
    if (words.empty()) {
        words = app.remaining();
    }
    if (words.empty()) {
        return "";
    }
    const std::string word = words.front().substr(0, words.front().find('='));
    const bool isOption = word.rfind("--", 0) == 0;
    std::string meant;
    if (isOption) {
        meant = closestName(word, optionsOf(*command));
    } else if (command == &app) {
        meant = closestName(word, commandsOf(app));
    }
    return meant.empty() ? "" : " - did you mean " + meant + "?";
}

}  // namespace cli
