/**
 * @file CDSP.h
 * The signal-processing toolkit: texture, filters and smoothing, search, correlation,
 * interpolation, sorting and noise, array and grid files.
 */
#ifndef CLUTTERCLASSIFIER_CDSP_H
#define CLUTTERCLASSIFIER_CDSP_H

#include "clutterclassifier/export.h"

/**
 * Stateless routines over flat arrays. A polar field holds gate g of ray r at g + ngates * r; rays
 * are circular, gates are not. A gate is unmasked only where the mask is exactly 0.0 (so NaN
 * masks). Inputs are not modified, outputs belong to the caller and must not overlap the inputs
 * unless a routine says so. Status codes: 1 done, -1 rejected arguments (no message, outputs
 * untouched).
 */
class CLUTTERCLASSIFIER_EXPORT CDSP {
  public:
    CDSP();
    ~CDSP();
    CDSP(const CDSP&) = delete;
    CDSP& operator=(const CDSP&) = delete;

    /**
     * Mean and population standard deviation of n values: two passes, single-precision sums in
     * index order, divided by n (not n - 1). A NaN among the values makes both NaN. Returns 1, or
     * -1 when n < 1 or x is null.
     */
    int GetMeanStd(float* x, int n, float& mean, float& std);

    /**
     * Standard deviation (GetMeanStd) in an N x N window around each gate; no mask, no wrap-around.
     * The first and last N / 2 rays repeat the nearest computed ray, then the first and last N / 2
     * gates the nearest computed gate. A field smaller than the window gives 0.0 everywhere.
     * Returns 1, or -1 unless both sizes are positive, both arrays given and N is odd and at
     * least 3.
     */
    int GetNxNPointStd(float* in, int ngates, int nrays, float* out, short N);

    /**
     * Standard deviation of the unmasked members of a window of wgates gates x wrays rays around
     * each unmasked gate; masked gates get 0.0. Rays wrap around the circle (as often as a wide
     * window needs); the first and last wgates / 2 gates of a ray repeat the nearest computed gate.
     * Rays not longer than wgates - 1 get 0.0. Values are not screened: only the mask decides.
     * Returns 1, or -1 unless both sizes are positive, all arrays given, both window sizes odd and
     * positive, and the window holds more than one gate.
     */
    int GetNxNPointStdWithMask(float* in, float* mask, int ngates, int nrays, float* out,
                               int wgates, int wrays);

    /** @name Filters
     * Filters of a profile. Sums run in the order of the formulas. A kernel count below 1 counts
     * as 0: every filtered value is then 0.
     */

    /**
     * Centred correlation with half = (m - 1) / 2, the kernel not reversed:
     *
     *     y[i] = x[i - half] h[0] + ... + x[i - half + m - 1] h[m - 1]   half <= i < n - half
     * in double precision, 0 elsewhere; with an even m a term past the profile's end is dropped.
     * x and y: n values, h: m. The first form writes the result, narrowed, back into x and returns
     * n; in the second y may be x. Nothing happens when n < 1 or an array is null.
     */
    int conv(float* x, float* h, int n, int m);
    void conv(double* x, double* h, double* y, int n, int m);

    /**
     * Convolution (kernel reversed) with zeros past the ends, single-precision sums in kernel
     * order: x becomes the middle n of the n + m - 1 values of the full convolution, from its
     * element (m - 1) / 2 on. Nothing happens when n < 1 or an array is null.
     */
    void Filter(float* x, float* h, int n, int m);

    /**
     * Recursive filter in single precision, for i = 0 .. n - 1 from y[i] = 0:
     *
     *     for k = 0 .. na - 2: y[i] -= a[k + 1] y[i - k]       (yinit where i - k < 0)
     *     for k = 0 .. nb - 1: y[i] += b[k] x[i - k + 1]       (xinit where i - k + 1 < 0)
     * Note the indices: a[1] meets the y[i] that is still 0, and b[0] the next sample, so x must
     * hold n + 1 values. a: na values, a[0] (taken as 1) is not used; b: nb values. Returns n.
     */
    int filtering(float* y, float* x, float* a, float* b, int n, int na, int nb, float yinit,
                  float xinit);

    /**
     * Five-point derivative in place, step the spacing of the samples:
     *
     *     (8 x[i + 1] + (x[i - 2] - 8 x[i - 1]) - x[i + 2]) / (12 step)   2 <= i < n - 2
     * The first two values repeat the third, the last two are 0. Three or four samples become 0,
     * fewer are left as they are.
     */
    void Derive(float* x, int n, float step);

    /** Sum in index order, in the array's precision; 0 when n < 1. */
    float GetSum(float* x, int n);
    double GetSum(double* x, int n);

    /**
     * Low-pass filter of order + 1 coefficients: the ideal response sin(2 pi fc k) / (pi k) under
     * a Hamming window 0.54 + 0.46 cos(2 pi k / order), k = -order / 2 .. order / 2, divided by
     * their sum. fc is the cut-off as a fraction of the sampling frequency, not 0. order is even
     * and at least 2; with an odd order the last coefficient is 0, below 0 nothing happens. The
     * float form computes in double.
     */
    void HammingCoef(float* h, float fc, int order);
    void HammingCoef(double* h, double fc, int order);

    /**
     * Two-dimensional correlation of an image (nx columns, ny rows, row by row) with a kernel k
     * (kx columns, ky rows), not reversed, its centre at ((kx - 1) / 2, (ky - 1) / 2); single
     * precision, kernel rows outer. Pixels nearer to an edge than the centre keep their values.
     * With an even kx the last column's terms come from the next row, as the flat index says; terms
     * past the image's end are dropped. out (nx x ny) may be in.
     */
    void conv2(float* in, int nx, int ny, float* k, int kx, int ky, float* out);

    /**
     * Box mean of a matrix (nrows x ncols, row by row) in place: single-precision sum of the
     * (2 h + 1) x (2 h + 1) window, rows outer, divided by N * N (also for an even N), where
     * h = N / 2. Elements nearer to an edge than h keep their values. Nothing happens for a null
     * matrix or N < 1. Values are not screened.
     */
    void SmoothDataMtx(float* x, int nrows, int ncols, int N);

    /**
     * Mean of the unmasked members of the window of gates g - wgates / 2 .. g + wgates / 2 and rays
     * r - wrays / 2 .. r + wrays / 2 around every gate; the gate's own mask does not matter. Gates
     * past the ends of a ray repeat the edge gate, rays wrap around the circle as often as a wide
     * window needs. Members are added rays outer, gates inner:
     *
     *     logmode 0:  sum / count, single precision
     *     otherwise:  values in dB, 10 log10(sum of 10^(0.1 v) / count), double precision, the sum
     *                 starting from 1e-99
     * A gate without members keeps its value. Values are not screened: an unmasked NaN makes the
     * mean NaN. in, out and mask hold ngates x nrays values; out may be in. Nothing happens unless
     * all are given, both sizes are positive and wgates * wrays > 1; two negative window sizes make
     * an empty window.
     */
    void Conv2DPPI(float* in, float* out, float* mask, int ngates, int nrays, int wgates, int wrays,
                   int logmode);

    /** @name Searches and scores
     * Searches. The first of equal extremes wins; NaN is never larger or smaller, so it is found
     * only where the search starts. An array without elements or a rejected range leaves the
     * outputs as they were.
     */

    /** The extreme of x[from] .. x[to - 1] and where it is: 0 <= from < to <= n. */
    void GetMax(double* x, int n, int from, int to, double& max, int& index);
    void GetMin(double* x, int n, int from, int to, double& min, int& index);
    void GetMin(float* x, int n, int from, int to, float& min, int& index);

    /** Unlike the three above, returns x[from] without searching when to == from or to > n, for
     * 0 <= from < n and from <= to. */
    void GetMax(float* x, int n, int from, int to, float& max, int& index);

    /**
     * Where a matrix (nrows x ncols, row by row) has its extremes, searched column by column; a
     * new minimum is not compared with the maximum. All four are 0 for an empty matrix.
     */
    void findmaxmin(float* m, int nrows, int ncols, int& rowMax, int& colMax, int& rowMin,
                    int& colMin);

    /**
     * The element with the smallest |x - target| (differences in double) and its index. The
     * unsigned form takes x - target modulo 2^32 instead: the smallest value not below the target,
     * and only when there is none the smallest value of all.
     */
    void GetNearest(double* x, int n, double target, double& value, int& index);
    void GetNearest(float* x, int n, float target, float& value, int& index);
    void GetNearest(unsigned int* x, int n, unsigned int target, unsigned int& value, int& index);

    /** Sum of a[i] b[i] in index order, in the arrays' precision; 0 when n < 1. */
    double mult(double* a, double* b, int n);
    float xcorr(float* a, float* b, int n);

    /** Correlation coefficient of n pairs, (sum of (a - ma) (b - mb) / n) / (sa sb), with the means
     * and deviations of GetMeanStd, in single precision. NaN when n < 1 or an array is constant. */
    float corr(float* a, float* b, int n);

    /**
     * Correlation coefficient of the pairs with x >= threshold, in double precision; n becomes
     * their count, the sums are those of x, y, x x, y y and x y. With linear 0 it is that of
     * log10(x) and log10(y), where values that are not positive (and NaN) count as 1e-5; the
     * threshold applies to x itself. The arrays are not changed. Returns 0 when no pair took part;
     * -999.0, with n and all sums 0, for null arrays or n < 1.
     */
    double correlation(float* x, float* y, int& n, double& sx, double& sy, double& sxx, double& syy,
                       double& sxy, double threshold, int linear);

    /**
     * Contingency of two fields, an event being a value >= threshold (so not NaN): counts of
     * pairs with the event in both, in the second or the first only, in neither; and
     *
     *     scoreA = secondOnly / (firstOnly + secondOnly)    scoreB = both / (both + firstOnly)
     * or -1.0 where the divisor is 0. n becomes 0 for null arrays or n < 1.
     */
    void farpod(float* first, float* second, int& n, float threshold, int& both, int& secondOnly,
                int& firstOnly, int& neither, double& scoreA, double& scoreB);

    /**
     * Moves a matrix (nrows x ncols, row by row) by rowShift towards higher rows and colShift
     * towards higher columns; vacated cells become 0, cells shifted out are lost. out may be
     * in. Nothing happens for null arrays, sizes below 1, rowShift > nrows or colShift > ncols.
     */
    void ShiftMtx(float* in, float* out, int ncols, int nrows, int rowShift, int colShift);

    /**
     * Predicts a field by the shift that matches best: for row and column shifts from
     * -window / 2 to window / 2 in steps of step, the score xcorr(current, previous shifted) goes
     * to cell (rowShift + window / 2) window + colShift + window / 2 of a grid of window x window
     * zeros, if the cell is in the grid. The first largest cell k except the last gives
     *
     *     rowShift = window / 2 - k / window    colShift = window / 2 - k % window
     * and previous, shifted by these (ShiftMtx), is written to predicted, which may be previous.
     * All matrices hold nrows x ncols values. Nothing happens for null arrays, sizes, window or
     * step below 1, or a window above 46340.
     */
    void MatrixPrediction(float* current, float* previous, float* predicted, int ncols, int nrows,
                          int window, int& rowShift, int& colShift, int step);

    /**
     * Piecewise-linear interpolation of n knots (x ascending) at ni positions. With k the first
     * knot above xi: y[0] for k = 0, linear for 0 < k < n - 1, and y[n - 1] otherwise, so already
     * between the last two knots, and for NaN. yi may be xi. Nothing happens when n < 1.
     */
    void interp(double* x, double* y, int n, double* xi, double* yi, int ni);

    /**
     * Sorts ascending: out[i] = in[index[i]]. The order is that of a selection by exchange: for
     * each position every later element that is strictly smaller changes places with it. So equal
     * values (0.0 and -0.0 are equal) do not keep their order, and NaN stay where they are. Takes
     * n log n steps. out and index hold n values; out may be in.
     */
    void Sort(float* in, float* out, int* index, int n);

    /** @name Random numbers
     * Random fills. Every call reseeds the C library's generator, srand(rand() + time(0)), which
     * the whole process shares, and divides by 2147483647.0 whatever RAND_MAX is. An array of
     * n < 1 values or null is left alone.
     */

    /** n values rand() (max - min) / 2147483647.0 + min. */
    void GenerateRandomNoise(double* out, int n, double min, double max);
    void GenerateRandomNoise(float* out, int n, float min, float max);

    /** n values of one branch of the Box-Muller transform; the radius takes the first random number
     * and the angle the second: sqrt(-2 log(u1)) sd sin(2 pi u2) + mean. */
    void GenerateNormallyDistributed(double* out, int n, double mean, double sd);
    void GenerateNormallyDistributed(float* out, int n, float mean, float sd);

    /** Adds one normally distributed value to each of the n elements. */
    void AddNoiseNormallyDistributed(float* x, int n, float mean, float sd);

    /** @name Files
     * Array and grid files. Formats: docs/formats/column-file.md, docs/formats/grid-file.md.
     * Numbers have a decimal point whatever the host's locale; tokens are separated by white space
     * and may have any length. Arrays that a reader fills belong to the caller (delete[]); the old
     * one is released when the new one is complete. What a reader refuses leaves every output as it
     * was. A file that cannot be opened or that has a line of more than 2^24 bytes, a null
     * array or a null path is refused. No messages.
     */

    /** Appends n values to a text file, one on each line, with four decimals. */
    void SaveArrayOnFile(float* x, int n, char* path);

    /**
     * Writes nrows rows of ncols values (value c of row r at r * ncols + c) as text: over the file
     * when mode is 1, else after its end. times may be null; otherwise each row begins with
     * its date and time, given as seconds since 1970. precision is the number of decimals (1 or 2;
     * -1 for none, 0 for six significant digits; any other value means 3).
     *
     * Without rows or columns, data or a path, or when path is "NULL", no file is touched.
     */
    void SaveDataToFile(char* path, unsigned int* times, float* data, int nrows, int ncols,
                        int mode, int precision);

    /** Writes n values as in memory, four bytes each: over the file when mode is 1, else
     * after its end. Does nothing when n < 1 or path is "NULL". */
    void savedata2binary(char* path, float* x, int n, int mode);

    /**
     * Reads a text file of numbers into *data, column by column: row r, column c at r + nrows * c.
     * The first line (up to a line feed or carriage return) determines the columns, one if it is
     * empty; a last row that is not full is dropped. A token "nan" becomes nanValue, rounded to six
     * decimals; any other token that is not a number becomes 0. An empty file gives 0 rows and 0
     * columns.
     *
     * Returns 1, or -1.
     */
    int OnReadASCIIDataFile(char* path, float** data, int& nrows, int& ncols, float nanValue);

    /**
     * Reads a column file whose first six columns are year, month, day, hour, minute and second
     * into *times (seconds since 1970, one a row) and the other columns into *data (row r, column c
     * at r + nrows * c; ncols does not count the six). Fewer than six columns give 0 rows and 0
     * columns. Impossible dates give meaningless times (see Ctiempo).
     */
    void LoadDataFromFile(char* path, unsigned int** times, float** data, int& nrows, int& ncols,
                          float nanValue);

    /**
     * Reads a list of file names, separated by white space, into one block *names of count slots of
     * 1,024 characters: name i starts at *names + 1024 * i, is terminated, and cut after 1,023
     * characters. Returns 1; 0 when the file cannot be read or holds more than 1,048,576 names.
     */
    int OnReadFNames(char* path, char** names, int& count);

    /**
     * Copies what follows the last backslash of path into name (1,024 characters). Returns 1; 0
     * with name untouched when there is no backslash (a slash does not count), 0 with name " " when
     * the text from the backslash on has 1,024 characters or more.
     */
    int getfnameonly(char* path, char* name);

    /**
     * Writes rows r0 .. r1 - 1 and columns c0 .. c1 - 1 of a grid, cut to what it has, as an ASCII
     * grid with two decimals. Lines count from the last row of the array: line r0 is row
     * nrows - r0 - 1. Value (row, column) is data[column + row * ncols] when rowMajor is not 0,
     * else data[column * nrows + row]. xll, yll and cellsize go to the header as they are, nodata
     * as its text (null: empty). Nothing left to write: no file.
     */
    void SaveDataToGISformat(char* path, float* data, int nrows, int ncols, int r0, int r1, int c0,
                             int c1, float xll, float yll, float cellsize, char* nodata,
                             int rowMajor);

    /**
     * Reads an ASCII grid: column-major and with row 0 the southernmost, so that line l, column c
     * of the file is (*data)[nrows - l - 1 + nrows * c]. nodata receives up to 1,023 characters and
     * may be null. Values that the file does not have are 0.
     *
     * Returns 1; 0 when the header's keys are not the expected ones in their order, or its counts
     * are negative, exceed int, or - above 2^18 cells - more than 64 for each byte of the file.
     */
    int ReadDataFromGISformat(char* path, float** data, int& nrows, int& ncols, float& xll,
                              float& yll, float& cellsize, char* nodata);
};

#endif
