/* results.h - results of the library that every platform must give. */
#ifndef TESTS_PLATFORMS_RESULTS_H
#define TESTS_PLATFORMS_RESULTS_H

#include <map>
#include <string>
#include <vector>

namespace platforms {

/* Values, or the bytes of a file as values. */
struct Result {
    std::vector<float> values;
    /* Rests on sin, log10, pow, ... of the C library: another one may round otherwise. */
    bool rounded = false;
};

using Results = std::map<std::string, Result>;

/* A small scan to begin from, written to path. Made once: it rests on the C library, too. */
void makeInput(const std::string& path);

/* Everything that is compared. Files are written to folder and read again. */
Results resultsOf(const std::string& input, const std::string& membership,
                  const std::string& folder);

}  // namespace platforms

#endif
