/*
 * Reading volumes, beside what the bare libraries need to deliver the same decoded arrays: medians
 * of processor time (of all threads) and their ratio, in one run. Of Universal Format the other
 * side is a plain copy of the file from the page cache. Give files of any of these formats.
 */
#include <bzlib.h>
#include <hdf5.h>
#include <netcdf.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <exception>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "scan/formats/read_scan.h"

namespace {

constexpr int kRuns = 15;

double medianMs(const std::function<void()>& work) {
    std::vector<double> times;
    for (int run = 0; run < kRuns; ++run) {
        const std::clock_t begin = std::clock();
        work();
        times.push_back(1000.0 * static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC);
    }
    std::nth_element(times.begin(), times.begin() + kRuns / 2, times.end());
    return times[kRuns / 2];
}

/* What a reader delivers: all of it is there at the end. */
using Arrays = std::vector<std::vector<float>>;

/* One group's data, read as floats by the library, then scaled. */
herr_t readData(hid_t group, const char* name, const H5O_info_t* info, void* arrays) {
    if (info->type != H5O_TYPE_DATASET) {
        return 0;
    }
    const hid_t data = H5Dopen2(group, name, H5P_DEFAULT);
    const hid_t space = H5Dget_space(data);
    if (H5Sget_simple_extent_ndims(space) == 2) {
        std::vector<float> values(static_cast<std::size_t>(H5Sget_simple_extent_npoints(space)));
        H5Dread(data, H5T_NATIVE_FLOAT, H5S_ALL, H5S_ALL, H5P_DEFAULT, values.data());
        for (float& value : values) {
            value = value * 0.5f - 32;
        }
        static_cast<Arrays*>(arrays)->push_back(std::move(values));
    }
    H5Sclose(space);
    H5Dclose(data);
    return 0;
}

void readBareHdf5(const std::string& path) {
    const hid_t file = H5Fopen(path.c_str(), H5F_ACC_RDONLY, H5P_DEFAULT);
    Arrays arrays;
    H5Ovisit2(file, H5_INDEX_NAME, H5_ITER_INC, readData, &arrays, H5O_INFO_BASIC);
    H5Fclose(file);
}

void readBareNetcdf(const std::string& path) {
    int file = 0;
    int variables = 0;
    nc_open(path.c_str(), NC_NOWRITE, &file);
    nc_inq_nvars(file, &variables);
    Arrays arrays;
    for (int id = 0; id < variables; ++id) {
        int dimensions[NC_MAX_VAR_DIMS];
        int count = 0;
        int type = 0;
        nc_inq_var(file, id, nullptr, &type, &count, dimensions, nullptr);
        std::size_t rows = 0;
        std::size_t columns = 0;
        if (count == 2 && type != NC_CHAR) {
            nc_inq_dimlen(file, dimensions[0], &rows);
            nc_inq_dimlen(file, dimensions[1], &columns);
            std::vector<float> values(rows * columns);
            nc_get_var_float(file, id, values.data());
            arrays.push_back(std::move(values));
        }
    }
    nc_close(file);
}

/* Every byte of a record is decoded, as if it were a gate of one byte: nearly all of them are. */
void unpackBareNexrad(const std::string& path) {
    constexpr std::size_t kHeaderBytes = 24;
    constexpr unsigned kMaxRecordBytes = 4 << 20;
    std::vector<char> bytes(std::filesystem::file_size(path));
    std::ifstream(path, std::ios::binary)
        .read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    std::vector<char> record(kMaxRecordBytes);
    Arrays arrays;
    for (std::size_t at = kHeaderBytes; at + 4 < bytes.size();) {
        std::uint32_t size = 0;
        for (std::size_t i = 0; i < 4; ++i) {
            size = size << 8 | static_cast<unsigned char>(bytes[at + i]);
        }
        size = static_cast<std::uint32_t>(std::abs(static_cast<std::int32_t>(size)));
        unsigned length = kMaxRecordBytes;
        BZ2_bzBuffToBuffDecompress(record.data(), &length, bytes.data() + at + 4, size, 0, 0);
        at += 4 + size;
        std::vector<float> values(length);
        for (unsigned i = 0; i < length; ++i) {
            values[i] = (static_cast<float>(static_cast<unsigned char>(record[i])) - 66) / 2;
        }
        arrays.push_back(std::move(values));
    }
}

std::filesystem::path copyPath() {
    return std::filesystem::temp_directory_path() / "clutterclassifier_formats_bench";
}

void copyFile(const std::string& path) {
    std::vector<char> bytes(std::filesystem::file_size(path));
    std::ifstream(path, std::ios::binary)
        .read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    std::ofstream(copyPath(), std::ios::binary)
        .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

std::function<void()> bareReader(const std::string& path, const std::string& format) {
    if (format == "ODIM_H5") {
        return [path] { readBareHdf5(path); };
    }
    if (format.rfind("CfRadial", 0) == 0) {
        return [path] { readBareNetcdf(path); };
    }
    if (format == "Universal Format") {
        return [path] { copyFile(path); };
    }
    return [path] { unpackBareNexrad(path); };
}

}  // namespace

int main(int count, char** arguments) {
    H5Eset_auto2(H5E_DEFAULT, nullptr, nullptr);
    for (int i = 1; i < count; ++i) {
        try {
            const std::string path = arguments[i];
            const auto read = [&] {
                return scan::readScan(path, {.keepNoEcho = true, .oddities = false});
            };
            const double bare = medianMs(bareReader(path, read().format));
            const double ours = medianMs([&] { read(); });
            std::printf("%-40s bare %8.2f ms  read %8.2f ms  ratio %.2f\n",
                        std::filesystem::path(path).filename().c_str(), bare, ours, ours / bare);
        } catch (const std::exception& error) {
            std::fprintf(stderr, "%s: %s\n", arguments[i], error.what());
            return 1;
        }
    }
    std::filesystem::remove(copyPath());
    return 0;
}
