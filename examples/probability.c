/*
 * probability.c - how sure each class is: a small scan through the handle, from plain C.
 *
 *     cc probability.c $(pkg-config --cflags --libs clutterclassifier) -o probability
 *     ./probability $(pkg-config --variable=membershipdir clutterclassifier)
 */
#include <stdio.h>
#include <stdlib.h>

#include "clutterclassifier/classifier.h"

enum { kRays = 36, kGates = 200 };

static float spread(double width) {
    return (float)(width * (2.0 * rand() / RAND_MAX - 1.0));
}

/* Rain with a patch of clutter in the first rays and gates, noise far away. */
static void makeScan(float* zhh, float* phidp) {
    int i;
    for (i = 0; i < kRays * kGates; i++) {
        const int clutter = i % kGates < 40 && i / kGates < 12;
        zhh[i] = i % kGates >= 150 ? -60.0f : 35.0f + spread(clutter ? 15.0 : 1.5);
        phidp[i] = 60.0f + spread(clutter ? 120.0 : 2.0);
    }
}

int main(int argc, char** argv) {
    static float zhh[kRays * kGates], phidp[kRays * kGates], probability[kRays * kGates];
    static unsigned char classes[kRays * kGates];
    clutter_classifier* classifier = NULL;
    clutter_message message;
    clutter_scan scan = {0};
    clutter_options options = {0};
    clutter_result result = {0};
    int gate;

    if (argc < 2) {
        fprintf(stderr, "usage: %s MEMBERSHIP_DIRECTORY\n", argv[0]);
        return 2;
    }
    if (clutter_create(argv[1], CLUTTER_ZHH_TEXTURE | CLUTTER_PHIDP_TEXTURE, 0, &classifier,
                       &message) != CLUTTER_OK) {
        fprintf(stderr, "%s: %s\n", argv[0], message.text);
        return 1;
    }
    makeScan(zhh, phidp);
    scan.size = sizeof scan;
    scan.rays = kRays;
    scan.gates = kGates;
    scan.zhh.values = zhh;
    scan.phidp.values = phidp;
    scan.gate_spacing_m = 250.0;
    scan.radar_constant_db = 40.0;
    scan.min_snr_db = 26.0;
    options.size = sizeof options;
    options.neighbourhood_gates = 5;
    options.neighbourhood_rays = 3;
    result.size = sizeof result;
    result.classes = classes;
    result.probability = probability;
    if (clutter_classify(classifier, &scan, &options, &result, &message) != CLUTTER_OK) {
        fprintf(stderr, "%s: %s\n", argv[0], message.text);
        clutter_destroy(classifier);
        return 1;
    }
    clutter_destroy(classifier);
    printf("probability of precipitation along ray 5:\n");
    for (gate = 10; gate < kGates; gate += 20) {
        const int at = 5 * kGates + gate;
        if (classes[at] == CLUTTER_NOISE) {
            printf("  gate %3d: noise\n", gate);
        } else {
            printf("  gate %3d: %.3f\n", gate, probability[at]);
        }
    }
    return 0;
}
