/* unpacked_file.h - what is in a compressed file, as a file that readers can open by name. */
#ifndef SCAN_FORMATS_COMPRESSED_UNPACKED_FILE_H
#define SCAN_FORMATS_COMPRESSED_UNPACKED_FILE_H

#include <string>

namespace scan {

/* Kept in memory, or in a nameless temporary file, until it is destroyed. */
class UnpackedFile {
  public:
    /* Throws std::runtime_error if the file is damaged, cut, or grows beyond all measure. */
    explicit UnpackedFile(const std::string& packed);
    ~UnpackedFile();
    UnpackedFile(const UnpackedFile&) = delete;
    UnpackedFile& operator=(const UnpackedFile&) = delete;

    [[nodiscard]] const std::string& path() const { return path_; }

  private:
    void add(const unsigned char* bytes, std::size_t size) const;

    int descriptor_ = -1;
    std::string path_;
};

}  // namespace scan

#endif
