#include "output/class_output.h"

#include <filesystem>
#include <memory>
#include <set>

#include "output/output_file.h"
#include "output/record_output.h"
#include "output/uf_output.h"
#include "scan/fields/roles.h"

namespace cli {

using namespace scan;

namespace {

std::string endingOf(const std::string& path) {
    return lowerCase(std::filesystem::path(path).extension().string());
}

/* The number in the file, or the place in it where numbers come twice. */
int labelOf(const Scan& scan, const Sweep& sweep) {
    std::set<int> numbers;
    for (const Sweep& other : scan.sweeps) numbers.insert(other.number);
    if (numbers.size() == scan.sweeps.size()) return sweep.number;
    return static_cast<int>(&sweep - scan.sweeps.data()) + 1;
}

void writeOne(const std::string& ending, const std::string& path, const Scan& scan,
              const SweepClasses& classes) {
    if (ending == ".csv")
        writeTable(path, scan, classes);
    else if (ending == ".uf")
        writeUniversalFormat(path, scan, classes);
    else
        writeFieldRecord(path, scan, classes);
}

}  // namespace

std::vector<std::string> sweepPaths(const std::string& path, const Scan& scan,
                                    const std::vector<SweepClasses>& classes) {
    if (scan.sweeps.size() == 1) return {path};
    const std::filesystem::path whole(path);
    std::vector<std::string> paths;
    for (const SweepClasses& entry : classes) {
        std::filesystem::path name = whole;
        name.replace_filename(whole.stem().string() + "_sweep" +
                              std::to_string(labelOf(scan, *entry.sweep)) +
                              whole.extension().string());
        paths.push_back(name.string());
    }
    return paths;
}

std::vector<std::string> writeClasses(const std::string& path, const Scan& scan, Cufrw* words,
                                      const std::vector<SweepClasses>& classes) {
    const std::string ending = endingOf(path);
    if (ending == ".uf" && words) {
        OutputFile file(path);
        writeUniversalFormat(file.temporary(), scan, *words, classes);
        file.commit();
        return {path};
    }
    std::vector<std::string> paths = sweepPaths(path, scan, classes);
    std::vector<std::unique_ptr<OutputFile>> files;
    for (size_t i = 0; i < paths.size(); ++i) {
        files.push_back(std::make_unique<OutputFile>(paths[i]));
        writeOne(ending, files.back()->temporary(), scan, classes[i]);
    }
    for (const auto& file : files) file->commit();
    return paths;
}

}  // namespace cli
