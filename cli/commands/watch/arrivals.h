/* arrivals.h - files that become complete in a folder, in the order in which they do. */
#ifndef CLI_COMMANDS_WATCH_ARRIVALS_H
#define CLI_COMMANDS_WATCH_ARRIVALS_H

#include <deque>
#include <string>

namespace cli {

struct Arrival {
    std::string name;   // in the folder
    double timeS = 0;   // since 1970: when it was complete
    bool fresh = true;  // it came while the folder was watched
};

/* A file is complete when it is closed after writing, or renamed into the folder. Files that are
 * there at the beginning come first, the oldest first. Hidden files and folders are left out. */
class Arrivals {
  public:
    /* Throws std::system_error. */
    explicit Arrivals(std::string folder);
    ~Arrivals();
    Arrivals(const Arrivals&) = delete;
    Arrivals& operator=(const Arrivals&) = delete;

    /* Waits so long for a file. False: none came, or a signal did. */
    bool wait(double seconds, Arrival& next);

  private:
    void listAll();
    void readEvents();
    void add(const std::string& name, double timeS, bool fresh);

    std::string folder_;
    int events_;
    std::deque<Arrival> waiting_;
};

/* Seconds since 1970. */
double nowS();

}  // namespace cli

#endif
