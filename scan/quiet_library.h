/* quiet_library.h - the library's operations without what they print. */
#ifndef SCAN_QUIET_LIBRARY_H
#define SCAN_QUIET_LIBRARY_H

namespace scan {

/*
 * Keeps messages of the library off standard output while at least one lives, in any thread. Only
 * what goes through the C library's standard output is lost, not the descriptor behind it: a host
 * that writes there itself is not disturbed.
 */
class QuietLibrary {
  public:
    QuietLibrary();
    ~QuietLibrary();
    QuietLibrary(const QuietLibrary&) = delete;
    QuietLibrary& operator=(const QuietLibrary&) = delete;
};

}  // namespace scan

#endif
