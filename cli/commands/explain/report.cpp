/* report.cpp - prints why a gate has its class. */
#include "commands/explain/report.h"

#include <cmath>
#include <cstddef>
#include <cstdio>
#include <vector>

#include "report/json.h"
#include "report/notes.h"
#include "report/terminal.h"
#include "scan/classes/inputs.h"

namespace cli {

namespace {

const char* nameOfClass(int code) {
    switch (code) {
        case CLUTTER_PRECIPITATION:
            return "precipitation";
        case CLUTTER_NOISE:
            return "noise";
        case CLUTTER_GROUND:
            return "ground clutter";
        case CLUTTER_SEA:
            return "sea clutter";
        case CLUTTER_TURBINE:
            return "turbine clutter";
        default:
            return "not measured";
    }
}

const char* nameOfReason(int deciding) {
    if (deciding == CLUTTER_BY_NEIGHBOURHOOD) {
        return "neighbourhood";
    }
    if (deciding < 0 || deciding >= CLUTTER_INPUT_COUNT) {
        return "none";
    }
    return scan::inputs()[static_cast<std::size_t>(deciding)].info->name;
}

template <class... Values>
std::string format(const char* pattern, Values... values) {
    char text[256];
    std::snprintf(text, sizeof text, pattern, values...);
    return text;
}

/* The inputs in use, with their shares. */
struct Row {
    const scan::Input* input;
    const clutter_input_share* share;
};

std::vector<Row> rowsOf(const clutter_explanation& why) {
    std::vector<Row> rows;
    for (std::size_t i = 0; i < scan::inputs().size(); ++i) {
        const scan::Input& input = scan::inputs()[i];
        if ((why.inputs & input.info->bit) != 0) {
            rows.push_back({&input, &why.input[i]});
        }
    }
    return rows;
}

std::string turningText(double value) {
    return std::isnan(value) ? "-" : format("%.4g", value);
}

void printRows(const clutter_explanation& why) {
    std::printf("\n  %-12s %10s %-5s %13s %13s %13s %10s\n", "input", "value", "", "precipitation",
                "clutter", "contribution", "turns at");
    for (const Row& row : rowsOf(why)) {
        std::printf("  %-12s %10.4g %-5s %13.3g %13.3g %+13.3f %10s\n", row.input->info->name,
                    row.share->value, row.input->info->unit, row.share->precipitation,
                    row.share->clutter, row.share->contribution,
                    turningText(row.share->turning_value).c_str());
    }
}

void printJsonRow(const Row& row, bool last) {
    const clutter_input_share& share = *row.share;
    std::printf(
        "    {\"name\": %s, \"field\": %s, \"unit\": %s, \"value\": %s, \"precipitation\": %s, "
        "\"clutter\": %s, \"contribution\": %s, \"turning_value\": %s}%s\n",
        jsonText(row.input->info->name).c_str(), jsonText(row.input->info->field).c_str(),
        jsonText(row.input->info->unit).c_str(), jsonNumber(share.value).c_str(),
        jsonNumber(share.precipitation).c_str(), jsonNumber(share.clutter).c_str(),
        jsonNumber(share.contribution).c_str(), jsonNumber(share.turning_value).c_str(),
        last ? "" : ",");
}

}  // namespace

void printExplanation(const Explained& explained) {
    const Gate& gate = explained.gate;
    const clutter_explanation& why = explained.why;
    std::printf("%s: sweep %d, ray %d (azimuth %.2f deg, elevation %.2f deg), gate %d (%.3f km)\n",
                forTerminal(explained.file).c_str(), explained.sweep, gate.ray + 1, gate.azimuthDeg,
                gate.elevationDeg, gate.number + 1, gate.rangeKm);
    for (const std::string& note : explained.notes) {
        printDetail("note", note);
    }
    printDetail("class", nameOfClass(why.gate_class));
    if (why.inputs == 0) {
        return;
    }
    printDetail("margin", format("%+.3f (above 0 is precipitation)", why.margin));
    printDetail("probability", format("%.4f of precipitation", why.probability));
    printDetail("decided by", nameOfReason(why.deciding));
    printRows(why);
    std::printf("  %-12s %10s %-5s %13s %13s %+13.3f\n", "neighbourhood", "", "", "", "",
                why.neighbourhood);
    if (why.turning < 0) {
        std::printf("\n  No change of one input alone turns the verdict.\n");
    } else {
        const clutter_input_share& share = why.input[why.turning];
        std::printf("\n  The smallest change that turns the verdict: %s from %.4g to %.4g\n",
                    nameOfReason(why.turning), share.value, share.turning_value);
    }
}

void printExplanationJson(const Explained& explained) {
    const Gate& gate = explained.gate;
    const clutter_explanation& why = explained.why;
    std::printf(
        "{\n  \"file\": %s,\n  \"sweep\": %d,\n  \"ray\": %d,\n  \"gate\": %d,\n"
        "  \"azimuth_deg\": %s,\n  \"elevation_deg\": %s,\n  \"range_km\": %s,\n",
        jsonText(explained.file).c_str(), explained.sweep, gate.ray, gate.number,
        jsonNumber(gate.azimuthDeg).c_str(), jsonNumber(gate.elevationDeg).c_str(),
        jsonNumber(gate.rangeKm).c_str());
    std::printf(
        "  \"class\": %d,\n  \"class_name\": %s,\n  \"margin\": %s,\n  \"probability\": %s,\n"
        "  \"deciding\": %s,\n  \"neighbourhood\": %s,\n  \"turning\": %s,\n  \"inputs\": [\n",
        why.gate_class, jsonText(nameOfClass(why.gate_class)).c_str(),
        jsonNumber(why.margin).c_str(), jsonNumber(why.probability).c_str(),
        jsonText(nameOfReason(why.deciding)).c_str(), jsonNumber(why.neighbourhood).c_str(),
        why.turning < 0 ? "null" : jsonText(nameOfReason(why.turning)).c_str());
    const std::vector<Row> rows = rowsOf(why);
    for (const Row& row : rows) {
        printJsonRow(row, &row == &rows.back());
    }
    std::printf("  ]\n}\n");
}

}  // namespace cli
