/*
 * temp_dir.h - a private directory that goes away with its owner, and whole files in one call.
 */
#ifndef CLUTTER_TESTS_SUPPORT_TEMP_DIR_H
#define CLUTTER_TESTS_SUPPORT_TEMP_DIR_H

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

namespace clutter::test {

using ByteVector = std::vector<unsigned char>;

class TempDir {
  public:
    explicit TempDir(const std::filesystem::path& parent = std::filesystem::temp_directory_path()) {
        std::string pattern = (parent / "clutterclassifier-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) {
            throw std::runtime_error("no temporary directory");
        }
        path_ = pattern;
    }
    ~TempDir() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    const std::string& path() const { return path_; }
    std::string file(const std::string& name) const { return path_ + "/" + name; }

  private:
    std::string path_;
};

inline void writeFile(const std::string& path, const ByteVector& bytes) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(bytes.data()),
              static_cast<std::streamsize>(bytes.size()));
}

inline ByteVector readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return ByteVector(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

/* Directory of measured files, which are not in the sources; "" without one. */
inline std::string measuredDataDir() {
    const char* dir = getenv("CLUTTERCLASSIFIER_DATA");
    return dir != nullptr && std::filesystem::is_directory(dir) ? dir : "";
}

}  // namespace clutter::test

#endif
