/**
 * @file Cmfs.h
 * One membership function of a fuzzy variable.
 */
#ifndef CLUTTERCLASSIFIER_CMFS_H
#define CLUTTERCLASSIFIER_CMFS_H

#include "clutterclassifier/export.h"

/**
 * A name, a shape and five parameters. Every evaluation maps n values x to n degrees out (double),
 * element by element; x and out belong to the caller. Null arrays and n < 1 do nothing.
 *
 * A NaN value gives NaN in same, complement and gaussian, 1.0 in gaussian2s, the last degree in
 * interp, and leaves out as it was in trapezoidal.
 */
class CLUTTERCLASSIFIER_EXPORT Cmfs {
  public:
    Cmfs();
    ~Cmfs();
    Cmfs(const Cmfs&) = delete;
    Cmfs& operator=(const Cmfs&) = delete;

    /** out = x. */
    void same(float* x, double* out, int n);

    /** out = 1 - x, in single precision. */
    void complement(float* x, double* out, int n);

    /** out = exp(-(x - c)^2 / (2 sigma^2)), sigma = params[0], c = params[1]; quotient in single
     * precision. */
    void gaussian(float* x, double* out, int n);

    /**
     * A gaussian with a plateau: sigma = params[0], shoulders c1 = params[1] and c2 =
     * params[3]. 1.0 for c1 <= x <= c2, and exp(-(x - c1)^2 / (2 sigma^2)) on both sides: values
     * above c2 fall off from c1 too, so the degree jumps just above c2. params[2] is not used.
     */
    void gaussian2s(float* x, double* out, int n);

    /** out = 1.0; x is not read and may be null. */
    void ones(float* x, double* out, int n);

    /**
     * A trapezoid a <= b <= c <= d = params[0..3] rising from 1e-10 at a to 1 at b and falling from
     * 1 at c to 1e-10 at d, in single precision. On the plateau b <= x <= c nothing is written: out
     * keeps what it held before. Parameters out of order give -1.0 everywhere.
     */
    void trapezoidal(float* x, double* out, int n);

    /**
     * Piecewise-linear interpolation in a table of np points (px ascending, degrees py), constant
     * beyond both ends. A value equal to a point takes the segment above it. np < 1 does nothing.
     */
    void interp(double* px, double* py, int np, float* x, double* out, int n);

    char name[20];   /**< " " after construction */
    char type[1024]; /**< shape: "same", "complement", "gaussian", "gaussian2s", "ones",
                        "trapezoidal", or the path of a membership file; " " after construction */
    float params[5]; /**< shape parameters, 0 after construction */
};

#endif
