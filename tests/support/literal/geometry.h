/*
 * geometry.h - the plain definitions of sampling a record: every ray looked at for every
 * point, every gate of a window visited, rays wrapped one offset at a time.
 */
#ifndef TESTS_SUPPORT_LITERAL_GEOMETRY_H
#define TESTS_SUPPORT_LITERAL_GEOMETRY_H

class Cpluvek;

namespace literal {

int nearest(const float* x, int n, float target);

void extractRangeAzimuth(const Cpluvek& record, const float* ranges, const float* azimuths,
                         float* out, int n);

void findValid(const Cpluvek& record, const float* ranges, const float* azimuths, float invalid,
               int n, float* outranges, float* outazimuths, int wgates, int wrays);

}  // namespace literal

#endif
