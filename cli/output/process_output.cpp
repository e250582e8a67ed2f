/* process_output.cpp - writes processed sweeps, and samples of them. */
#include "output/process_output.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <utility>

#include "clutterclassifier/clutterclassifier.h"
#include "scan/formats/reading/library_output.h"
#include "scan/formats/record/write_record.h"
#include "scan/formats/uf/write_uf.h"
#include "scan/formats/write_classes.h"
#include "scan/formats/writing/output_file.h"
#include "scan/text.h"

namespace cli {

using scan::DateTime;
using scan::Field;
using scan::fillFieldRecord;
using scan::GatePoints;
using scan::gatePoints;
using scan::holdsLines;
using scan::kAttenuationStage;
using scan::kClassFieldName;
using scan::kRainStage;
using scan::kReflectivityToRainStage;
using scan::lowerCase;
using scan::OutputFile;
using scan::Points;
using scan::ProcessedSweep;
using scan::requireWritten;
using scan::Scan;
using scan::Sweep;
using scan::ufNameOf;
using scan::writeUniversalFormat;

namespace {

constexpr char kClasses[] = "CCl";

/* Products of the library, with the stages that fill their records; 0: fields of the input. */
constexpr struct {
    int bit;
    const char* suffix;
    Cpluvek Crres::*record;
    int stages;
} kProducts[] = {
    {1, "_ccl.dat", &Crres::ccl, 0},
    {2, "_zhh.dat", &Crres::zhh, 0},
    {4, "_zdr.dat", &Crres::zdr, 0},
    {8, "_rhv.dat", &Crres::rhv, 0},
    {16, "_pdp.dat", &Crres::pdp, 0},
    {32, "_Vel.dat", &Crres::vel, 0},
    {64, "_Wid.dat", &Crres::wid, 0},
    {256, "_Dpdp.dat", &Crres::dpdp, kAttenuationStage},
    {512, "_a.dat", &Crres::acoef, kAttenuationStage},
    {1024, "_b.dat", &Crres::bcoef, kAttenuationStage},
    {2048, "_alpha.dat", &Crres::alpha, kAttenuationStage},
    {4096, "_TA.dat", &Crres::ta, kAttenuationStage},
    {8192, "_pdpC.dat", &Crres::pdpc, kAttenuationStage},
    {16384, "_Ah.dat", &Crres::ah, kAttenuationStage},
    {32768, "_R.dat", &Crres::rain, kRainStage | kReflectivityToRainStage},
};

Field classField(const ProcessedSweep& processed) {
    return {kClasses, "-", processed.classified.classes};
}

std::size_t linesOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return static_cast<std::size_t>(
        std::count(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>(), '\n'));
}

unsigned secondsOf(const DateTime& t) {
    Ctiempo time;
    return time.GetSecondsSince1970(t.year, t.month, t.day, t.hour, t.minute, t.second);
}

/* Ranges limited to the gates: a point outside gets the value of the nearest gate. */
Points withinGates(const GatePoints& at, const Sweep& sweep) {
    const auto length = static_cast<float>(sweep.ngates * sweep.gateSpacingM);
    Points points = at.points;
    for (float& range : points.first) {
        range = std::clamp(range, 0.0f, length);
    }
    return points;
}

}  // namespace

std::vector<std::string> writeProcessedRecords(const OutputFile& file, const Scan& scan,
                                               const ProcessedSweep& processed) {
    std::vector<Field> fields = processed.sweep.fields;
    if (processed.hasClasses) {
        fields.push_back(classField(processed));
    }
    for (Field& field : certaintyFields(processed.classified)) {
        fields.push_back(std::move(field));
    }
    const std::unique_ptr<Cpluvek[]> records(new Cpluvek[fields.size()]);
    for (std::size_t f = 0; f < fields.size(); ++f) {
        fillFieldRecord(scan, processed.sweep, fields[f].name, fields[f].units, fields[f].values,
                        records[f]);
        records[f].recindex = static_cast<int>(f);
        records[f].nrecords = records[f].nsets = static_cast<int>(fields.size());
    }
    requireWritten(file, [&] { return records[0].WriteDataToFile(file.temporary().c_str()) == 1; });
    return {};
}

std::vector<std::string> writeProcessedWords(const OutputFile& file, const Scan& scan,
                                             const ProcessedSweep& processed) {
    Sweep sweep = processed.sweep;
    sweep.fields.clear();
    for (const Field& field : processed.sweep.fields) {
        const char* name = ufNameOf(field.name);
        if (!name) {
            continue;
        }
        sweep.fields.push_back(field);
        sweep.fields.back().name = name;
    }
    Scan single = scan;
    single.sweeps.assign(1, sweep);
    if (!processed.hasClasses) {
        return writeUniversalFormat(file, single, nullptr);
    }
    std::vector<float> classes = processed.classified.classes;
    classes.resize(sweep.fields[0].values.size(), NAN);
    return writeUniversalFormat(
        file, single, nullptr,
        {{&single.sweeps[0], &classes, certaintyFields(processed.classified)}});
}

Field processedField(const ProcessedSweep& processed, const std::string& name) {
    const std::string wanted = lowerCase(name);
    std::string names;
    for (const Field& field : processed.sweep.fields) {
        const char* ufName = ufNameOf(field.name);
        if (wanted == lowerCase(field.name) || (ufName && wanted == lowerCase(ufName))) {
            return field;
        }
        names += " " + field.name;
    }
    if (processed.hasClasses) {
        if (wanted == lowerCase(kClasses) || wanted == lowerCase(kClassFieldName)) {
            return classField(processed);
        }
        names += std::string(" ") + kClasses;
    }
    throw std::runtime_error("no processed field " + name + " among:" + names);
}

std::size_t appendSamples(const std::string& prefix, const DateTime& time,
                          ProcessedSweep& processed, const Points& points,
                          std::vector<std::string>& written) {
    const GatePoints at = gatePoints(processed.sweep, points);
    Points inside = withinGates(at, processed.sweep);
    std::string name = prefix;
    for (const auto& row : kProducts) {
        const bool filled = !row.stages || (processed.what & row.stages);
        if (!filled || !((*processed.context).*row.record).data) {
            continue;
        }
        const std::string path = prefix + row.suffix;
        const std::size_t lines = linesOf(path);
        requireWritten(path, [&] {
            processed.context->Vars2Save(row.bit, name.data(), inside.first.data(),
                                         inside.second.data(), static_cast<int>(inside.size()),
                                         secondsOf(time));
            return holdsLines(path, lines + 1);
        });
        written.push_back(path);
    }
    return static_cast<std::size_t>(std::count(at.covered.begin(), at.covered.end(), false));
}

}  // namespace cli
