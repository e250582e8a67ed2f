/*
 * host.c - a host in plain C: one scan through the entry point. Prints the classes.
 */
#include <stdio.h>

#include "clutterclassifier/clutterclassifier.h"

int main(int argc, char** argv) {
    double zhh[6] = {40.0, 41.0, 40.0, -30.0, 42.0, 41.0};
    double pdf[6] = {0.9, 0.1, 0.2, 0.9, 0.8, 0.5};
    double ranges[3] = {1000.0, 2000.0, 3000.0};
    double azimuths[2] = {0.0, 3.14};
    double elevation = 0.01;
    double params[3] = {10.0, 26.0, 64.0};
    double classes[6] = {-1, -1, -1, -1, -1, -1};
    int i;
    clutterclassifier(argc > 1 ? argv[1] : "", 2, 3, zhh, NULL, NULL, NULL, NULL, NULL, pdf, ranges,
                      azimuths, &elevation, params, classes);
    for (i = 0; i < 6; i++) {
        printf("%.0f ", classes[i]);
    }
    printf("\n");
    return 0;
}
