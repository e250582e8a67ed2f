#include "report/exit_code.h"

#include <cstdio>
#include <iostream>

namespace cli {

void reportError(const std::string& file, const std::string& reason) {
    std::cout.flush();
    std::fflush(stdout);
    std::fprintf(stderr, "clutterclassifier: %s: %s\n", file.c_str(), reason.c_str());
}

}  // namespace cli
