#include "scan/classes/membership_files.h"

#include <memory>
#include <stdexcept>
#include <vector>

#include "clutterclassifier/clutterclassifier.h"

namespace scan {
namespace {

constexpr size_t kLongestDirectory = 1000; /* the context's buffer holds 1,024 characters */

/* One bit of the input mask a row; the clutter likelihood needs no file. */
constexpr struct {
    int bit;
    const char* tag;
} kTags[] = {{1, "sZhh"}, {2, "sZdr"}, {4, "sPdp"},  {8, "sRhv"},
             {16, "Vel"}, {32, "LDR"}, {128, "Rhv"}, {256, "Wid"}};

bool isReadable(const std::string& path) {
    std::string name = path;
    double* x = nullptr;
    double* y = nullptr;
    int count = 0;
    Cfuzzy reader(0, 0, 0, 0);
    const int result = reader.readmf(name.data(), &x, &y, count);
    const std::unique_ptr<double[]> abscissas(x);
    const std::unique_ptr<double[]> degrees(y);
    return result == 1 && count > 0;
}

}  // namespace

std::string withSeparator(std::string directory) {
    if (directory.back() != '/') directory += '/';
    if (directory.size() > kLongestDirectory)
        throw std::runtime_error("the name of the membership directory is too long");
    return directory;
}

void requireMembershipFiles(const std::string& directory, int mask, bool allClasses) {
    std::vector<const char*> classes = {"_clutter.dat", "_precipi.dat"};
    if (allClasses) classes.insert(classes.end(), {"_seaclut.dat", "_turclut.dat"});
    for (const auto& row : kTags) {
        if (!(mask & row.bit)) continue;
        for (const char* suffix : classes) {
            const std::string path = directory + "cal_mf_" + row.tag + suffix;
            if (!isReadable(path)) throw std::runtime_error("no membership function in " + path);
        }
    }
}

}  // namespace scan
