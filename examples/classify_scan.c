/*
 * classify_scan.c - the entry point from plain C: one small scan of rain with a patch of clutter.
 *
 *     cc classify_scan.c $(pkg-config --cflags --libs clutterclassifier) -o classify_scan
 *     ./classify_scan $(pkg-config --variable=membershipdir clutterclassifier)/
 */
#include <stdio.h>
#include <stdlib.h>

#include "clutterclassifier/classifier.h"
#include "clutterclassifier/clutterclassifier.h"

enum { kRays = 36, kGates = 200 };

static double spread(double width) {
    return width * (2.0 * rand() / RAND_MAX - 1.0);
}

/* The entry point has no status: what it reports is why it did not classify. */
static void keepReport(void* failed, const char* text) {
    *(int*)failed = 1;
    fputs(text, stderr);
}

int main(int argc, char** argv) {
    static double zhh[kRays * kGates], phidp[kRays * kGates], classes[kRays * kGates];
    double ranges[kGates], azimuths[kRays], elevation = 0.5;
    double params[3] = {40.0, 26.0, 1.0 + 4.0}; /* constant, least SNR, textures of zhh and phidp */
    int counts[6] = {0}, failed = 0, i;

    if (argc < 2) {
        fprintf(stderr, "usage: %s MEMBERSHIP_DIRECTORY/\n", argv[0]);
        return 2;
    }
    for (i = 0; i < kGates; i++) {
        ranges[i] = 250.0 * (i + 1);
    }
    for (i = 0; i < kRays; i++) {
        azimuths[i] = 10.0 * i;
    }
    for (i = 0; i < kRays * kGates; i++) {
        const int clutter = i % kGates < 40 && i / kGates < 12;
        const int echo = i % kGates < 150;
        zhh[i] = !echo ? -60.0 : 35.0 + spread(clutter ? 15.0 : 1.5);
        phidp[i] = 60.0 + spread(clutter ? 120.0 : 2.0);
    }
    clutter_set_message_sink(keepReport, &failed);
    clutterclassifier(argv[1], kRays, kGates, zhh, NULL, phidp, NULL, NULL, NULL, NULL, ranges,
                      azimuths, &elevation, params, classes);
    if (failed) {
        return 1;
    }
    for (i = 0; i < kRays * kGates; i++) {
        counts[(int)classes[i]]++;
    }
    printf("precipitation %d, noise %d, ground clutter %d\n", counts[0], counts[3], counts[5]);
    return 0;
}
