/* output_file.h - an output file that appears complete or not at all. */
#ifndef CLI_OUTPUT_OUTPUT_FILE_H
#define CLI_OUTPUT_OUTPUT_FILE_H

#include <cerrno>
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

/* Throws std::runtime_error: "cannot write <file>: <reason>", of the target where path is the
 * temporary name of one, without a reason where error is 0. */
[[noreturn]] void failWriting(const std::string& path, int error);

/* Throws so when write, which is to fill the file, returns false: its errno is the reason. */
template <class Write>
void requireWritten(const std::string& path, Write write) {
    errno = 0;
    if (!write()) failWriting(path, errno);
}

}  // namespace cli

#endif
