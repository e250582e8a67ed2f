/* input_file.h - an input of a command: a file, a pipe, or standard input. */
#ifndef CLI_OPTIONS_INPUT_FILE_H
#define CLI_OPTIONS_INPUT_FILE_H

#include <memory>
#include <string>

#include "scan/formats/read_scan.h"

namespace cli {

/* The help of an option that names one. */
inline constexpr char kInputHelp[] =
    "Radar file of any format that the library reads; - is standard input";

/*
 * Radar files are opened by name, more than once, and read out of order. What comes through a pipe
 * (or through standard input, named "-") is therefore copied into memory when it is first needed,
 * and has a path from then on.
 */
class InputFile {
  public:
    explicit InputFile(std::string given);
    ~InputFile();
    InputFile(InputFile&& other) noexcept;
    InputFile& operator=(InputFile&&) = delete;

    /* The input as the user gave it; "-" is "<standard input>". */
    [[nodiscard]] const std::string& name() const { return name_; }

    /* The beginning of the names of results: the file's name without its ending. */
    [[nodiscard]] std::string stem() const;

    /* The path to read from, as often as needed. Throws std::runtime_error for a terminal, another
     * device, or a pipe that holds too much. */
    [[nodiscard]] const std::string& path() const;

  private:
    [[nodiscard]] std::string copy() const;

    std::string given_, name_;
    mutable std::string path_, failure_;  // both empty: not needed yet
    mutable int descriptor_ = -1;         // of the copy in memory
};

/* scan::readScan(), with the name that the user knows as the scan's path. */
scan::Scan readInput(const InputFile& input, const scan::ReadOptions& options);
scan::Scan readInput(const InputFile& input, std::unique_ptr<Cufrw>& words,
                     const scan::ReadOptions& options);

}  // namespace cli

#endif
