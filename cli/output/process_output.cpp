/* process_output.cpp - writes processed sweeps, and samples of them. */
#include "output/process_output.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <utility>

#include "clutterclassifier/clutterclassifier.h"
#include "scan/class_codes.h"
#include "scan/formats/reading/library_output.h"
#include "scan/formats/record/write_record.h"
#include "scan/formats/uf/write_uf.h"
#include "scan/formats/write_classes.h"
#include "scan/formats/writing/output_file.h"
#include "scan/process/processed_fields.h"
#include "scan/text.h"

namespace cli {

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
    {256, "_Dpdp.dat", &Crres::dpdp, scan::kAttenuationStage},
    {512, "_a.dat", &Crres::acoef, scan::kAttenuationStage},
    {1024, "_b.dat", &Crres::bcoef, scan::kAttenuationStage},
    {2048, "_alpha.dat", &Crres::alpha, scan::kAttenuationStage},
    {4096, "_TA.dat", &Crres::ta, scan::kAttenuationStage},
    {8192, "_pdpC.dat", &Crres::pdpc, scan::kAttenuationStage},
    {16384, "_Ah.dat", &Crres::ah, scan::kAttenuationStage},
    {32768, "_R.dat", &Crres::rain, scan::kRainStage | scan::kReflectivityToRainStage},
};

scan::Field classField(const scan::ProcessedSweep& processed) {
    return {kClasses, "-", processed.classified.classes};
}

std::size_t linesOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return static_cast<std::size_t>(
        std::count(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>(), '\n'));
}

unsigned secondsOf(const scan::DateTime& t) {
    Ctiempo time;
    return time.GetSecondsSince1970(t.year, t.month, t.day, t.hour, t.minute, t.second);
}

/* Ranges limited to the gates: a point outside gets the value of the nearest gate. */
scan::Points withinGates(const scan::GatePoints& at, const scan::Sweep& sweep) {
    const auto length = static_cast<float>(sweep.ngates * sweep.gateSpacingM);
    scan::Points points = at.points;
    for (float& range : points.first) {
        range = std::clamp(range, 0.0f, length);
    }
    return points;
}

}  // namespace

std::vector<std::string> writeProcessedRecords(const scan::OutputFile& file, const scan::Scan& scan,
                                               const scan::ProcessedSweep& processed) {
    std::vector<scan::Field> fields = processed.sweep.fields;
    if (processed.hasClasses) {
        fields.push_back(classField(processed));
    }
    for (scan::Field& field : certaintyFields(processed.classified)) {
        fields.push_back(std::move(field));
    }
    const std::unique_ptr<Cpluvek[]> records(new Cpluvek[fields.size()]);
    for (std::size_t f = 0; f < fields.size(); ++f) {
        scan::fillFieldRecord(scan, processed.sweep, fields[f].name, fields[f].units,
                              fields[f].values, records[f]);
        records[f].recindex = static_cast<int>(f);
        records[f].nrecords = records[f].nsets = static_cast<int>(fields.size());
    }
    scan::requireWritten(file,
                         [&] { return records[0].WriteDataToFile(file.temporary().c_str()) == 1; });
    return {};
}

std::vector<std::string> writeProcessedWords(const scan::OutputFile& file, const scan::Scan& scan,
                                             const scan::ProcessedSweep& processed) {
    scan::Sweep sweep;
    static_cast<scan::SweepGeometry&>(sweep) = processed.sweep;
    for (const scan::Field& field : processed.sweep.fields) {
        const char* name = scan::ufNameOf(field.name);
        if (!name) {
            continue;
        }
        sweep.fields.push_back(field);
        sweep.fields.back().name = name;
    }
    scan::Scan single = scan;
    single.sweeps.clear();
    single.sweeps.push_back(std::move(sweep));
    if (!processed.hasClasses) {
        return scan::writeUniversalFormat(file, single, nullptr);
    }
    std::vector<float> classes = processed.classified.classes;
    classes.resize(single.sweeps[0].fields[0].values.size(), NAN);
    return scan::writeUniversalFormat(
        file, single, nullptr,
        {{&single.sweeps[0], &classes, certaintyFields(processed.classified)}});
}

scan::Field processedField(const scan::ProcessedSweep& processed, const std::string& name) {
    const std::string wanted = scan::lowerCase(name);
    std::string names;
    for (const scan::Field& field : processed.sweep.fields) {
        const char* ufName = scan::ufNameOf(field.name);
        if (wanted == scan::lowerCase(field.name) ||
            (ufName && wanted == scan::lowerCase(ufName))) {
            return field;
        }
        names += " " + field.name;
    }
    if (processed.hasClasses) {
        if (wanted == scan::lowerCase(kClasses) ||
            wanted == scan::lowerCase(scan::kClassFieldName)) {
            return classField(processed);
        }
        names += std::string(" ") + kClasses;
    }
    throw std::runtime_error("no processed field " + name + " among:" + names);
}

std::size_t appendSamples(const std::string& prefix, const scan::DateTime& time,
                          scan::ProcessedSweep& processed, const scan::Points& points,
                          std::vector<std::string>& written) {
    const scan::GatePoints at = scan::gatePoints(processed.sweep, points);
    scan::Points inside = withinGates(at, processed.sweep);
    std::string name = prefix;
    for (const auto& row : kProducts) {
        const bool filled = !row.stages || (processed.what & row.stages);
        if (!filled || !((*processed.context).*row.record).data) {
            continue;
        }
        const std::string path = prefix + row.suffix;
        const std::size_t lines = linesOf(path);
        scan::requireWritten(path, [&] {
            processed.context->Vars2Save(row.bit, name.data(), inside.first.data(),
                                         inside.second.data(), static_cast<int>(inside.size()),
                                         secondsOf(time));
            return scan::holdsLines(path, lines + 1);
        });
        written.push_back(path);
    }
    return static_cast<std::size_t>(std::count(at.covered.begin(), at.covered.end(), false));
}

}  // namespace cli
