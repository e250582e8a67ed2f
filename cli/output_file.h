/* output_file.h - an output file that appears complete or not at all. */
#ifndef CLI_OUTPUT_FILE_H
#define CLI_OUTPUT_FILE_H

#include <string>

namespace cli {

/*
 * A temporary name beside the target. What was written there becomes the target with commit(), and
 * is removed otherwise: when the object goes, or when the program is interrupted.
 */
class OutputFile {
  public:
    /* Throws std::runtime_error when the target is a directory, a device or a pipe, or when its
     * directory does not exist. */
    explicit OutputFile(const std::string& target);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    const std::string& temporary() const { return temporary_; }

    /* Throws std::runtime_error when the file cannot take the target's name. */
    void commit();

  private:
    std::string target_;
    std::string temporary_;
};

}  // namespace cli

#endif
