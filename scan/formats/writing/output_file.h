/* output_file.h - an output file that appears complete or not at all. */
#ifndef SCAN_FORMATS_WRITING_OUTPUT_FILE_H
#define SCAN_FORMATS_WRITING_OUTPUT_FILE_H

#include <cerrno>
#include <string>

namespace scan {

/*
 * A new, empty file beside the target, under a name that nobody can foresee. Its contents become
 * the target with commit(); otherwise it is removed when the object is destroyed. An existing
 * target keeps its permissions, a symbolic link to it stays.
 */
class OutputFile {
  public:
    /* Throws std::runtime_error when the target is a directory, a device or a pipe, or when no file
     * can be created beside it. */
    explicit OutputFile(const std::string& target);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    [[nodiscard]] const std::string& target() const { return target_; }
    [[nodiscard]] const std::string& temporary() const { return temporary_; }

    /* Throws std::runtime_error when the file cannot take the target's name. */
    void commit();

  private:
    std::string target_;
    std::string temporary_;
};

/* From now on an interrupted program (SIGINT, SIGTERM, SIGHUP) removes its temporary files and
 * ends. For a program only: code that runs within another one leaves its signals alone. */
void removeTemporariesWhenInterrupted();

/* Throws std::runtime_error: "cannot write <path>: <reason>", without a reason where error is 0. */
[[noreturn]] void failWriting(const std::string& path, int error);

/* Calls write, which is to fill the file. Throws as above when it returns false; its errno is the
 * reason. */
template <class Write>
void requireWritten(const std::string& path, Write write) {
    errno = 0;
    if (!write()) {
        failWriting(path, errno);
    }
}

template <class Write>
void requireWritten(const OutputFile& file, Write write) {
    requireWritten(file.target(), write);
}

}  // namespace scan

#endif
