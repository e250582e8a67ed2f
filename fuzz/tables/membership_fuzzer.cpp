/*
 * Reads a membership file and evaluates an engine with it: the gates together, in blocks, as each
 * of them alone; and the classifier's stricter reader takes no file that the engine refuses.
 */
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <iterator>
#include <stdexcept>
#include <string>

#include "clutterclassifier/Cfuzzy.h"
#include "clutterclassifier/classifier.h"
#include "fuzz/support/input_file.h"
#include "fuzz/support/require.h"
#include "scan/membership/pairs.h"
#include "scan/membership/table_file.h"

namespace {

using namespace clutter::fuzz;

constexpr float kGates[] = {-INFINITY, -1.0f, -0.0f, 0.0f,  0.25f, 0.5f,  0.75f, 1.0f,    2.0f,
                            3.0f,      5.0f,  10.0f, 30.0f, 99.0f, 1e30f, NAN,   INFINITY};

void evaluate(const std::string& path, bool readable) {
    Cfuzzy engine(1, 2, 1, 1);
    float params[5] = {};
    engine.Fillmfs(0, 0, "input", "table", path.c_str(), params);
    engine.Fillmfs(0, 1, "input", "ones", "ones", params);
    short rules[] = {0, 1, 1, 2};
    engine.Fillrules(rules, 2);
    float gates[std::size(kGates)], together[std::size(kGates)];
    std::copy(std::begin(kGates), std::end(kGates), gates);
    engine.AddressDataPointers(0, gates);
    const int result = engine.Evaluate(together, static_cast<int>(std::size(gates)));
    require((result == 1) == readable, "an engine works where its file can be read");
    for (std::size_t i = 0; readable && i < std::size(gates); ++i) {
        float alone = 77.0f;
        engine.AddressDataPointers(0, gates + i);
        require(engine.Evaluate(&alone, 1) == 1, "one gate is enough");
        require(alone == together[i], "a gate has the same class alone and among others");
    }
}

/* The reader that names lines: it finds a fault where the engine does. */
void examine(const std::string& directory, const std::string& file, bool readable) {
    const scan::TableFile table = scan::readTableFile(directory, file);
    require(readable || !table.findings.empty() || table.points.empty(), "a fault is found");
    for (const scan::TablePoint& point : table.points) {
        require(std::isfinite(point.x) && std::isfinite(point.degree), "points are numbers");
        require(point.line > 0, "points have lines");
        double number = 0;
        require(scan::parseNumber(std::to_string(point.line), number) && number == point.line,
                "a line's number is a number");
    }
    try {
        for (const scan::TablePair& pair : scan::readPairs(directory)) {
            require(!pair.precipitation.empty() && !pair.clutter.empty(), "a pair has points");
        }
    } catch (const std::runtime_error&) {
        // the fault, with its file and line
    }
}

/* The same table for both classes of one input. */
void create(const std::string& path, bool readable) {
    const std::string directory = scratch().file("");
    for (const char* name : {"cal_mf_Vel_clutter.dat", "cal_mf_Vel_precipi.dat"}) {
        std::filesystem::copy_file(path, directory + name,
                                   std::filesystem::copy_options::overwrite_existing);
    }
    examine(directory, "cal_mf_Vel_clutter.dat", readable);
    clutter_classifier* classifier = nullptr;
    clutter_message message;
    const clutter_status status =
        clutter_create(directory.c_str(), CLUTTER_VELOCITY, 0, &classifier, &message);
    require((status == CLUTTER_OK) == (classifier != nullptr), "a classifier or a reason");
    require((status == CLUTTER_OK) == (message.text[0] == '\0'), "a message where it failed");
    require(status != CLUTTER_OK || readable, "no table that the engine cannot read");
    clutter_destroy(classifier);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string path = inputFile(data, size);
    Cfuzzy engine(1, 2, 1, 1);
    double *x = nullptr, *y = nullptr;
    int points = 0;
    const bool readable = engine.readmf(path.data(), &x, &y, points) == 1;
    require(!readable || points >= 1, "a table has points");
    delete[] x;
    delete[] y;
    evaluate(path, readable);
    create(path, readable);
    return 0;
}
