/*
 * Output products: fields sampled at a list of points, one text file a field.
 */
#include <cstddef>
#include <string>
#include <vector>

#include "clutterclassifier/Crres.h"

namespace {

/* Precision codes of the column files. */
enum Precision { kSixDigits = 0, kOneDecimal = 1, kTwoDecimals = 2 };

struct Product {
    int bit;
    const char* suffix;
    Cpluvek Crres::*record;
    Precision precision;
};

constexpr Product kProducts[] = {
    {1, "_ccl.dat", &Crres::ccl, kOneDecimal},      {2, "_zhh.dat", &Crres::zhh, kTwoDecimals},
    {4, "_zdr.dat", &Crres::zdr, kTwoDecimals},     {8, "_rhv.dat", &Crres::rhv, kTwoDecimals},
    {16, "_pdp.dat", &Crres::pdp, kTwoDecimals},    {32, "_Vel.dat", &Crres::vel, kTwoDecimals},
    {64, "_Wid.dat", &Crres::wid, kTwoDecimals},    {128, "_KDP.dat", &Crres::kdp, kTwoDecimals},
    {256, "_Dpdp.dat", &Crres::dpdp, kTwoDecimals}, {512, "_a.dat", &Crres::acoef, kSixDigits},
    {1024, "_b.dat", &Crres::bcoef, kSixDigits},    {2048, "_alpha.dat", &Crres::alpha, kSixDigits},
    {4096, "_TA.dat", &Crres::ta, kTwoDecimals},    {8192, "_pdpC.dat", &Crres::pdpc, kTwoDecimals},
    {16384, "_Ah.dat", &Crres::ah, kTwoDecimals},   {32768, "_R.dat", &Crres::rain, kTwoDecimals},
};

}  // namespace

void Crres::Vars2Save(int what, char* prefix, float* ranges, float* azimuths, int npoints,
                      unsigned int tag) {
    if (prefix == nullptr || npoints < 1) {
        return;
    }
    std::vector<float> samples(static_cast<std::size_t>(npoints));
    for (const Product& product : kProducts) {
        if ((what & product.bit) == 0) {
            continue;
        }
        Cpluvek& record = this->*product.record;
        if (record.ExtractDataRA(ranges, azimuths, samples.data(), npoints) == 0) {
            continue;
        }
        std::string path = std::string(prefix) + product.suffix;
        dsp.SaveDataToFile(path.data(), &tag, samples.data(), 1, npoints, 0, product.precision);
    }
}
