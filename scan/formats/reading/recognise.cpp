/* Formats by their first bytes: a table where fixed bytes are enough, and a few judgements. */
#include "scan/formats/reading/recognise.h"

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string_view>

#include "scan/opened_file.h"

namespace scan {
namespace {

constexpr std::size_t kHeadBytes = 64;

struct Signature {
    std::string_view bytes;
    FileFormat format;
    const char* foreign = "";
};

using namespace std::string_view_literals;

struct Recognised {
    FileFormat format = FileFormat::kUnknown;
    const char* foreign = "";  // the name of a format that is not read
};

constexpr Signature kSignatures[] = {
    {"PLUVEK V1.3"sv, FileFormat::kFieldRecord},
    {"RADF"sv, FileFormat::kPolarData},
    {"ARFD"sv, FileFormat::kPolarData},
    {"AR2V"sv, FileFormat::kNexrad},
    {"ARCHIVE2"sv, FileFormat::kNexrad},
    {"\x89HDF\r\n\x1A\n"sv, FileFormat::kHdf5},
    {"CDF\x01"sv, FileFormat::kNetcdf},
    {"CDF\x02"sv, FileFormat::kNetcdf},
    {"CDF\x05"sv, FileFormat::kNetcdf},
    {"\x1F\x8B"sv, FileFormat::kCompressed},
    {"BZh"sv, FileFormat::kCompressed},
    {"<volume"sv, FileFormat::kForeign, "a Rainbow 5"},
    {"BUFR"sv, FileFormat::kForeign, "a BUFR"},
    {"SSWB"sv, FileFormat::kForeign, "a DORADE"},
    {"VOLD"sv, FileFormat::kForeign, "a DORADE"},
};

bool beginsWith(std::string_view head, std::string_view bytes) {
    return head.substr(0, bytes.size()) == bytes;
}

/* "DX" and the first digits of a date. */
bool isGermanDx(std::string_view head) {
    const std::size_t end = head.find_first_not_of(" 0123456789", 2);
    return beginsWith(head, "DX") && (end == std::string_view::npos ? head.size() : end) >= 8;
}

unsigned littleEndian(std::string_view head, std::size_t at) {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(head[i]); };
    return byte(at) | static_cast<unsigned>(byte(at + 1)) << 8;
}

/* A product header that holds a product configuration. */
bool isIris(std::string_view head) {
    constexpr unsigned kProductHeader = 27, kProductConfiguration = 26;
    return head.size() >= 14 && littleEndian(head, 0) == kProductHeader &&
           littleEndian(head, 12) == kProductConfiguration;
}

/* The length of its header, a version, and a year of this century. */
bool isFuruno(std::string_view head) {
    if (head.size() < 6) {
        return false;
    }
    const unsigned length = littleEndian(head, 0), version = littleEndian(head, 2);
    const unsigned year = littleEndian(head, 4);
    return length >= 32 && length <= 1024 && (version == 3 || version == 10 || version == 103) &&
           year >= 2000 && year <= 2100;
}

/* A bulletin may precede it. */
bool holdsBufr(std::string_view head) {
    return head.find("BUFR") != std::string_view::npos;
}

Recognised judge(std::string_view head) {
    for (const Signature& signature : kSignatures) {
        if (beginsWith(head, signature.bytes)) {
            return {signature.format, signature.foreign};
        }
    }
    if (isGermanDx(head)) {
        return {FileFormat::kGermanDx};
    }
    if (head.size() >= 6 && head.substr(4, 2) == "UF") {
        return {FileFormat::kUniversalFormat};
    }
    if (isIris(head)) {
        return {FileFormat::kForeign, "an IRIS"};
    }
    if (isFuruno(head)) {
        return {FileFormat::kForeign, "a FURUNO"};
    }
    return holdsBufr(head) ? Recognised{FileFormat::kForeign, "a BUFR"} : Recognised{};
}

Recognised recogniseFile(const std::string& path) {
    std::error_code ignored;
    if (std::filesystem::is_directory(path, ignored)) {
        throw std::runtime_error("is a directory");
    }
    std::ifstream file = openToRead(path);
    char head[kHeadBytes];
    file.read(head, sizeof head);
    if (file.gcount() == 0) {
        throw std::runtime_error("is empty");
    }
    return judge({head, static_cast<std::size_t>(file.gcount())});
}

}  // namespace

FileFormat recognise(const std::string& path) {
    return recogniseFile(path).format;
}

std::string foreignFormat(const std::string& path) {
    return recogniseFile(path).foreign;
}

}  // namespace scan
