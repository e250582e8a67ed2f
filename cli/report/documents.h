/* documents.h - what a command has to say about a file, as one JSON object on a line. */
#ifndef CLI_REPORT_DOCUMENTS_H
#define CLI_REPORT_DOCUMENTS_H

#include <exception>
#include <string>
#include <vector>

#include "report/json.h"
#include "scan/classes/classify_sweep.h"
#include "scan/scan.h"

namespace cli {

/* Name, format, radar, site and time of a file, as the beginning of its document. */
JsonObject scanObject(const scan::Scan& scan);

/* Number, rays and gates of a sweep. */
JsonObject sweepObject(const scan::Sweep& sweep);

/* The sweep, and how it was classified: fields, inputs, calibration, counts, notes. */
JsonObject classifiedObject(const scan::Sweep& sweep, const scan::ClassifiedSweep& result);

/* The document of a file that failed. */
void printFailureDocument(const std::string& file, const std::exception& error);

/* Runs a step on a file; prints the document of its failure, where documents are wanted. */
template <class Step>
void documented(bool wanted, const std::string& file, Step step) {
    try {
        step();
    } catch (const std::exception& error) {
        if (wanted) {
            printFailureDocument(file, error);
        }
        throw;
    }
}

}  // namespace cli

#endif
