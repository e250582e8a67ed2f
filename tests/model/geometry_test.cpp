/* Turning, mirroring and sorting records; polar offsets; the synthetic scan. */
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <numeric>
#include <vector>

#include "clutterclassifier/Cpluvek.h"
#include "support/polar_record.h"

namespace {

using clutter::test::azimuthsOf;
using clutter::test::fillPolar;
using clutter::test::onNullRecord;
using clutter::test::valuesOf;
using Values = std::vector<float>;

const double kPi = std::acos(-1.0);

TEST(Geometry, QuarterTurnMovesEveryGate) {
    Cpluvek record;
    fillPolar(record, 2, 3);
    record.Rot90();
    EXPECT_EQ(record.nrays, 3);
    EXPECT_EQ(record.ngates, 2);
    EXPECT_EQ(valuesOf(record), (Values{100, 0, 101, 1, 102, 2}));
    // The angles stay; those of the new ray are there.
    EXPECT_EQ(azimuthsOf(record), (Values{0.0f, 0.1f, 0.0f}));
    EXPECT_EQ(record.angles[0], 0.5f);
}

TEST(Geometry, TwoTurnsAndTwoMirrorsAreNothing) {
    for (const int nrays : {1, 2, 5, 6}) {
        for (const int ngates : {1, 4, 7}) {
            Cpluvek record;
            fillPolar(record, nrays, ngates);
            const Values before = valuesOf(record);
            const Values azimuths = azimuthsOf(record);
            record.Rot90();
            record.Rot90();
            record.HorzMirror();
            record.VertMirror();
            EXPECT_EQ(valuesOf(record), before) << nrays << " x " << ngates;
            // A turned record no longer knows how many angles it had.
            if (nrays <= ngates) {
                EXPECT_EQ(azimuthsOf(record), azimuths);
            }
        }
    }
}

TEST(Geometry, MirrorsReverseRaysOrGates) {
    Cpluvek record;
    fillPolar(record, 3, 2);
    record.HorzMirror();
    EXPECT_EQ(valuesOf(record), (Values{200, 201, 100, 101, 0, 1}));
    record.VertMirror();
    EXPECT_EQ(valuesOf(record), (Values{201, 200, 101, 100, 1, 0}));
    EXPECT_EQ(azimuthsOf(record), (Values{0.0f, 0.1f, 0.2f}));
}

TEST(Geometry, RecordsWithoutAGridStayAsTheyAre) {
    Cpluvek empty;
    empty.coordtype = 0;
    empty.nrays = empty.ngates = -2;
    empty.Rot90();
    empty.HorzMirror();
    empty.VertMirror();
    EXPECT_EQ(empty.SortPolarDataRays(), 0);
    EXPECT_EQ(empty.data, nullptr);
    onNullRecord([](Cpluvek * record)
                     __attribute__((no_sanitize("undefined"))) { record->Rot90(); });

    Cpluvek negative;
    fillPolar(negative, 1, 2);
    negative.nrays = negative.ngates = -1;
    negative.HorzMirror();
    negative.VertMirror();
    EXPECT_EQ(negative.data[0], 0.0f);
    EXPECT_EQ(negative.data[1], 1.0f);
}

TEST(Geometry, RaysAreSortedWithTheirValues) {
    Cpluvek record;
    fillPolar(record, 4, 2);
    const Values azimuths = {3.0f, -1.0f, 6.0f, 0.5f};
    std::copy(azimuths.begin(), azimuths.end(), record.angles + 1);
    EXPECT_EQ(record.SortPolarDataRays(), 1);
    EXPECT_EQ(azimuthsOf(record), (Values{-1.0f, 0.5f, 3.0f, 6.0f}));
    EXPECT_EQ(valuesOf(record), (Values{100, 101, 300, 301, 0, 1, 200, 201}));
    EXPECT_EQ(record.angles[0], 0.5f);
}

TEST(Geometry, OnlyPolarRecordsWithAnglesAreSorted) {
    Cpluvek record;
    fillPolar(record, 2, 1);
    record.angles[1] = 9.0f;
    for (const int coordtype : {1, 2}) {
        record.coordtype = coordtype;
        EXPECT_EQ(record.SortPolarDataRays(), 0);
    }
    EXPECT_EQ(record.angles[1], 9.0f);
    record.coordtype = 0;
    delete[] record.angles;
    record.angles = nullptr;
    EXPECT_EQ(record.SortPolarDataRays(), 0);
}

TEST(Geometry, OffsetsGoClockwiseFromNorth) {
    struct Case {
        double azimuthDeg, east, north;
    };
    const double diagonal = 1000.0 * std::sqrt(0.5);
    const Case cases[] = {{0, 0, 1000},    {90, 1000, 0},
                          {180, 0, -1000}, {270, -1000, 0},
                          {360, 0, 1000},  {45, diagonal, diagonal},
                          {-90, -1000, 0}, {225, -diagonal, -diagonal}};
    Cpluvek record;
    for (const Case& c : cases) {
        double east = 0.0, north = 0.0;
        record.E1N1AzmRanToE2N2(5000.0, -300.0, c.azimuthDeg * kPi / 180.0, 1000.0, east, north);
        EXPECT_NEAR(east, 5000.0 + c.east, 1e-9) << c.azimuthDeg;
        EXPECT_NEAR(north, -300.0 + c.north, 1e-9) << c.azimuthDeg;
    }
}

TEST(SyntheticScan, IsAFullCircleOfNoise) {
    Cpluvek record;
    record.CreateDataSpaceforPPI(72, 500);
    ASSERT_NE(record.data, nullptr);
    EXPECT_EQ(record.nrays, 72);
    EXPECT_EQ(record.ngates, 500);
    EXPECT_EQ(record.valid, 1);
    EXPECT_EQ(record.coordtype, 0);
    record.GetDateTime();
    EXPECT_STREQ(record.datetime, "01/01/2014 00:00:00");
    EXPECT_EQ(record.angles[0], 0.0f);
    for (int r = 0; r < 72; ++r) {
        EXPECT_NEAR(record.angles[1 + r], r * kPi / 36, 1e-6);
    }
    EXPECT_NEAR(record.beamwidth, kPi / 36, 1e-8);
    const Values values = valuesOf(record);
    const auto ends = std::minmax_element(values.begin(), values.end());
    EXPECT_GE(*ends.first, -10.0f);
    EXPECT_LE(*ends.second, 60.0f);
    const double mean = std::accumulate(values.begin(), values.end(), 0.0) / 36000.0;
    EXPECT_NEAR(mean, 25.0, 1.0);  // ten times its standard error
    EXPECT_LT(*ends.first, -9.0f);
    EXPECT_GT(*ends.second, 59.0f);
    EXPECT_EQ(Values(record.axislimits, record.axislimits + 6),
              (Values{-50000, 50000, 10000, -50000, 50000, 10000}));
    EXPECT_EQ(Values(record.axislimits0, record.axislimits0 + 6), (Values{0, 1, 1, 0, 1, 1}));
    EXPECT_EQ(record.wavelength, 320.0f);
    EXPECT_EQ(record.gatesize, 250.0f);
    EXPECT_EQ(Values({record.pulsedepth, record.rpm, record.nsamples, record.prf}),
              (Values{2, 2, 100, 1300}));
    EXPECT_EQ(Values({record.displaymin, record.displaymax}), (Values{-10, 50}));
    EXPECT_EQ(record.colorflag, 255);
    EXPECT_EQ(record.nrecords, 1);
}

TEST(SyntheticScan, NeedsAGridThatCanBe) {
    Cpluvek record;
    for (const auto& [nrays, ngates] :
         {std::pair{0, 5}, {5, 0}, {-3, -3}, {INT_MAX, INT_MAX}, {65536, 65536}}) {
        record.CreateDataSpaceforPPI(nrays, ngates);
        EXPECT_EQ(record.data, nullptr) << nrays << " x " << ngates;
        EXPECT_EQ(record.valid, 0);
    }
}

}  // namespace
