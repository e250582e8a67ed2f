/*
 * A polar record as a comma-separated table (docs/formats/csv.md): a line for each gate, a column
 * for each ray.
 */
#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <string>
#include <utility>

#include "base/constants.h"
#include "base/files/file.h"
#include "base/message.h"
#include "base/text_writer.h"
#include "clutterclassifier/Cpluvek.h"
#include "model/coordinates.h"

using clutter::base::TextWriter;
using namespace clutter::model;

namespace {

std::string defaultPath(const Cpluvek& record) {
    char path[200];
    std::snprintf(path, sizeof path, "%.4d%.2d%.2d%.2d%.2d%.2d_%.99s.csv", record.year,
                  record.month, record.day, record.hour, record.minute, record.second, record.name);
    return path;
}

void writeAzimuths(const Cpluvek& record, TextWriter& out) {
    out.text("range/angle,");
    for (int r = 0; r < record.nrays; ++r) {
        out.fixed(static_cast<double>(180.0f * record.angles[1 + r]) / clutter::base::kPi, 1)
            .text(",");
    }
    out.text("\n");
}

void writeGate(const Cpluvek& record, int gate, TextWriter& out) {
    out.fixed(static_cast<double>(static_cast<float>(gate) * record.gatesize / 1000.0f), 2);
    out.text(",");
    for (std::ptrdiff_t r = 0; r < record.nrays; ++r) {
        out.fixed(static_cast<double>(record.data[r * record.ngates + gate]), 2).text(",");
    }
    out.text("\n");
}

}  // namespace

int Cpluvek::SavePolarData2Ascii(const char* file) {
    if (data == nullptr || angles == nullptr || coordtype != kPolar) {
        clutter::base::report("Invalid data file \n");
        return 0;
    }
    const std::string path = file != nullptr ? file : defaultPath(*this);
    clutter::base::report("Saving results to %s\n", path.c_str());
    clutter::base::File stream = clutter::base::openFile(path.c_str(), "wt");
    if (!stream) {
        clutter::base::report("Could not create output file %s \n",
                              file != nullptr ? file : "(null)");
        return 0;
    }
    {
        TextWriter out(stream.get());
        writeAzimuths(*this, out);
        for (int gate = 0; gate < ngates; ++gate) {
            writeGate(*this, gate, out);
        }
    }
    return clutter::base::closeChecked(std::move(stream)) ? 1 : 0;
}
