/*
 * read_scan.h - any input file into a Scan, recognised by its content, not by its ending.
 */
#ifndef SCAN_FORMATS_READ_SCAN_H
#define SCAN_FORMATS_READ_SCAN_H

#include <memory>
#include <string>

#include "scan/formats/reading/recognise.h"
#include "scan/scan.h"

class Cufrw;

namespace scan {

/* How a file is read, and what it does not say about itself. */
struct ReadOptions {
    int polarLayout = 0;      // 252, 260 or 280; 0: unknown
    bool keepNoEcho = false;  // leave the value for "no echo" where NaN would replace it
    bool oddities = true;     // look for what is unusual
};

/* Reads a file of any format that the library reads. Throws std::runtime_error with the reason, a
 * phrase without the file's name. */
Scan readScan(const std::string& path, const ReadOptions& options = {});

/* The same, and keeps the words of a Universal Format file, so that it can be written back with
 * nothing lost; null for other formats. */
Scan readScan(const std::string& path, std::unique_ptr<Cufrw>& words,
              const ReadOptions& options = {});

/* Gates that hold their field's value for "no echo" lose it; their place is kept. */
void hideNoEcho(Scan& scan);

}  // namespace scan

#endif
