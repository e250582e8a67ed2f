/* read_uf.h - a Universal Format file into a Scan. */
#ifndef SCAN_FORMATS_UF_READ_UF_H
#define SCAN_FORMATS_UF_READ_UF_H

#include <memory>
#include <string>

#include "scan/scan.h"

class Cufrw;

namespace scan {

/* Throws std::runtime_error with the reason. words receives the file's words. */
Scan readUniversalFormat(const std::string& path, std::unique_ptr<Cufrw>& words);

}  // namespace scan

#endif
