/* write_classes.cpp - chooses the writer by the ending, and commits all files of a scan together.
 */
#include "scan/formats/write_classes.h"

#include <algorithm>
#include <filesystem>
#include <functional>
#include <memory>
#include <set>
#include <stdexcept>

#include "clutterclassifier/clutterclassifier.h"
#include "scan/class_codes.h"
#include "scan/formats/compressed/unpacked_file.h"
#include "scan/formats/containers/containers.h"
#include "scan/formats/containers/write_containers.h"
#include "scan/formats/reading/recognise.h"
#include "scan/formats/record/write_record.h"
#include "scan/formats/uf/write_uf.h"
#include "scan/formats/writing/output_file.h"
#include "scan/text.h"

namespace scan {
namespace {

using Sweeps = std::vector<const Sweep*>;

/* The number in the file, or the position in it where numbers come twice. */
int labelOf(const Scan& scan, const Sweep& sweep) {
    std::set<int> numbers;
    for (const Sweep& other : scan.sweeps) {
        numbers.insert(other.number);
    }
    if (numbers.size() == scan.sweeps.size()) {
        return sweep.number;
    }
    return static_cast<int>(&sweep - scan.sweeps.data()) + 1;
}

const Field& classFieldOf(const Sweep& sweep) {
    const auto found = std::find_if(sweep.fields.begin(), sweep.fields.end(), isClassField);
    if (found == sweep.fields.end()) {
        throw std::runtime_error("sweep " + std::to_string(sweep.number) + " has no classes");
    }
    return *found;
}

/* One file for the whole scan. */
WrittenFiles writeWhole(const std::string& path,
                        const std::function<std::vector<std::string>(const OutputFile&)>& write) {
    OutputFile file(path);
    std::vector<std::string> notes = write(file);
    file.commit();
    return {{path}, std::move(notes)};
}

/* One file a sweep; write gets the file and the index of the sweep. */
WrittenFiles writeEach(const std::string& path, const Scan& scan, const Sweeps& sweeps,
                       const std::function<void(const OutputFile&, std::size_t)>& write) {
    WrittenFiles written{sweepPaths(path, scan, sweeps), {}};
    std::vector<std::unique_ptr<OutputFile>> files;
    for (std::size_t i = 0; i < sweeps.size(); ++i) {
        files.push_back(std::make_unique<OutputFile>(written.paths[i]));
        write(*files.back(), i);
    }
    for (const auto& file : files) {
        file->commit();
    }
    return written;
}

void noteElevations(const Sweeps& sweeps, WrittenFiles& written) {
    if (std::any_of(sweeps.begin(), sweeps.end(), [](const Sweep* sweep) { return sweep->rhi; })) {
        written.notes.push_back(lostElevationsNote("a field record file"));
    }
}

/* About records of all fields. */
void noteLosses(const Sweeps& sweeps, WrittenFiles& written) {
    noteElevations(sweeps, written);
    const std::string names = sweeps.empty() ? "" : shortNamesNote(sweeps.front()->fields);
    if (!names.empty()) {
        written.notes.push_back(names);
    }
}

}  // namespace

std::vector<std::string> sweepPaths(const std::string& path, const Scan& scan,
                                    const std::vector<const Sweep*>& sweeps) {
    if (scan.sweeps.size() == 1) {
        return {path};
    }
    const std::filesystem::path whole(path);
    std::vector<std::string> paths;
    for (const Sweep* sweep : sweeps) {
        std::filesystem::path name = whole;
        name.replace_filename(whole.stem().string() + "_sweep" +
                              std::to_string(labelOf(scan, *sweep)) + whole.extension().string());
        paths.push_back(name.string());
    }
    return paths;
}

std::string usualEnding(const std::string& path) {
    switch (recognise(path)) {
        case FileFormat::kUniversalFormat:
            return ".uf";
        case FileFormat::kHdf5:
        case FileFormat::kNetcdf:
            return containers().endingOf(path);
        case FileFormat::kNexrad:
            return ".nc";
        case FileFormat::kCompressed:
            return usualEnding(UnpackedFile(path).path());
        default:
            return ".plv";
    }
}

WrittenFiles writeClasses(const std::string& path, const Scan& scan, Cufrw* words,
                          const std::vector<SweepClasses>& classes, const ClassForm& form) {
    const std::string ending = endingOf(path);
    if (isContainerEnding(ending)) {
        return writeContainer(path, scan, classes, form);
    }
    if (ending == ".uf") {
        return writeWhole(path, [&](const OutputFile& file) {
            return writeUniversalFormat(file, scan, words, classes);
        });
    }
    Sweeps sweeps;
    for (const SweepClasses& entry : classes) {
        sweeps.push_back(entry.sweep);
    }
    const bool table = ending == ".csv";
    const auto write = table ? writeClassTable : writeClassRecord;
    WrittenFiles written =
        writeEach(path, scan, sweeps,
                  [&](const OutputFile& file, std::size_t i) { write(file, scan, classes[i]); });
    if (!table) {
        noteElevations(sweeps, written);
    } else if (!classes.empty() && !classes.front().certainty.empty()) {
        written.notes.push_back("a table holds the classes only, not how certain they are");
    }
    return written;
}

WrittenFiles writeCleaned(const std::string& path, const Scan& scan, Cufrw* words,
                          const std::vector<SweepClasses>& classes, const ClassForm& form) {
    const std::string ending = endingOf(path);
    if (isContainerEnding(ending) || ending == ".uf") {
        return writeClasses(path, scan, words, classes, form);
    }
    Sweeps sweeps;
    for (const SweepClasses& entry : classes) {
        sweeps.push_back(entry.sweep);
    }
    WrittenFiles written =
        writeEach(path, scan, sweeps, [&](const OutputFile& file, std::size_t i) {
            std::vector<Field> fields = sweeps[i]->fields;
            fields.push_back({"CCl", "-", *classes[i].classes});
            const std::vector<Field>& certainty = classes[i].certainty;
            fields.insert(fields.end(), certainty.begin(), certainty.end());
            writeRecords(file, scan, *sweeps[i], fields);
        });
    noteLosses(sweeps, written);
    return written;
}

WrittenFiles writeScan(const std::string& path, const Scan& scan) {
    const std::string ending = endingOf(path);
    if (isContainerEnding(ending)) {
        return writeContainer(path, scan, {});
    }
    if (ending == ".uf") {
        return writeWhole(path, [&](const OutputFile& file) {
            return writeUniversalFormat(file, scan, nullptr);
        });
    }
    Sweeps sweeps;
    for (const Sweep& sweep : scan.sweeps) {
        sweeps.push_back(&sweep);
    }
    if (ending == ".csv") {
        return writeEach(path, scan, sweeps, [&](const OutputFile& file, std::size_t i) {
            writeClassTable(file, scan, {sweeps[i], &classFieldOf(*sweeps[i]).values});
        });
    }
    WrittenFiles written =
        writeEach(path, scan, sweeps, [&](const OutputFile& file, std::size_t i) {
            writeRecords(file, scan, *sweeps[i], sweeps[i]->fields);
        });
    noteLosses(sweeps, written);
    return written;
}

}  // namespace scan
