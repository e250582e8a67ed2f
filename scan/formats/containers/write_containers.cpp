/* Chooses the writer of a container by the ending, and whether the input is copied. */
#include "scan/formats/containers/write_containers.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <iterator>
#include <memory>

#include "scan/fields/oddities.h"
#include "scan/formats/compressed/unpacked_file.h"
#include "scan/formats/containers/containers.h"
#include "scan/formats/reading/recognise.h"
#include "scan/formats/writing/output_file.h"
#include "scan/text.h"

namespace scan {
namespace {

struct Container {
    const char* ending;
    const char* format;  // as readers name it
    Containers::Write Containers::*write;
    Containers::Add Containers::*add;
};

constexpr Container kContainers[] = {
    {".h5", "ODIM_H5", &Containers::writeOdim, &Containers::addOdimClasses},
    {".hdf", "ODIM_H5", &Containers::writeOdim, &Containers::addOdimClasses},
    {".hdf5", "ODIM_H5", &Containers::writeOdim, &Containers::addOdimClasses},
    {".nc", "CfRadial 1", &Containers::writeCfRadial1, &Containers::addCfRadialClasses},
    {".nc4", "CfRadial 2", &Containers::writeCfRadial2, &Containers::addCfRadialClasses},
};

const Container* find(const std::string& ending) {
    const auto* found =
        std::find_if(std::begin(kContainers), std::end(kContainers),
                     [&](const Container& known) { return ending == known.ending; });
    return found == std::end(kContainers) ? nullptr : found;
}

/* ".nc" is the usual ending of both releases of CfRadial: a file of release 2 stays one. */
bool isSameFormat(const Scan& scan, const Container& container) {
    const bool release2 = scan.format == "CfRadial 2" && container.ending == std::string(".nc");
    return scan.format == container.format || release2;
}

/* Copies the file that a scan was read from, unpacked; false if there is no such file. */
bool copyInput(const Scan& scan, const OutputFile& file) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(scan.opened, error)) {
        return false;
    }
    std::unique_ptr<UnpackedFile> unpacked;
    if (recognise(scan.opened) == FileFormat::kCompressed) {
        unpacked = std::make_unique<UnpackedFile>(scan.opened);
    }
    std::filesystem::copy_file(unpacked ? unpacked->path() : scan.opened, file.temporary(),
                               std::filesystem::copy_options::overwrite_existing, error);
    if (error) {
        failWriting(file.target(), error.value());
    }
    return true;
}

/* These formats hold any number as a latitude. */
void noteSite(const Scan& scan, WrittenFiles& written) {
    if (!liesOnEarth(scan)) {
        char site[80];
        std::snprintf(site, sizeof site, "%g N, %g E", scan.latitudeDeg, scan.longitudeDeg);
        written.notes.push_back(
            "the site lies outside the Earth's coordinates and is written as "
            "it is: " +
            std::string(site));
    }
}

}  // namespace

bool isContainerEnding(const std::string& ending) {
    return find(ending) != nullptr;
}

WrittenFiles writeContainer(const std::string& path, const Scan& scan,
                            const std::vector<SweepClasses>& classes, const ClassForm& form) {
    const Container& container = *find(endingOf(path));
    const Containers& module = containers();
    OutputFile file(path);
    WrittenFiles written{{path}, {}};
    const bool copied = !classes.empty() && isSameFormat(scan, container) && copyInput(scan, file);
    written.notes = copied ? (module.*container.add)(file.temporary(), classes, form)
                           : (module.*container.write)(file.temporary(), scan, classes, form);
    if (!copied) {
        noteSite(scan, written);
    }
    file.commit();
    return written;
}

}  // namespace scan
