/* Classes in ODIM_H5: bytes, with what each of them means. */
#include "scan/formats/odim/odim_classes.h"

#include <string>

#include "scan/formats/writing/class_flags.h"
#include "scan/formats/writing/plain_values.h"
#include "scan/text.h"

namespace scan::odim {
namespace {

constexpr char kTask[] = "clutterclassifier.echo.";
constexpr int kUndetect = 254;  // every gate has a class or none: unused

void writePacking(const hdf5::Writer& group, const char* quantity, double nodata, double undetect) {
    const hdf5::Writer what = group.group("what");
    what.text("quantity", quantity);
    what.number("gain", 1);
    what.number("offset", 0);
    what.number("nodata", nodata);
    what.number("undetect", undetect);
}

void writeCodes(const hdf5::Writer& group, const Sweep& sweep, const std::vector<float>& classes,
                const ClassForm& form) {
    writePacking(group, kClassName, kNoClass, kUndetect);
    std::vector<hdf5::Writer::Row> legend;
    std::string list;
    for (const ClassFlag& flag : kClassFlags) {
        const int number = static_cast<int>(writtenCode(flag, form.serviceCodes));
        legend.push_back({flag.name, std::to_string(number)});
        list += list.empty() ? "" : ",";
        list += std::to_string(number) + ":" + flag.name;
    }
    const hdf5::Writer how = group.group("how");
    how.text("task", std::string(kTask) + "classification");
    how.text("task_args", list);
    group.plane("data", sweep.nrays, sweep.ngates, classBytes(classes, form.serviceCodes));
    group.table("legend", legend);
}

/* One value a gate that says how sure the class is. */
void writeCertainty(const hdf5::Writer& group, const Sweep& sweep, const Field& field,
                    const std::vector<float>& values) {
    const CertaintyName name = certaintyName(field);
    writePacking(group, name.name, kMissingMark, kNoEchoMark);
    group.group("how").text("task", kTask + lowerCase(name.name));
    group.plane("data", sweep.nrays, sweep.ngates, values);
}

}  // namespace

void writeClasses(const hdf5::Writer& dataset, FreeNumbers free, const SweepClasses& entry,
                  const ClassForm& form, const Order& order) {
    const auto nextQuality = [&] {
        return dataset.group("quality" + std::to_string(free.quality++));
    };
    const std::vector<float> classes = order(*entry.classes);
    writeCodes(nextQuality(), *entry.sweep, classes, form);
    for (const Field& field : entry.certainty) {
        writeCertainty(nextQuality(), *entry.sweep, field,
                       order(plainValues(field, kMissingMark, kNoEchoMark)));
    }
    if (form.asQuantity) {
        writeCodes(dataset.group("data" + std::to_string(free.data)), *entry.sweep, classes, form);
    }
}

}  // namespace scan::odim
