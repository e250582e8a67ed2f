/*
 * The configuration file: key and value pairs that override the context's settings.
 */
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "base/files/file.h"
#include "base/message.h"
#include "base/number.h"
#include "base/text.h"
#include "clutterclassifier/Crres.h"

namespace base = clutter::base;

namespace {

constexpr std::size_t kMaxWord = 1023;

/* A cell of the rainfall relations' table. */
struct Coefficient {
    int relation;
    int column;
};

using Destination = std::variant<int Crres::*, short Crres::*, float Crres::*,
                                 char (Crres::*)[sizeof(Crres::mfdir)], Coefficient>;

struct Setting {
    std::string_view key;
    Destination destination;
};

constexpr Setting kSettings[] = {
    {"WHAT2DO", &Crres::what2do},
    {"CLUTTER_MFS", &Crres::mfdir},
    {"CLUTTER_ALG", &Crres::clutteralg},
    {"GATES2AVE_ZHH", &Crres::gates2ave_zhh},
    {"GATES2AVE_ZDR", &Crres::gates2ave_zdr},
    {"GATES2AVE_PDP", &Crres::gates2ave_pdp},
    {"GATES2AVE_RHV", &Crres::gates2ave_rhv},
    {"RAYS2AVE_ZHH", &Crres::rays2ave_zhh},
    {"RAYS2AVE_ZDR", &Crres::rays2ave_zdr},
    {"RAYS2AVE_PDP", &Crres::rays2ave_pdp},
    {"RAYS2AVE_RHV", &Crres::rays2ave_rhv},
    {"RAINFALL_ALG", &Crres::rainfallalg},
    {"ATTENUATION_ALG", &Crres::attenuationalg},
    {"FREEZING_LEVEL", &Crres::freezinglevel},
    {"ZDR_BIAS", &Crres::zdrbias},
    {"a_Z-R", Coefficient{0, 0}},
    {"b_Z-R", Coefficient{0, 1}},
    {"a_ZZDR-R", Coefficient{1, 0}},
    {"b_ZZDR-R", Coefficient{1, 1}},
    {"c_ZZDR-R", Coefficient{1, 2}},
    {"a_KDP-R", Coefficient{3, 0}},
    {"b_KDP-R", Coefficient{3, 1}},
};

const Setting* findSetting(std::string_view key) {
    for (const Setting& setting : kSettings) {
        if (setting.key == key) {
            return &setting;
        }
    }
    return nullptr;
}

/* Stores a value where its kind of setting has it; whole numbers wrap. */
class Store {
  public:
    Store(Crres& context, std::string_view value) : context_(context), value_(value) {}

    void operator()(int Crres::*whole) const {
        context_.*whole = static_cast<int>(base::parseInteger(value_));
    }
    void operator()(short Crres::*whole) const {
        context_.*whole = static_cast<short>(base::parseInteger(value_));
    }
    void operator()(float Crres::*number) const { context_.*number = singlePrecision(); }
    void operator()(char (Crres::*text)[sizeof(Crres::mfdir)]) const {
        base::copyText(context_.*text, std::string(value_).c_str());
    }
    /* The table is double, but its values come through single precision, as hosts expect. */
    void operator()(const Coefficient& cell) const {
        context_.radarpro.coefficients[cell.relation][cell.column] =
            static_cast<double>(singlePrecision());
    }

  private:
    float singlePrecision() const { return base::roundToFloat(base::parseNumber(value_)); }

    Crres& context_;
    std::string_view value_;
};

std::optional<std::string_view> nextWord(base::TokenReader& tokens) {
    const auto token = tokens.next();
    if (!token) {
        return std::nullopt;
    }
    return token->substr(0, kMaxWord);
}

}  // namespace

int Crres::readinitialconfiguration(char* file) {
    const auto bytes = base::readTextFile(file);
    if (!bytes) {
        return 0;
    }
    base::TokenReader tokens({reinterpret_cast<const char*>(bytes->data()), bytes->size()});
    for (;;) {
        const auto key = nextWord(tokens);
        const auto value = key ? nextWord(tokens) : std::nullopt;
        if (!value) {
            return 0;
        }
        if (const Setting* setting = findSetting(*key)) {
            std::visit(Store(*this, *value), setting->destination);
        } else {
            base::report("The command '%s' was not found!\n", std::string(*key).c_str());
        }
    }
}
