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
#include "scan/fields/roles.h"
#include "scan/formats/uf/make_words.h"

namespace scan {
namespace {

constexpr short kClassScale = 100;

/* The field that receives the classes: an earlier class field, or a new name. */
std::string classFieldName(const Scan& scan, const Cufray& ray, int count) {
    const int earlier = findField(ray, count, kClassFieldName);
    if (earlier < 0) return kClassFieldName;
    const bool ours = std::all_of(scan.sweeps.begin(), scan.sweeps.end(), [](const Sweep& sweep) {
        return std::all_of(sweep.fields.begin(), sweep.fields.end(), [](const Field& field) {
            return field.name != kClassFieldName || isClassField(field);
        });
    });
    if (ours) return kClassFieldName;
    for (char digit = '1'; digit <= '9'; ++digit) {
        std::string name{'C', digit};
        if (findField(ray, count, name) < 0) return name;
    }
    throw std::runtime_error("no name is left for the class field");
}

/* Room for one more field, which starts as a copy of the first one's header and is all missing. */
void appendField(Cufray& ray, int count, const std::string& name) {
    std::unique_ptr<short[]> data(new short[static_cast<size_t>(count + 1) * ray.ngates]);
    std::copy(ray.data, ray.data + static_cast<size_t>(count) * ray.ngates, data.get());
    delete[] ray.data;
    ray.data = data.release();
    std::memcpy(ray.table[count].name, name.c_str(), 3);
    ray.headers[count] = ray.headers[0];
    ray.headers[count].ngates = ray.ngates;
    ray.headers[count].scalefactor = kClassScale;
    ray.nfields = static_cast<short>(count + 1);
    ray.nrecordfields = static_cast<short>(count + 1);
}

short classWord(float value, short missing) {
    return std::isnan(value) ? missing : static_cast<short>(value * kClassScale);
}

/* classes of one ray; null where the sweep was not classified. */
void fillField(Cufray& ray, int field, const float* classes) {
    short* words = ray.data + static_cast<size_t>(field) * ray.ngates;
    for (int g = 0; g < ray.ngates; ++g)
        words[g] = classes ? classWord(classes[g], ray.missingvalue) : ray.missingvalue;
}

const std::vector<float>* classesOf(const Sweep& sweep, const std::vector<SweepClasses>& classes) {
    for (const SweepClasses& entry : classes)
        if (entry.sweep == &sweep) return entry.classes;
    return nullptr;
}

/* Everything that can be refused is refused before a ray is touched. */
void requireRoom(const Cufrw& words, int count, bool appends) {
    if (appends && count >= kMaxFields)
        throw std::runtime_error("holds 20 fields already: no room for the classes");
    for (int r = 0; r < words.nrays; ++r)
        if (std::strcmp(words.rays[r].format, "UF") != 0)
            throw std::runtime_error("ray " + std::to_string(r + 1) + " is damaged");
}

void save(Cufrw& words, const OutputFile& file) {
    std::string name = file.temporary();
    requireWritten(file, [&] {
        const bool closed = words.write2file(name.data()) == 0;
        const int reason = errno;
        std::error_code
            error; /* a file that cannot be opened has the answer of one that was written */
        const auto size = std::filesystem::file_size(name, error);
        errno = reason;
        return closed && !error && size > 0;
    });
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
    const std::string name = classFieldName(scan, words->rays[0], count);
    const int earlier = findField(words->rays[0], count, name);
    requireRoom(*words, count, earlier < 0);
    const int field = earlier < 0 ? count : earlier;
    int next = 0;
    for (const Sweep& sweep : scan.sweeps) {
        const std::vector<float>* sweepClasses = classesOf(sweep, classes);
        for (int r = 0; r < sweep.nrays; ++r) {
            Cufray& ray = words->rays[next++];
            if (earlier < 0) {
                appendField(ray, count, name);
            }
            fillField(ray, field,
                      sweepClasses ? sweepClasses->data() + static_cast<size_t>(r) * sweep.ngates
                                   : nullptr);
            layOut(ray, std::max(count, field + 1));
        }
    }
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
    save(*words, file);
    return notes;
}

}  // namespace scan
