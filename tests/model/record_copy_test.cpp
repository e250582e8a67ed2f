/*
 * Copies of field records: one element into another record, and whole arrays.
 */
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <memory>
#include <new>
#include <vector>

#include "clutterclassifier/Cpluvek.h"

namespace {

constexpr int kGates = 3;
constexpr int kRays = 2;

/* A record of an array of two: every value depends on the record. */
void fill(Cpluvek& record, int index) {
    const float tag = 100.0f * static_cast<float>(index + 1);
    record.nrecords = 2;
    record.recindex = index + 7;
    record.nsets = 5;
    record.ngates = kGates;
    record.nrays = kRays;
    record.year = 2001 + index;
    record.gatesize = tag + 50.0f;
    record.radarconst = tag + 1.0f;
    record.scale = 3.0;
    record.datatype = 2;
    for (int k = 0; k < 6; ++k) {
        record.axislimits[k] = tag + static_cast<float>(k);
    }
    std::strcpy(record.name, index == 0 ? "Zh" : "Zdr");
    record.angles = new float[kRays + 1]{0.1f, tag, tag + 1};
    record.data = new float[kGates * kRays]{tag, tag + 1, tag + 2, tag + 3, tag + 4, tag + 5};
}

void expectCopyOf(int index, const Cpluvek& record) {
    const float tag = 100.0f * static_cast<float>(index + 1);
    ASSERT_NE(record.data, nullptr);
    ASSERT_NE(record.angles, nullptr);
    EXPECT_EQ(record.data[5], tag + 5);
    EXPECT_EQ(record.angles[2], tag + 1);
    EXPECT_EQ(record.ngates, kGates);
    EXPECT_EQ(record.nrays, kRays);
    EXPECT_EQ(record.year, 2001 + index);
    EXPECT_EQ(record.gatesize, tag + 50.0f);
    EXPECT_EQ(record.axislimits[3], tag + 3);
    EXPECT_EQ(record.axislimits0[3], tag + 3);
    EXPECT_STREQ(record.name, index == 0 ? "Zh" : "Zdr");
}

TEST(CopyPointerToObject, TakesTheElementButKeepsTheStorageType) {
    const struct {
        int asked;
        int taken;
    } cases[] = {{0, 0}, {1, 1}, {-3, 0}};
    std::unique_ptr<Cpluvek[]> source(new Cpluvek[2]);
    fill(source[0], 0);
    fill(source[1], 1);
    for (const auto& c : cases) {
        Cpluvek copy;
        copy.nrecords = -4;
        copy.datatype = 3;
        copy.scale = 0.5;
        copy.data = new float[1]();
        ASSERT_EQ(source[0].CopyPointerToObject(c.asked, copy), 1);
        expectCopyOf(c.taken, copy);
        EXPECT_NE(copy.data, source[c.taken].data);
        EXPECT_EQ(copy.nrecords, 1);
        EXPECT_EQ(copy.nsets, 2);
        EXPECT_EQ(copy.recindex, c.taken);
        EXPECT_EQ(copy.datatype, 3);
        EXPECT_EQ(copy.scale, 0.5);
    }
    source[0].nrecords = 1;  // the second element is past the count now, but has data
    Cpluvek first;
    ASSERT_EQ(source[0].CopyPointerToObject(1, first), 1);
    expectCopyOf(0, first);
    delete[] source[1].data;
    source[1].data = nullptr;
    EXPECT_EQ(source[0].CopyPointerToObject(1, first), -1);
}

/* Every member that describes the scan, each with a value of its own. */
TEST(CopyPointerToObject, TakesTheWholeDescription) {
    int Cpluvek::*const whole[] = {&Cpluvek::valid,   &Cpluvek::year,      &Cpluvek::month,
                                   &Cpluvek::day,     &Cpluvek::hour,      &Cpluvek::minute,
                                   &Cpluvek::second,  &Cpluvek::coordtype, &Cpluvek::firstgate,
                                   &Cpluvek::colormap};
    float Cpluvek::*const numbers[] = {
        &Cpluvek::gatesize,   &Cpluvek::beamwidth, &Cpluvek::displaymin, &Cpluvek::displaymax,
        &Cpluvek::radarconst, &Cpluvek::minsnr,    &Cpluvek::rpm,        &Cpluvek::prf,
        &Cpluvek::pulsedepth, &Cpluvek::nsamples,  &Cpluvek::wavelength, &Cpluvek::latitude,
        &Cpluvek::longitude,  &Cpluvek::altitude,  &Cpluvek::nyquist};
    char(Cpluvek::*const texts[])[100] = {&Cpluvek::xlabel, &Cpluvek::ylabel, &Cpluvek::title,
                                          &Cpluvek::name, &Cpluvek::units};
    Cpluvek source, copy;
    fill(source, 0);
    int next = 31;
    for (const auto member : whole) {
        source.*member = ++next;
    }
    for (const auto member : numbers) {
        source.*member = static_cast<float>(++next);
    }
    for (const auto member : texts) {
        std::snprintf(source.*member, 100, "%d", ++next);
    }
    std::strcpy(source.datetime, "some day");
    source.colorflag = 77;
    source.radarid = 78;
    source.gridxy[0] = 5;
    source.gridxy[1] = 6;
    ASSERT_EQ(source.CopyPointerToObject(0, copy), 1);
    for (const auto member : whole) {
        EXPECT_EQ(copy.*member, source.*member) << source.*member;
    }
    for (const auto member : numbers) {
        EXPECT_EQ(copy.*member, source.*member);
    }
    for (const auto member : texts) {
        EXPECT_STREQ(copy.*member, source.*member);
    }
    EXPECT_STREQ(copy.datetime, "some day");
    EXPECT_EQ(copy.colorflag, 77);
    EXPECT_EQ(copy.radarid, 78);
    EXPECT_EQ(copy.gridxy[0], 5);
    EXPECT_EQ(copy.gridxy[1], 6);
    EXPECT_EQ(copy.axislimits[5], source.axislimits[5]);
    EXPECT_EQ(copy.axislimits0[5], source.axislimits[5]);
}

TEST(CopyPointerToObject, OntoItself) {
    Cpluvek record;
    fill(record, 0);
    record.nrecords = 0;
    ASSERT_EQ(record.CopyPointerToObject(0, record), 1);
    expectCopyOf(0, record);
    EXPECT_EQ(record.nrecords, 1);
    EXPECT_EQ(record.nsets, 1) << "the count that was just raised";
}

TEST(CopyOfAnArray, ReplacesWhatWasThereEvenItself) {
    auto* array = new Cpluvek[2];
    fill(array[0], 0);
    fill(array[1], 1);
    array[1].ngates = 1;  // the first element's sizes count
    auto* copy = new Cpluvek[1];
    array->copy(&copy);
    array->copy(&array);
    for (Cpluvek* records : {copy, array}) {
        for (int i = 0; i < 2; ++i) {
            expectCopyOf(i, records[i]);
            EXPECT_EQ(records[i].nrecords, 2);
            EXPECT_EQ(records[i].recindex, i + 7);
            EXPECT_EQ(records[i].nsets, Cpluvek().nsets);
            EXPECT_EQ(records[i].scale, Cpluvek().scale);
        }
        delete[] records;
    }
}

/* Whatever the memory held before. */
TEST(FreshRecord, IsEmptyAndHasItsDefaults) {
    alignas(Cpluvek) unsigned char memory[sizeof(Cpluvek)];
    std::memset(memory, 0x5a, sizeof memory);
    auto* record = new (memory) Cpluvek;
    const Cpluvek& r = *record;
    const std::vector<double> zeros = {double(r.valid),
                                       double(r.hour),
                                       double(r.minute),
                                       double(r.second),
                                       double(r.ngates),
                                       double(r.nrays),
                                       r.beamwidth,
                                       double(r.colormap),
                                       r.displaymin,
                                       r.radarconst,
                                       double(r.radarid),
                                       double(r.nrecords),
                                       double(r.nsets),
                                       r.rpm,
                                       r.prf,
                                       r.pulsedepth,
                                       r.nsamples,
                                       r.wavelength,
                                       r.latitude,
                                       r.longitude,
                                       r.altitude,
                                       r.nyquist,
                                       r.spare,
                                       double(r.datatype),
                                       r.scale,
                                       r.offset,
                                       r.axislimits[0],
                                       r.axislimits[3],
                                       r.axislimits0[0],
                                       r.axislimits0[3]};
    EXPECT_EQ(zeros, std::vector<double>(zeros.size(), 0.0));
    const std::vector<float> ones = {
        float(r.month),   float(r.day),     r.displaymax,    -r.gridxy[0],    -r.gridxy[1],
        r.axislimits[1],  r.axislimits[2],  r.axislimits[4], r.axislimits[5], r.axislimits0[1],
        r.axislimits0[2], r.axislimits0[4], r.axislimits0[5]};
    EXPECT_EQ(ones, std::vector<float>(ones.size(), 1.0f));
    EXPECT_EQ(r.year, 1900);
    EXPECT_EQ(r.minsnr, 26.0f);
    for (const char* text : {r.datetime, r.xlabel, r.ylabel, r.title}) {
        EXPECT_STREQ(text, " ");
    }
    for (const char* text : {r.name, r.units}) {
        EXPECT_STREQ(text, "-");
    }
    EXPECT_TRUE(r.angles == nullptr && r.data == nullptr);
    record->~Cpluvek();
}

}  // namespace
