/*
 * shapes.h - membership functions as kernels: spans of values to spans of degrees.
 */
#ifndef CLUTTER_FUZZY_SHAPES_H
#define CLUTTER_FUZZY_SHAPES_H

namespace clutter::fuzzy {

enum class Shape { kSame, kComplement, kGaussian, kGaussian2s, kOnes, kTrapezoidal, kTable };

/* The built-in shape of a type text, or kTable: any other text is the path of a membership file. */
Shape shapeOf(const char* type);

/* Degrees of n values; Cmfs has the formulas and the effect of NaN. */
void evaluateSame(const float* x, double* degrees, int n);
void evaluateComplement(const float* x, double* degrees, int n);
void evaluateGaussian(const float* params, const float* x, double* degrees, int n);
void evaluateGaussian2s(const float* params, const float* x, double* degrees, int n);
void evaluateOnes(double* degrees, int n);
void evaluateTrapezoid(const float* params, const float* x, double* degrees, int n);

}  // namespace clutter::fuzzy

#endif
