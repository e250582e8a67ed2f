/* documents.cpp - the members of the documents. docs/program.md lists them. */
#include "report/documents.h"

#include <cstdio>

#include "report/failure.h"
#include "scan/classes/inputs.h"
#include "scan/fields/role.h"

namespace cli {

namespace {

std::string timeText(const scan::DateTime& t) {
    char text[80];
    std::snprintf(text, sizeof text, "%04d-%02d-%02dT%02d:%02d:%02d", t.year, t.month, t.day,
                  t.hour, t.minute, t.second);
    return text;
}

const char* sourceName(scan::NoiseSource source) {
    switch (source) {
        case scan::NoiseSource::kGiven:
            return "given";
        case scan::NoiseSource::kSnrField:
            return "snr_field";
        case scan::NoiseSource::kFile:
            return "file";
        case scan::NoiseSource::kFormat:
            return "format";
        case scan::NoiseSource::kEstimate:
            break;
    }
    return "estimate";
}

JsonObject countsObject(const scan::ClassifiedSweep& result) {
    JsonObject counts;
    counts.add("precipitation", result.precipitation);
    counts.add("ground_clutter", result.groundClutter);
    counts.add("sea_clutter", result.seaClutter);
    counts.add("turbine_clutter", result.turbineClutter);
    counts.add("noise", result.noise);
    counts.add("noise_without_value", result.withoutValue);
    return counts;
}

}  // namespace

JsonObject scanObject(const scan::Scan& scan) {
    JsonObject object;
    object.add("file", scan.path);
    object.add("format", scan.format);
    object.add("radar", scan.radarName);
    object.add("site", scan.siteName);
    object.add("latitude_deg", scan.latitudeDeg);
    object.add("longitude_deg", scan.longitudeDeg);
    object.add("altitude_m", scan.altitudeM);
    object.add("time", timeText(scan.time));
    object.addList("damage", scan.damage);
    return object;
}

JsonObject sweepObject(const scan::Sweep& sweep) {
    JsonObject object;
    object.add("number", sweep.number);
    object.add("mode", std::string(sweep.rhi ? "rhi" : "ppi"));
    object.add("fixed_angle_deg", sweep.fixedAngleDeg);
    object.add("rays", sweep.nrays);
    object.add("gates", sweep.ngates);
    object.add("gate_spacing_m", sweep.gateSpacingM);
    object.add("first_gate_m", sweep.firstGateM);
    object.add("nyquist_m_s", sweep.nyquist);
    return object;
}

JsonObject classifiedObject(const scan::Sweep& sweep, const scan::ClassifiedSweep& result) {
    JsonObject object = sweepObject(sweep);
    JsonObject fields;
    for (int i = 0; i < scan::kRoleCount; ++i) {
        const auto role = static_cast<scan::Role>(i);
        if (result.fields[role] && scan::takesPart(role, result.mask)) {
            fields.add(scan::roleInfo(role).key, result.fields[role]->name);
        }
    }
    object.add("fields", fields);
    std::vector<std::string> inputs;
    for (const scan::Input& input : scan::inputs()) {
        if ((result.mask & input.bit()) != 0) {
            inputs.emplace_back(input.info->name);
        }
    }
    object.addList("inputs", inputs);
    object.add("radar_constant_db", result.noiseFloor.radarConstantDb);
    object.add("radar_constant_source", std::string(sourceName(result.noiseFloor.source)));
    object.add("min_snr_db", result.noiseFloor.minSnrDb);
    object.add("gates_by_class", countsObject(result));
    object.add("seconds", result.seconds);
    object.addList("warnings", result.noiseFloor.warnings);
    object.addList("notes", result.notes);
    return object;
}

void printFailureDocument(const std::string& file, const std::exception& error) {
    JsonObject object;
    object.add("file", file);
    object.add("failure", reasonOf(error));
    object.print();
}

}  // namespace cli
