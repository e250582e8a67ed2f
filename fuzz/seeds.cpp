/*
 * seeds.cpp - small sound inputs for every fuzzer, made by the library's own writers where there
 * are some: clutterclassifier_fuzz_seeds DIRECTORY fills one directory a target.
 */
#include <bzlib.h>
#include <netcdf.h>
#include <zlib.h>

#include <cstdio>
#include <filesystem>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "clutterclassifier/CDSP.h"
#include "clutterclassifier/CThuPolDaFor.h"
#include "clutterclassifier/Cpluvek.h"
#include "formats/german_dx_bytes.h"
#include "formats/polar_bytes.h"
#include "formats/uf_bytes.h"
#include "fuzz/support/nexrad_bytes.h"
#include "fuzz/support/small_scan.h"
#include "scan/formats/hdf5/hdf5_handle.h"
#include "scan/formats/write_classes.h"
#include "scan/process/configuration.h"
#include "scan/scan.h"
#include "support/directories.h"
#include "support/temp_dir.h"

namespace {

using clutter::test::ByteVector;
using clutter::test::readFile;
using clutter::test::writeFile;

std::string directory;

/* The next seed of a target. leading are the bytes by which the target chooses what to do. */
void seed(const std::string& target, const ByteVector& bytes, ByteVector leading = {}) {
    const std::filesystem::path folder = std::filesystem::path(directory) / target;
    std::filesystem::create_directories(folder);
    const auto count = std::distance(std::filesystem::directory_iterator(folder), {});
    leading.insert(leading.end(), bytes.begin(), bytes.end());
    writeFile((folder / std::to_string(count)).string(), leading);
}

void seed(const std::string& target, const std::string& text) {
    seed(target, ByteVector(text.begin(), text.end()));
}

/* A file of a format: for the fuzzer of the format, and for the one that takes any file. */
void seedFile(const std::string& target, const ByteVector& bytes, const ByteVector& leading = {}) {
    seed(target, bytes, leading);
    for (const unsigned char choice : {16, 64 + 48 + 3, 128 + 16, 192 + 48}) {
        seed("scan_file", bytes, {choice});
    }
}

/* --- compressed files --- */

ByteVector gzipped(const std::string& scratch, const ByteVector& bytes) {
    const std::string path = scratch + "/packed";
    const std::unique_ptr<gzFile_s, int (*)(gzFile)> file(gzopen(path.c_str(), "wb"), gzclose);
    gzwrite(file.get(), bytes.data(), static_cast<unsigned>(bytes.size()));
    gzflush(file.get(), Z_FINISH);
    return readFile(path);
}

ByteVector bzipped(const ByteVector& bytes) {
    constexpr int kSmallBlocks = 1, kQuiet = 0, kUsualWork = 0;
    auto size = static_cast<unsigned>(bytes.size() + bytes.size() / 100 + 600);
    ByteVector packed(size);
    ByteVector plain = bytes;
    BZ2_bzBuffToBuffCompress(reinterpret_cast<char*>(packed.data()), &size,
                             reinterpret_cast<char*>(plain.data()),
                             static_cast<unsigned>(plain.size()), kSmallBlocks, kQuiet, kUsualWork);
    packed.resize(size);
    return packed;
}

/* Whole, compressed twice, and two members one after the other. */
void writeCompressed(const std::string& scratch) {
    const ByteVector file = clutter::test::ufFile({clutter::test::ufRay({{"DZ", {100, 200}}})});
    for (const ByteVector& packed :
         {gzipped(scratch, file), bzipped(file), gzipped(scratch, bzipped(file)),
          clutter::fuzz::joined({bzipped(file), bzipped(file)})}) {
        seed("scan_file", packed, {16});
    }
}

/* --- scans --- */

void writeScans(const std::string& scratch) {
    scan::Scan scan = clutter::fuzz::smallScan();
    for (const char* ending : {".uf", ".plv"}) {
        const std::string path = scratch + "/scan" + ending;
        scan::writeScan(path, scan);
        seedFile(ending == std::string(".uf") ? "universal_format" : "field_record",
                 readFile(path));
    }
    scan.sweeps.push_back(scan.sweeps[0]);
    scan.sweeps[1].number = 1;
    scan.sweeps[1].fields.pop_back();
    scan::writeScan(scratch + "/volume.uf", scan);
    seedFile("universal_format", readFile(scratch + "/volume.uf"));
}

/* The same file in the classic model of NetCDF, without what that cannot hold. */
void copyToClassic(const std::string& from, const std::string& to, int model) {
    const scan::hdf5::QuietErrors quiet;
    int in = -1, out = -1, dimensions = 0, variables = 0, attributes = 0;
    nc_open(from.c_str(), NC_NOWRITE, &in);
    nc_create(to.c_str(), NC_CLOBBER | model, &out);
    nc_inq(in, &dimensions, &variables, &attributes, nullptr);
    for (int i = 0; i < dimensions; ++i) {
        char name[NC_MAX_NAME + 1];
        std::size_t length = 0;
        int id = -1;
        nc_inq_dim(in, i, name, &length);
        nc_def_dim(out, name, i == 0 ? NC_UNLIMITED : length, &id);
    }
    for (int i = 0; i < attributes; ++i) {
        char name[NC_MAX_NAME + 1];
        nc_inq_attname(in, NC_GLOBAL, i, name);
        nc_copy_att(in, NC_GLOBAL, name, out, NC_GLOBAL);
    }
    for (int i = 0; i < variables; ++i) {
        nc_copy_var(in, i, out);
    }
    nc_close(in);
    nc_close(out);
}

/* Of HDF5 files the fuzzer makes its own and changes their content; of classic ones the bytes. */
void writeContainers(const std::string& scratch) {
    std::mt19937 random(4);
    for (unsigned char choice = 0; choice < 12; ++choice) {
        seed("containers", clutter::test::randomBytes(6 * choice, random), {choice});
    }
    const std::string whole = scratch + "/scan.nc", classic = scratch + "/classic.nc";
    scan::writeScan(whole, clutter::fuzz::smallScan());
    for (const int model : {NC_CLASSIC_MODEL, NC_64BIT_OFFSET, NC_64BIT_DATA}) {
        copyToClassic(whole, classic, model);
        seed("containers", readFile(classic), {3});
    }
}

/* Records of few gates, stored as bytes, words and floats. */
void writeRecords(const std::string& scratch) {
    for (const int datatype : {0, 2, 3}) {
        Cpluvek records[2];
        for (Cpluvek& record : records) {
            record.nrecords = 2;
            record.nrays = 2;
            record.ngates = 3;
            record.coordtype = datatype == 3 ? 2 : 0;
            record.gatesize = 250;
            record.firstgate = 0;
            record.datatype = datatype;
            record.scale = 0.5;
            record.offset = -32;
            record.angles = new float[3]{0.01f, 0.0f, 3.0f};
            record.data = new float[6]{-32, 0, 10.5f, 20, 30, 40};
        }
        records[0].WriteDataToFile((scratch + "/records").c_str());
        seedFile("field_record", readFile(scratch + "/records"));
    }
}

/* --- formats that the library reads and does not write --- */

void makeUniversalFormat() {
    using clutter::test::ufFile;
    using clutter::test::ufRay;
    seedFile("universal_format", ufFile({ufRay({{"DZ", {100, 200, -32768}}})}));
    seedFile("universal_format", ufFile({ufRay({{"VR", {1, 2}}, {"DM", {3, 4}}}, 1),
                                         ufRay({{"VR", {5, 6, 7}}, {"DM", {8, 9, 10}}}, 2)}));
}

void makePolarData() {
    struct Product {
        int code;
        std::size_t gateBytes;
    };
    std::mt19937 random(1);
    for (const Product& product :
         {Product{2111, 2}, Product{2122, 4}, Product{2141, 4}, Product{2211, 9}, Product{2211, 10},
          Product{2212, 8}, Product{2213, 10}, Product{2214, 8}}) {
        const auto file =
            clutter::test::randomPolarFile(product.code, product.gateBytes, false, 3, 6, random);
        for (const unsigned char layout : {0, 1, 2, 7}) {
            seedFile("polar_data", file.bytes(), {layout, layout});
        }
    }
}

/* A product as the library writes it, and one that is long enough to be shortened. */
void writePolarData(const std::string& scratch) {
    Cpluvek records[2];
    for (Cpluvek& record : records) {
        record.nrecords = 2;
        record.nrays = 3;
        record.ngates = 4;
        record.gatesize = 250;
        record.coordtype = 0;
        record.firstgate = 0;
        record.angles = new float[4]{0.01f, 0.0f, 2.0f, 4.0f};
        record.data = new float[12]{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
    }
    unsigned char choice = 0;
    for (const short code : {1113, 1115, 1117, 1126, 1400, 1521, 1814}) {
        records[0].radarid = code;
        CThuPolDaFor polar;
        polar.WriteSingleParameterData((scratch + "/product").c_str(), records, records + 1);
        seedFile("polar_data", readFile(scratch + "/product"), {3, choice});
        choice = static_cast<unsigned char>(choice + 5);
    }
    std::mt19937 random(2);
    auto longRays = clutter::test::randomPolarFile(2213, 10, false, 2, 900, random);
    longRays.set(130, 900);  // 9 degrees: 10 km of height are soon reached
    seedFile("polar_data", longRays.bytes(), {2, 30});
}

void makeGermanDx() {
    for (const int bins : {100, 128}) {
        seedFile("german_dx", clutter::test::dxFile(bins));
    }
}

/* Both kinds of radials, plain and in compressed records. */
void makeNexrad() {
    using namespace clutter::fuzz;
    const ByteVector codes = {0, 1, 2, 66, 255, 130};
    const auto moments = {nexradMoment("REF", codes), nexradMoment("PHI", codes, true)};
    const ByteVector header = nexradVolumeHeader();
    const ByteVector radials = joined(
        {nexradPlan(), nexradRadial(359, 1, 3, moments), nexradRadial(0, 1, 1, moments),
         nexradRadial(7, 2, 0, {nexradMoment("VEL", codes)}), nexradRadial(8, 2, 4, moments)});
    const ByteVector record = bzipped(radials);
    const auto length = static_cast<unsigned>(record.size());
    for (const ByteVector& volume :
         {joined({header, radials}),
          joined({header, nexradOldRadial(0, 1), nexradOldRadial(182, 1), nexradOldRadial(0, 2)}),
          joined({header, BigEndianBytes(4).u32(0, length).bytes(), record,
                  BigEndianBytes(4).u32(0, -length).bytes(), record})}) {
        seed("nexrad", volume);
        seed("scan_file", volume, {16});
    }
}

/* --- texts --- */

void makeTexts() {
    seed("column_file",
         "2014  08  10  12  30  05 1.5 nan -2e1 \n2014  08  10  12  35  05 0.25 7 +3 \r\n");
    seed("column_file", "1 2.5 -3\n4 5e-3 6\n");
    seed("grid_file",
         "ncols 3\nnrows 2\nxllcorner 1.5\nyllcorner 2.5\ncellsize 250\nNODATA_value -9999\n"
         "1.00 2.00 3.00\n4.00 5.00 -9999\n");
    seed("name_list",
         "first.uf second.uf\r\n dir/third.plv\r\t" + std::string(1030, 'x') + "\nlast");
    seed("point_list", "1000 45.5\n20000 359.9\n1e5 -3\n");
    seed("membership", "-1 0\n0 0.25\n0.5 1\n2 1e-3\n3 0\n");
    seed("file_tags", "/data/200708101820_sidpol_b3.dat");
    seed("file_tags", "C:\\radar\\200708101820augldr_el_b2");
    seed("file_tags", "tavo-rain-radar_chenies-200708101820-el1.dat");
    seed("file_tags", "20140810183005");
    seed("field_map", "ZD=zdr,ZT=zhh,XX=none");
    seed("field_map", "zhh-texture,zdr-texture,vel,pdf");
    seed("field_map", "textures");
    seed("field_map", "precipitation,noise,clutter");
    seed("settings", scan::exampleConfiguration("/tables/"));
    seed("settings", "WHAT2DO 31 a_Z-R 200 b_Z-R 1.6 nonsense 3");
}

/* One level of 60 profiles, and part of the next. */
void makeProfiles() {
    std::string text;
    for (int i = 0; i < 90; ++i) {
        text += std::to_string(i % 40) + ".5 ";
    }
    seed("vertical_profile", text);
}

void copyMembership() {
    for (const char* name : {"cal_mf_Vel_clutter.dat", "cal_mf_sZhh_precipi.dat"}) {
        seed("membership", readFile(std::string(kMembershipDirectory) + name));
    }
}

void makeKernelInputs() {
    std::mt19937 random(3);
    for (unsigned char call = 0; call < 8; ++call) {
        seed("kernels", clutter::test::randomBytes(2000, random), {call, 4, 69});
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s DIRECTORY\n", argv[0]);
        return 2;
    }
    directory = argv[1];
    const clutter::test::TempDir scratch;
    writeScans(scratch.path());
    writeContainers(scratch.path());
    writeRecords(scratch.path());
    makeUniversalFormat();
    makePolarData();
    writePolarData(scratch.path());
    makeGermanDx();
    makeNexrad();
    writeCompressed(scratch.path());
    makeTexts();
    makeProfiles();
    copyMembership();
    makeKernelInputs();
    return 0;
}
