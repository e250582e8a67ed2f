/* Files that radars have written; skipped where they are not at hand. */
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "clutterclassifier/Cpluvek.h"
#include "clutterclassifier/Cufrw.h"
#include "support/temp_dir.h"

namespace {

using clutter::test::TempDir;

std::vector<std::string> measuredFiles() {
    std::vector<std::string> files;
    const std::string dir = clutter::test::measuredDataDir();
    if (dir.empty()) {
        return files;
    }
    for (const auto& entry : std::filesystem::directory_iterator(dir)) {
        if (entry.path().extension() == ".uf") {
            files.push_back(entry.path().string());
        }
    }
    return files;
}

bool sameData(const Cufray& a, const Cufray& b, int nfields) {
    return a.ngates == b.ngates && std::equal(a.data, a.data + nfields * a.ngates, b.data);
}

/* The same words except lengths and positions, which writing sets anew. */
bool sameHeader(CufFieldHeader a, const CufFieldHeader& b) {
    a.dataposition = b.dataposition;
    return std::memcmp(&a, &b, sizeof a) == 0;
}

class MeasuredFiles : public testing::Test {
  protected:
    void SetUp() override {
        files_ = measuredFiles();
        if (files_.empty()) {
            GTEST_SKIP() << "no measured files";
        }
    }

    std::vector<std::string> files_;
    TempDir dir_;
    std::string path_ = dir_.file("copy.uf");
};

TEST_F(MeasuredFiles, WrittenAndReadAgainHoldTheSameWords) {
    for (std::string& file : files_) {
        SCOPED_TRACE(file);
        Cufrw uf, back;
        ASSERT_EQ(uf.readfile(file.data()), 1);
        ASSERT_GT(uf.nrays, 0);
        ASSERT_EQ(uf.write2file(path_.data()), 0);
        ASSERT_EQ(back.readfile(path_.data()), 1);
        ASSERT_EQ(back.nrays, uf.nrays);
        const int nfields = uf.rays[0].nfields;
        for (int r = 0; r < uf.nrays; ++r) {
            ASSERT_TRUE(sameData(uf.rays[r], back.rays[r], nfields)) << "ray " << r;
            ASSERT_EQ(uf.rays[r].azimuth, back.rays[r].azimuth);
            ASSERT_EQ(uf.rays[r].nyquist, back.rays[r].nyquist);
            for (int f = 0; f < nfields; ++f) {
                ASSERT_STREQ(uf.rays[r].table[f].name, back.rays[r].table[f].name);
                ASSERT_TRUE(sameHeader(uf.rays[r].headers[f], back.rays[r].headers[f]));
            }
        }
    }
}

/* The word that a value read from a file is written as: truncation may cost one unit. */
void expectConverted(const Cufray& from, const Cufray& to, int field, int scale) {
    const int ngates = std::min(from.ngates, to.ngates);
    for (int g = 0; g < ngates; ++g) {
        const int word = from.data[field * from.ngates + g];
        if (word == from.missingvalue || scale != 100) {
            continue;
        }
        const int written = to.data[field * to.ngates + g];
        ASSERT_LE(std::abs(written), std::abs(word));
        ASSERT_LE(std::abs(word - written), 1) << "gate " << g;
    }
}

TEST_F(MeasuredFiles, ConvertedToRecordsAndBackKeepTheirValues) {
    for (std::string& file : files_) {
        SCOPED_TRACE(file);
        Cufrw uf, back;
        ASSERT_EQ(uf.readfile(file.data()), 1);
        const int nfields = uf.rays[0].nfields;
        std::unique_ptr<Cpluvek[]> records(new Cpluvek[nfields]);
        uf.uf2pluvek(records.get());
        ASSERT_EQ(back.pluvek2uf(records.get()), 1);
        ASSERT_EQ(back.write2file(path_.data()), 0);
        ASSERT_EQ(back.readfile(path_.data()), 1);
        ASSERT_EQ(back.nrays, uf.nrays);
        for (int r = 0; r < uf.nrays; ++r) {
            for (int f = 0; f < nfields; ++f) {
                expectConverted(uf.rays[r], back.rays[r], f, uf.rays[0].headers[f].scalefactor);
            }
            ASSERT_LE(std::abs(uf.rays[r].azimuth - back.rays[r].azimuth), 1);
        }
    }
}

}  // namespace
