/* write_uf.cpp - the class field, and saving. */
#include "scan/formats/uf/write_uf.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <stdexcept>

#include "clutterclassifier/clutterclassifier.h"
#include "formats/uf/layout.h"
#include "scan/class_codes.h"
#include "scan/formats/compressed/decompress.h"
#include "scan/formats/uf/field_words.h"
#include "scan/formats/uf/make_words.h"
#include "scan/text.h"

namespace scan {
namespace {

constexpr short kClassScale = 100;

/* The field that receives the classes: an earlier class field, or a new name. */
std::string classFieldName(const Scan& scan, const Cufray& ray, int count) {
    const int earlier = findField(ray, count, kClassFieldName);
    if (earlier < 0) {
        return kClassFieldName;
    }
    const bool ours = std::all_of(scan.sweeps.begin(), scan.sweeps.end(), [](const Sweep& sweep) {
        return std::all_of(sweep.fields.begin(), sweep.fields.end(), [](const Field& field) {
            return field.name != kClassFieldName || isClassField(field);
        });
    });
    if (ours) {
        return kClassFieldName;
    }
    for (char digit = '1'; digit <= '9'; ++digit) {
        std::string name{'C', digit};
        if (findField(ray, count, name) < 0) {
            return name;
        }
    }
    throw std::runtime_error("no name is left for the class field");
}

/* A field that is added to every ray, or takes the place of an earlier one. */
struct AddedField {
    std::string name;
    int wordsPerUnit = kClassScale;
    int earlier = -1;  // its index where the rays have it already
};

/* The class field first, then those that come with the classes. */
std::vector<AddedField> fieldsToAdd(const Scan& scan, const Cufray& ray, int count,
                                    const std::vector<SweepClasses>& classes) {
    std::vector<AddedField> added = {{classFieldName(scan, ray, count), kClassScale, -1}};
    if (!classes.empty()) {
        for (const Field& field : classes.front().certainty) {
            added.push_back({field.name, field.wordsPerUnit, -1});
        }
    }
    for (AddedField& field : added) {
        field.earlier = findField(ray, count, field.name);
    }
    return added;
}

/* Room for one more field, with a copy of the first one's header. */
void appendField(Cufray& ray, int count, const AddedField& added) {
    std::unique_ptr<short[]> data(new short[static_cast<std::size_t>(count + 1) * ray.ngates]);
    std::copy(ray.data, ray.data + static_cast<std::size_t>(count) * ray.ngates, data.get());
    delete[] ray.data;
    ray.data = data.release();
    std::memcpy(ray.table[count].name, added.name.c_str(), 3);
    ray.headers[count] = ray.headers[0];
    ray.headers[count].ngates = ray.ngates;
    ray.headers[count].scalefactor = static_cast<short>(added.wordsPerUnit);
    ray.nfields = static_cast<short>(count + 1);
    ray.nrecordfields = static_cast<short>(count + 1);
}

/* values of one ray; null where the sweep was not classified. */
void fillField(Cufray& ray, int field, int wordsPerUnit, const float* values) {
    short* words = ray.data + static_cast<std::size_t>(field) * ray.ngates;
    fillFieldWords(values, ray.ngates, wordsPerUnit, words);
    std::replace(words, words + ray.ngates, kMissingWord, ray.missingvalue);
}

const SweepClasses* findClasses(const Sweep& sweep, const std::vector<SweepClasses>& classes) {
    const auto found = std::find_if(classes.begin(), classes.end(), [&](const SweepClasses& entry) {
        return entry.sweep == &sweep;
    });
    return found == classes.end() ? nullptr : &*found;
}

/* Values of added field number index for one ray; null where there are none. */
const float* valuesFor(const SweepClasses* classes, std::size_t index, std::size_t at) {
    if (classes == nullptr) {
        return nullptr;
    }
    const std::vector<float>& values =
        index == 0 ? *classes->classes : classes->certainty[index - 1].values;
    return values.data() + at;
}

/* Everything that can be refused is refused before a ray is touched. */
void requireRoom(const Cufrw& words, int count, const std::vector<AddedField>& added) {
    const auto more = std::count_if(added.begin(), added.end(),
                                    [](const AddedField& field) { return field.earlier < 0; });
    if (count + more > static_cast<int>(clutter::formats::kMaxFields)) {
        throw std::runtime_error("holds " + std::to_string(count) +
                                 " fields already: no room for the classes");
    }
    for (int r = 0; r < words.nrays; ++r) {
        if (std::strcmp(words.rays[r].format, "UF") != 0) {
            throw std::runtime_error("ray " + std::to_string(r + 1) + " is damaged");
        }
    }
}

void saveWords(Cufrw& words, const OutputFile& file) {
    std::string name = file.temporary();
    requireWritten(file, [&] {
        const bool closed = words.write2file(name.data()) == 0;
        const int reason = errno;
        std::error_code
            error;  // a file that cannot be opened has the answer of one that was written
        const auto size = std::filesystem::file_size(name, error);
        errno = reason;
        return closed && !error && size > 0;
    });
}

/* Compressed where the name ends in .gz. */
void save(Cufrw& words, const OutputFile& file) {
    if (lowerCase(std::filesystem::path(file.target()).extension().string()) != ".gz") {
        return saveWords(words, file);
    }
    const OutputFile plain(file.target());  // never takes the name
    saveWords(words, plain);
    packFile(plain.temporary(), file.temporary());
}

/* at: index of the ray's first gate among the values of its sweep. */
void addFields(Cufray& ray, int count, const std::vector<AddedField>& added,
               const SweepClasses* classes, std::size_t at) {
    int total = count;
    for (std::size_t i = 0; i < added.size(); ++i) {
        const bool isNew = added[i].earlier < 0;
        if (isNew) {
            appendField(ray, total, added[i]);
        }
        const int field = isNew ? total++ : added[i].earlier;
        fillField(ray, field, isNew ? added[i].wordsPerUnit : ray.headers[field].scalefactor,
                  valuesFor(classes, i, at));
    }
    layOut(ray, total);
}

/* The words of a ray's fields that were cleaned. Every ray has as many fields as the first one,
 * whatever its own header says. Readers trim the names. */
void blank(Cufray& ray, int count, const CleanedFields& cleaned, std::size_t at) {
    for (int f = 0; f < count; ++f) {
        const std::string name = printable(ray.table[f].name);
        const bool chosen =
            std::any_of(cleaned.fields.begin(), cleaned.fields.end(),
                        [&](const std::string& field) { return printable(field) == name; });
        short* words = ray.data + static_cast<std::size_t>(f) * ray.ngates;
        for (std::size_t g = 0; chosen && g < ray.ngates; ++g) {
            words[g] = cleaned.gates[at + g] != 0 ? ray.missingvalue : words[g];
        }
    }
}

/* Gates that hold no echo have the word of missing ones. */
void noteNoEcho(const Scan& scan, std::vector<std::string>& notes) {
    const auto silent = [](const Field& field) {
        const auto& gates = field.noEchoGates;
        return std::find(gates.begin(), gates.end(), 1) != gates.end();
    };
    for (const Sweep& sweep : scan.sweeps) {
        if (std::any_of(sweep.fields.begin(), sweep.fields.end(), silent)) {
            notes.push_back(
                "Universal Format has no mark of no echo: gates without an echo are missing.");
            return;
        }
    }
}

}  // namespace

std::vector<std::string> writeUniversalFormat(const OutputFile& file, const Scan& scan,
                                              Cufrw* words,
                                              const std::vector<SweepClasses>& classes) {
    Cufrw made;
    std::vector<std::string> notes;
    if (words == nullptr) {
        notes = makeWords(scan, made);
        words = &made;
    }
    const int count = words->rays[0].nfields;
    const std::vector<AddedField> added = fieldsToAdd(scan, words->rays[0], count, classes);
    requireRoom(*words, count, added);
    int next = 0;
    for (const Sweep& sweep : scan.sweeps) {
        const SweepClasses* entry = findClasses(sweep, classes);
        for (int r = 0; r < sweep.nrays; ++r) {
            Cufray& ray = words->rays[next++];
            const auto at = static_cast<std::size_t>(r) * static_cast<std::size_t>(sweep.ngates);
            if (entry && words != &made) {
                blank(ray, count, entry->cleaned, at);
            }
            addFields(ray, count, added, entry, at);
        }
    }
    noteNoEcho(scan, notes);
    save(*words, file);
    return notes;
}

std::vector<std::string> writeUniversalFormat(const OutputFile& file, const Scan& scan,
                                              Cufrw* words) {
    Cufrw made;
    std::vector<std::string> notes;
    if (words == nullptr) {
        notes = makeWords(scan, made);
        words = &made;
    }
    noteNoEcho(scan, notes);
    save(*words, file);
    return notes;
}

}  // namespace scan
