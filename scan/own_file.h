/* own_file.h - where this code lies on disk: what is installed with it is found from there. */
#ifndef SCAN_OWN_FILE_H
#define SCAN_OWN_FILE_H

#include <filesystem>

namespace scan {

/*
 * The shared library that this code is linked into, or the program; empty where the platform does
 * not say. It is the only place that asks the platform.
 */
std::filesystem::path ownFile();

}  // namespace scan

#endif
