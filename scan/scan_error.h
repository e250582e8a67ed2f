/* scan_error.h - why something cannot be done with a scan, so that callers can add a hint. */
#ifndef SCAN_SCAN_ERROR_H
#define SCAN_SCAN_ERROR_H

#include <stdexcept>
#include <string>

namespace scan {

/* Failures that a caller can help with. */
enum class Failure {
    kNoReflectivity,  // no field has that role
    kNoInputs,        // no field for any of the inputs
    kLayoutNeeded     // the file does not say how its gates are packed
};

/* A reason, a phrase without the file's name or an option's. */
class ScanError : public std::runtime_error {
  public:
    ScanError(Failure failure, const std::string& reason)
        : std::runtime_error(reason), failure_(failure) {}

    [[nodiscard]] Failure failure() const { return failure_; }

  private:
    Failure failure_;
};

}  // namespace scan

#endif
