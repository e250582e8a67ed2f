/*
 * CDSP.h - the signal-processing toolkit: texture statistics of polar fields, array and grid
 * files.
 */
#ifndef CLUTTERCLASSIFIER_CDSP_H
#define CLUTTERCLASSIFIER_CDSP_H

#include "clutterclassifier/export.h"

/*
 * Stateless routines over flat arrays. A polar field holds gate g of ray r at g + ngates * r; rays
 * are circular, gates are not. A mask element takes part only when it is exactly 0.0 (so NaN
 * excludes). Inputs are not modified, outputs belong to the caller and must not overlap the inputs
 * unless a routine says so. Status codes: 1 done, -1 rejected arguments (no message, outputs
 * untouched).
 */
class CLUTTERCLASSIFIER_EXPORT CDSP {
  public:
    CDSP();
    ~CDSP();
    CDSP(const CDSP&) = delete;
    CDSP& operator=(const CDSP&) = delete;

    /*
     * Mean and population standard deviation of n values: two passes, single-precision sums in
     * index order, divided by n (not n - 1). A NaN among the values makes both NaN. Returns 1, or
     * -1 when n < 1 or x is null.
     */
    int GetMeanStd(float* x, int n, float& mean, float& std);

    /*
     * Standard deviation (GetMeanStd) in an N x N window around each gate; no mask, no wrap-around.
     * The first and last N / 2 rays repeat the nearest computed ray, then the first and last N / 2
     * gates the nearest computed gate. A field smaller than the window gives 0.0 everywhere.
     * Returns 1, or -1 unless both sizes are positive, both arrays given and N is odd and at
     * least 3.
     */
    int GetNxNPointStd(float* in, int ngates, int nrays, float* out, short N);

    /*
     * Standard deviation of the unmasked members of a window of wgates gates x wrays rays around
     * each unmasked gate; masked gates get 0.0. Rays wrap around the circle (as often as a wide
     * window needs); the first and last wgates / 2 gates of a ray repeat the nearest computed gate.
     * Rays not longer than wgates - 1 get 0.0. Values are not screened: only the mask decides.
     * Returns 1, or -1 unless both sizes are positive, all arrays given, both window sizes odd and
     * positive, and the window holds more than one gate.
     */
    int GetNxNPointStdWithMask(float* in, float* mask, int ngates, int nrays, float* out,
                               int wgates, int wrays);

    /*
     * Array and grid files. Formats: docs/formats/column-file.md, docs/formats/grid-file.md.
     * Numbers have a decimal point whatever the host's locale; tokens are separated by white space
     * and may have any length. Arrays that a reader fills belong to the caller (delete[]); the old
     * one is released when the new one is complete. What a reader refuses leaves every output as it
     * was. A file that cannot be opened, a null array or a null path is refused. No messages.
     */

    /* Appends n values to a text file, one a line with four decimals. */
    void SaveArrayOnFile(float* x, int n, char* path);

    /*
     * Writes nrows rows of ncols values (value c of row r at r * ncols + c) as text: over the file
     * when mode is 1, else behind what it holds. times may be null; otherwise each row begins with
     * its date and time, given as seconds since 1970. precision is the number of decimals (1, 2; -1
     * for none, 0 for six significant digits; any other 3).
     *
     * Without rows or columns, data or a path, or when path is "NULL", no file is touched.
     */
    void SaveDataToFile(char* path, unsigned int* times, float* data, int nrows, int ncols,
                        int mode, int precision);

    /* Writes n values as they lie in memory, four bytes each: over the file when mode is 1, else
     * behind what it holds. Does nothing when n < 1 or path is "NULL". */
    void savedata2binary(char* path, float* x, int n, int mode);

    /*
     * Reads a text file of numbers into *data, column by column: row r, column c at r + nrows * c.
     * The first line (up to a line feed or carriage return) tells the columns, one if it is empty;
     * a last row that is not full is dropped. A token "nan" becomes nanValue, rounded to six
     * decimals; one that is no number 0. An empty file gives 0 rows and 0 columns.
     *
     * Returns 1, or -1.
     */
    int OnReadASCIIDataFile(char* path, float** data, int& nrows, int& ncols, float nanValue);

    /*
     * Reads a column file whose first six columns are year, month, day, hour, minute and second
     * into *times (seconds since 1970, one a row) and the other columns into *data (row r, column c
     * at r + nrows * c; ncols does not count the six). Fewer than six columns give 0 rows and 0
     * columns. Dates that are none give times that mean nothing (see Ctiempo).
     */
    void LoadDataFromFile(char* path, unsigned int** times, float** data, int& nrows, int& ncols,
                          float nanValue);

    /*
     * Reads a list of file names, separated by white space, into one block *names of count slots of
     * 1,024 characters: name i starts at *names + 1024 * i, is terminated, and cut after 1,023
     * characters. Returns 1; 0 when the file cannot be read or holds more than 1,048,576 names.
     */
    int OnReadFNames(char* path, char** names, int& count);

    /*
     * Copies what follows the last backslash of path into name (1,024 characters). Returns 1; 0
     * with name untouched when there is no backslash - a slash is none -, 0 with name " " when
     * the text from the backslash on has 1,024 characters or more.
     */
    int getfnameonly(char* path, char* name);

    /*
     * Writes rows r0 .. r1 - 1 and columns c0 .. c1 - 1 of a grid, cut to what it has, as an ASCII
     * grid with two decimals. Lines count from the last row of the array: line r0 is row
     * nrows - r0 - 1. Value (row, column) is data[column + row * ncols] when rowMajor is not 0,
     * else data[column * nrows + row]. xll, yll and cellsize go to the header as they are, nodata
     * as its text (null: empty). Nothing left to write: no file.
     */
    void SaveDataToGISformat(char* path, float* data, int nrows, int ncols, int r0, int r1, int c0,
                             int c1, float xll, float yll, float cellsize, char* nodata,
                             int rowMajor);

    /*
     * Reads an ASCII grid: column-major and with row 0 the southernmost, so that line l, column c
     * of the file is (*data)[nrows - l - 1 + nrows * c]. nodata receives up to 1,023 characters and
     * may be null. Values that the file does not have are 0.
     *
     * Returns 1; 0 when the header's keys are not the expected ones in their order, or its counts
     * are negative, beyond int, or - above 2^24 cells - more than four to a byte of the file.
     */
    int ReadDataFromGISformat(char* path, float** data, int& nrows, int& ncols, float& xll,
                              float& yll, float& cellsize, char* nodata);

    /* The element with the smallest |x - target|, the first of equals. */
    void GetNearest(double* x, int n, double target, double& value, int& index);
    void GetNearest(float* x, int n, float target, float& value, int& index);

    /* Ascending copy of n values and where each came from. */
    void Sort(float* in, float* out, int* index, int n);

    /* Uniform noise between min and max. */
    void GenerateRandomNoise(float* out, int n, float min, float max);
};

#endif
