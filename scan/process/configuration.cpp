/* The table of keys, and the checks of a settings file against it. */
#include "scan/process/configuration.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <iterator>
#include <limits>
#include <locale>
#include <map>
#include <sstream>
#include <stdexcept>

#include "scan/classes/inputs.h"
#include "scan/opened_file.h"
#include "scan/process/process_options.h"
#include "scan/text.h"

namespace scan {
namespace {

enum class Kind { kWord, kShort, kInt, kWindow, kNumber };

struct Setting {
    const char* key;
    Kind kind;
    const char* example;
    double lowest, highest;  // numbers that mean something
    const char* meaning;
};

constexpr double kWidestWindow = 999;  // the work grows with it, without end
constexpr double kAny = 1e30;
constexpr double kMinInt = std::numeric_limits<int>::min();
constexpr double kAboveZero = std::numeric_limits<double>::denorm_min();

constexpr Setting kSettings[] = {
    {"WHAT2DO", Kind::kInt, "255", 0, kAllStages,
     "stages, added up: 1 classification, 2 offset of ZDR, 4 smoothing, 8 attenuation, "
     "16 rain rate, 32 reflectivity from rain rate, 64 rain rate from reflectivity, "
     "128 blanking (the library's own default: 0)"},
    {"CLUTTER_MFS", Kind::kWord, "", 0, 0,
     "directory of the membership functions, with its last /"},
    {"CLUTTER_ALG", Kind::kShort, "255", 0, kAllInputs,
     "inputs of the classification, added up: textures of 1 Z, 2 ZDR, 4 phase, 8 correlation; "
     "16 velocity, 32 LDR, 64 clutter likelihood, 128 correlation, 256 width"},
    {"GATES2AVE_ZHH", Kind::kWindow, "7", 0, kWidestWindow, "smoothing window of Z, gates"},
    {"GATES2AVE_ZDR", Kind::kWindow, "7", 0, kWidestWindow, "of ZDR"},
    {"GATES2AVE_PDP", Kind::kWindow, "17", 0, kWidestWindow,
     "of the phase, also in the attenuation stage"},
    {"GATES2AVE_RHV", Kind::kWindow, "0", 0, kWidestWindow, "of the correlation; 0: none"},
    {"RAYS2AVE_ZHH", Kind::kWindow, "1", 0, kWidestWindow, "smoothing window of Z, rays"},
    {"RAYS2AVE_ZDR", Kind::kWindow, "1", 0, kWidestWindow, "of ZDR"},
    {"RAYS2AVE_PDP", Kind::kWindow, "1", 0, kWidestWindow, "of the phase"},
    {"RAYS2AVE_RHV", Kind::kWindow, "0", 0, kWidestWindow, "of the correlation"},
    {"RAINFALL_ALG", Kind::kInt, "0", kMinInt, 4,
     "rain rate: 0 Z, 1 Z and ZDR, 4 polynomial of Z and ZDR; negative: 0 or 1, gate by gate "
     "(2 and 3 need KDP, which the stage does not have: the rain rate stays 0)"},
    {"ATTENUATION_ALG", Kind::kInt, "0", -1, 8,
     "attenuation: 0 profile, 1 final value, 2 forward, 8 profile with b, coefficients searched; "
     "4, 5, 6 the same as 0, 1, 2 with nominal coefficients; 3 slope of the phase; -1, 7 none"},
    {"FREEZING_LEVEL", Kind::kNumber, "3000", -kAny, kAny,
     "height of the freezing level above the antenna, m"},
    {"ZDR_BIAS", Kind::kNumber, "0", -kAny, kAny, "added to ZDR, dB"},
    {"a_Z-R", Kind::kNumber, "200", kAboveZero, kAny, "Z = a R^b: a"},
    {"b_Z-R", Kind::kNumber, "1.6", kAboveZero, kAny, "b"},
    {"a_ZZDR-R", Kind::kNumber, "0.01583", kAboveZero, kAny, "R = a Z^b 10^(c ZDR): a"},
    {"b_ZZDR-R", Kind::kNumber, "0.8349", kAboveZero, kAny, "b"},
    {"c_ZZDR-R", Kind::kNumber, "-0.3732", -kAny, kAny, "c"},
    {"a_KDP-R", Kind::kNumber, "20.47", kAboveZero, kAny, "R = a KDP^b: a"},
    {"b_KDP-R", Kind::kNumber, "0.75", kAboveZero, kAny, "b"},
};

constexpr std::uintmax_t kLargestFile = 1 << 20;
constexpr std::size_t kLongestWord = 1023;  // as much as the library keeps of one
constexpr std::size_t kLongestDirectory = 1000;

struct Word {
    std::string text;
    int line = 0;
};

/* White space as the C library has it, whatever the locale. */
bool isBlank(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

std::vector<Word> wordsOf(const std::string& text) {
    std::vector<Word> words;
    int line = 1;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const bool begins = !isBlank(text[at]) && (at == 0 || isBlank(text[at - 1]));
        if (begins) {
            words.push_back({"", line});
        }
        if (!isBlank(text[at])) {
            words.back().text += text[at];
        }
        if (text[at] == '\n') {
            ++line;
        }
    }
    return words;
}

const Setting* findSetting(const std::string& key) {
    const auto* found = std::find_if(std::begin(kSettings), std::end(kSettings),
                                     [&](const Setting& setting) { return key == setting.key; });
    return found == std::end(kSettings) ? nullptr : found;
}

/* The whole word is one number, in the "C" locale. */
bool parseWholeWord(const std::string& word, double& value) {
    std::istringstream stream(word);
    stream.imbue(std::locale::classic());
    stream >> value;
    return !stream.fail() && stream.peek() == std::istringstream::traits_type::eof();
}

bool isWhole(const std::string& word) {
    const std::size_t sign = word.find_first_of("+-") == 0 ? 1 : 0;
    return word.size() > sign && word.find_first_not_of("0123456789", sign) == std::string::npos;
}

std::string shown(double value) {
    std::ostringstream stream;
    stream.imbue(std::locale::classic());
    stream << std::setprecision(10) << value;
    return stream.str();
}

std::string unknownKey(const std::string& key) {
    std::string text = "unknown key " + printable(key.substr(0, 60));
    if (!key.empty() && key[0] == '#') {
        return text + " (a configuration file has no comments)";
    }
    for (const Setting& setting : kSettings) {
        if (lowerCase(key) == lowerCase(setting.key)) {
            return text + ", case matters: " + setting.key;
        }
    }
    return text;
}

/* Whether a setting has room for a number: whole ones wrap beyond, others become infinite. */
template <class Number>
bool fits(double number) {
    using Limits = std::numeric_limits<Number>;
    return number >= static_cast<double>(Limits::lowest()) &&
           number <= static_cast<double>(Limits::max());
}

bool hasRoom(Kind kind, double number) {
    if (kind == Kind::kShort) {
        return fits<short>(number);
    }
    if (kind == Kind::kInt || kind == Kind::kWindow) {
        return fits<int>(number);
    }
    return fits<float>(number);
}

/* What is wrong with a value; no text where it is valid. */
struct ValueProblem {
    std::string text;
    bool fatal = false;
};

std::string directoryProblem(const std::string& value) {
    if (value.size() > kLongestDirectory) {
        return "the name is too long";
    }
    return value.back() == '/' ? "" : "the directory lacks its last /";
}

std::string rangeProblem(const Setting& setting) {
    if (setting.lowest == kMinInt) {
        return "more than " + shown(setting.highest);
    }
    if (setting.lowest == kAboveZero) {
        return "not above 0 or more than " + shown(setting.highest);
    }
    return "not within " + shown(setting.lowest) + " to " + shown(setting.highest);
}

ValueProblem numberProblem(const Setting& setting, const std::string& value) {
    double number = 0;
    const bool isNumber = value.size() <= kLongestWord && parseWholeWord(value, number);
    if (!isNumber || !std::isfinite(number)) {
        return {printable(value.substr(0, 60)) + " is not a number", true};
    }
    if (setting.kind != Kind::kNumber && !isWhole(value)) {
        return {value + " is not a whole number", true};
    }
    if (!hasRoom(setting.kind, number)) {
        return {value + " is too large, and would be read as another number", true};
    }
    if (number < setting.lowest || number > setting.highest) {
        return {value + " is " + rangeProblem(setting),
                setting.kind == Kind::kWindow && number > setting.highest};
    }
    return {};
}

ValueProblem valueProblem(const Setting& setting, const std::string& value) {
    if (setting.kind == Kind::kWord) {
        return {directoryProblem(value)};
    }
    return numberProblem(setting, value);
}

class Examination {
  public:
    explicit Examination(const std::string& text) : words_(wordsOf(text)) {}

    Configuration result() {
        while (at_ < words_.size()) {
            takePair();
        }
        return std::move(configuration_);
    }

  private:
    void takePair() {
        const Word& key = words_[at_++];
        if (at_ == words_.size()) {
            return report(key, key.text + " has no value");
        }
        const Setting* setting = findSetting(key.text);
        const Word& value = words_[at_];
        /* The library would take the next key for the value, and go on one word out of step. */
        if (setting && findSetting(value.text)) {
            return report(key, key.text + " has no value: " + value.text + " follows", true);
        }
        ++at_;
        if (!setting) {
            return report(key, unknownKey(key.text));
        }
        noteRepetition(*setting, key);
        const ValueProblem wrong = valueProblem(*setting, value.text);
        if (!wrong.text.empty()) {
            report(value, std::string(setting->key) + ": " + wrong.text, wrong.fatal);
        }
        configuration_.keys.push_back(key.text);
    }

    void noteRepetition(const Setting& setting, const Word& key) {
        const auto [entry, isNew] = lines_.emplace(setting.key, key.line);
        if (!isNew) {
            report(key, key.text + " is given again: line " + std::to_string(entry->second) +
                            " has it already, the last one counts");
        }
    }

    void report(const Word& where, const std::string& text, bool fatal = false) {
        configuration_.problems.push_back({where.line, printable(text), fatal});
    }

    std::vector<Word> words_;
    std::size_t at_ = 0;
    std::map<std::string, int> lines_;
    Configuration configuration_;
};

}  // namespace

bool Configuration::names(const std::string& key) const {
    return std::find(keys.begin(), keys.end(), key) != keys.end();
}

Configuration examineConfiguration(const std::string& text) {
    return Examination(text).result();
}

Configuration examineConfigurationFile(const std::string& path) {
    std::error_code error;
    const auto size = std::filesystem::file_size(path, error);
    if (error) {
        throw std::runtime_error(error.message());
    }
    if (size > kLargestFile) {
        throw std::runtime_error("is too large for a configuration file");
    }
    std::ifstream file = openToRead(path);
    const std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (file.bad()) {
        throw std::runtime_error("cannot be read");
    }
    return examineConfiguration(text);
}

std::string exampleConfiguration(const std::string& membership) {
    std::string text;
    for (const Setting& setting : kSettings) {
        const std::string value = setting.kind == Kind::kWord ? membership : setting.example;
        if (!value.empty()) {
            text += std::string(setting.key) + " " + value + "\n";
        }
    }
    return text;
}

std::string configurationTable() {
    constexpr std::size_t kKeyWidth = 17;
    constexpr std::size_t kTextWidth = 78;
    std::string table;
    for (const Setting& setting : kSettings) {
        std::string line = setting.key;
        line.resize(kKeyWidth, ' ');
        std::istringstream words(setting.meaning);
        for (std::string word; words >> word;) {
            if (line.size() + word.size() > kTextWidth) {
                table += line + "\n";
                line.assign(kKeyWidth, ' ');
            }
            line += " " + word;
        }
        table += line + "\n";
    }
    return table;
}

}  // namespace scan
