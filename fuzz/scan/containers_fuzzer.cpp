/*
 * Reads ODIM_H5 and CfRadial files whose content is anything: the input names changes of a sound
 * file, which the HDF5 library makes. Attributes and data get other types, sizes and values; parts
 * are removed, moved, linked in circles. The bytes of an HDF5 file are not changed: the HDF5
 * library itself does not survive that. Those of a classic NetCDF file are the input.
 */
#include <array>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "fuzz/scan/sound_scan.h"
#include "fuzz/support/input_file.h"
#include "fuzz/support/input_values.h"
#include "fuzz/support/small_scan.h"
#include "scan/formats/containers/containers.h"
#include "scan/formats/hdf5/hdf5_handle.h"

namespace {

using namespace clutter;
using namespace clutter::fuzz;
using scan::hdf5::Handle;

constexpr int kMaxChanges = 6;
constexpr int kMaxRank = 3;

const scan::Containers& module() {
    return *clutterclassifier_containers();
}

/* --- sound files --- */

struct SoundFile {
    test::ByteVector bytes;
    std::vector<std::string> objects;
    std::vector<std::pair<std::string, std::string>> attributes;  // with their objects
};

/* Attributes by which the NetCDF library finds its own way. */
bool isInternal(const std::string& name) {
    return name == "DIMENSION_LIST" || name == "REFERENCE_LIST" || name == "CLASS" ||
           name == "NAME" || name.rfind("_N", 0) == 0;
}

herr_t listAttribute(hid_t, const char* name, const H5A_info_t*, void* to) {
    auto& file = *static_cast<SoundFile*>(to);
    if (!isInternal(name)) {
        file.attributes.emplace_back(file.objects.back(), name);
    }
    return 0;
}

herr_t listObject(hid_t root, const char* name, const H5O_info_t*, void* to) {
    static_cast<SoundFile*>(to)->objects.emplace_back(name);
    const Handle object(H5Oopen(root, name, H5P_DEFAULT));
    hsize_t at = 0;
    H5Aiterate(object.get(), H5_INDEX_NAME, H5_ITER_NATIVE, &at, listAttribute, to);
    return 0;
}

SoundFile makeFile(scan::Containers::Write write) {
    SoundFile made;
    const std::string path = scratch().file("sound");
    scan::Scan scan = smallScan();
    scan.sweeps.push_back(scan.sweeps[0]);
    write(path, scan, {}, {});
    made.bytes = test::readFile(path);
    const Handle file(H5Fopen(path.c_str(), H5F_ACC_RDONLY, H5P_DEFAULT));
    H5Ovisit(file.get(), H5_INDEX_NAME, H5_ITER_NATIVE, listObject, &made);
    return made;
}

const SoundFile& soundFile(std::size_t which) {
    static const std::array<SoundFile, 3> kFiles = {makeFile(module().writeOdim),
                                                    makeFile(module().writeCfRadial1),
                                                    makeFile(module().writeCfRadial2)};
    return kFiles.at(which);
}

/* --- changes --- */

template <class T>
const T& pick(const std::vector<T>& list, InputValues& input) {
    return list[(static_cast<std::size_t>(input.byte()) << 8 | input.byte()) % list.size()];
}

Handle numberType(InputValues& input) {
    const hid_t kTypes[] = {H5T_NATIVE_DOUBLE, H5T_NATIVE_FLOAT, H5T_NATIVE_SHORT,
                            H5T_NATIVE_UCHAR,  H5T_NATIVE_INT,   H5T_NATIVE_LLONG};
    return Handle(H5Tcopy(kTypes[input.below(6)]));
}

std::vector<double> numbers(std::size_t count, InputValues& input) {
    const std::vector<float> values = input.values(count);
    return {values.begin(), values.end()};
}

void addNumbers(hid_t object, const char* name, InputValues& input) {
    const hsize_t length = static_cast<hsize_t>(input.below(4));
    const Handle type = numberType(input);
    const Handle space(length == 1   ? H5Screate(H5S_SCALAR)
                       : length == 0 ? H5Screate(H5S_NULL)
                                     : H5Screate_simple(1, &length, nullptr));
    const Handle made(H5Acreate2(object, name, type.get(), space.get(), H5P_DEFAULT, H5P_DEFAULT));
    H5Awrite(made.get(), H5T_NATIVE_DOUBLE, numbers(4, input).data());
}

void addText(hid_t object, const char* name, InputValues& input) {
    std::string text;
    for (int left = input.below(24); left >= 0; --left) {
        text += static_cast<char>(input.byte());
    }
    const Handle type(H5Tcopy(H5T_C_S1)), space(H5Screate(H5S_SCALAR));
    const bool variable = input.below(2) == 1;
    H5Tset_size(type.get(), variable ? H5T_VARIABLE : text.size());
    const Handle made(H5Acreate2(object, name, type.get(), space.get(), H5P_DEFAULT, H5P_DEFAULT));
    const char* pointer = text.c_str();
    H5Awrite(made.get(), type.get(),
             variable ? static_cast<const void*>(&pointer) : static_cast<const void*>(pointer));
}

void changeAttribute(hid_t file, const SoundFile& sound, InputValues& input) {
    const auto& [path, name] = pick(sound.attributes, input);
    const Handle object(H5Oopen(file, path.c_str(), H5P_DEFAULT));
    if (!object) {
        return;  // removed by an earlier change
    }
    H5Adelete(object.get(), name.c_str());
    switch (input.below(3)) {
        case 1:
            return addNumbers(object.get(), name.c_str(), input);
        case 2:
            return addText(object.get(), name.c_str(), input);
        default:
            return;
    }
}

/* Other data under the same name; sizes beyond the file's own take no room in it. */
void replaceData(hid_t file, const std::string& name, InputValues& input) {
    hsize_t sizes[kMaxRank] = {1, 1, 1}, pieces[kMaxRank] = {16, 16, 16};
    const int rank = input.below(kMaxRank + 1);
    hsize_t cells = 1;
    for (int d = 0; d < rank; ++d) {
        sizes[d] = input.below(8) == 0 ? hsize_t{1} << (8 + input.below(24))
                                       : static_cast<hsize_t>(input.below(24));
        cells *= sizes[d];
    }
    H5Ldelete(file, name.c_str(), H5P_DEFAULT);
    const Handle type = numberType(input);
    const Handle space(rank == 0 ? H5Screate(H5S_SCALAR) : H5Screate_simple(rank, sizes, nullptr));
    const Handle layout(H5Pcreate(H5P_DATASET_CREATE));
    if (rank > 0) {
        H5Pset_chunk(layout.get(), rank, pieces);
    }
    const Handle made(H5Dcreate2(file, name.c_str(), type.get(), space.get(), H5P_DEFAULT,
                                 layout.get(), H5P_DEFAULT));
    if (cells <= 256) {
        H5Dwrite(made.get(), H5T_NATIVE_DOUBLE, H5S_ALL, H5S_ALL, H5P_DEFAULT,
                 numbers(cells, input).data());
    }
}

/* A few other values in data of few dimensions. */
void changeValues(hid_t file, const std::string& name, InputValues& input) {
    const Handle data(H5Dopen2(file, name.c_str(), H5P_DEFAULT));
    const Handle space(H5Dget_space(data.get()));
    const hssize_t cells = H5Sget_simple_extent_npoints(space.get());
    if (cells < 1 || cells > 4096) {
        return;
    }
    std::vector<double> values(static_cast<std::size_t>(cells));
    if (H5Dread(data.get(), H5T_NATIVE_DOUBLE, H5S_ALL, H5S_ALL, H5P_DEFAULT, values.data()) < 0) {
        return;  // no numbers
    }
    for (int left = input.below(4); left >= 0; --left) {
        values[input.byte() % values.size()] = static_cast<double>(input.value());
    }
    H5Dwrite(data.get(), H5T_NATIVE_DOUBLE, H5S_ALL, H5S_ALL, H5P_DEFAULT, values.data());
}

void change(hid_t file, const SoundFile& sound, InputValues& input) {
    const int kind = input.below(8);
    const std::string& object = pick(sound.objects, input);
    switch (kind) {
        case 0:
            H5Ldelete(file, object.c_str(), H5P_DEFAULT);
            break;
        case 1:
            H5Lmove(file, object.c_str(), file, pick(sound.objects, input).c_str(), H5P_DEFAULT,
                    H5P_DEFAULT);
            break;
        case 2:
            H5Lcreate_hard(file, object.c_str(), file,
                           (pick(sound.objects, input) + "/again").c_str(), H5P_DEFAULT,
                           H5P_DEFAULT);
            break;
        case 3:
            replaceData(file, object, input);
            break;
        case 4:
            changeValues(file, object, input);
            break;
        default:
            changeAttribute(file, sound, input);
    }
}

std::string changedFile(const SoundFile& sound, InputValues& input) {
    const std::string path = inputFile(sound.bytes.data(), sound.bytes.size());
    const scan::hdf5::QuietErrors quiet;
    const Handle file(H5Fopen(path.c_str(), H5F_ACC_RDWR, H5P_DEFAULT));
    for (int left = input.below(kMaxChanges + 1); left > 0; --left) {
        change(file.get(), sound, input);
    }
    return path;
}

}  // namespace

/* What these libraries lose when they give a file up is not ours. */
extern "C" const char* __lsan_default_suppressions() {
    return "leak:libhdf5\nleak:libnetcdf\n";
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    InputValues input(data, size);
    const std::size_t choice = input.byte() % 4;
    try {
        if (choice < 3) {
            requireSound(module().readHdf5(changedFile(soundFile(choice), input)));
        } else if (size > 4 && data[1] == 'C') {  // other bytes would be another format
            requireSound(module().readNetcdf(inputFile(data + 1, size - 1)));
        }
    } catch (const std::runtime_error& error) {
        require(error.what()[0] != '\0', "a refusal has a reason");
    }
    return 0;
}
