/**
 * @file Cfuzzy.h
 * A small rule-based fuzzy classifier over arrays.
 */
#ifndef CLUTTERCLASSIFIER_CFUZZY_H
#define CLUTTERCLASSIFIER_CFUZZY_H

#include "clutterclassifier/Cvars.h"
#include "clutterclassifier/export.h"

/**
 * Each rule picks one membership function per input and names an output class; its strength at an
 * element is the product (or weighted sum) of the degrees it picks; the element gets the class of
 * its strongest rule. Order of calls: construct, FillVars, Fillmfs, Fillrules, AddressDataPointers
 * for each input, Evaluate.
 *
 * Membership files (any type text that is not the name of a built-in shape) are plain text: pairs
 * of abscissa and degree, ascending, separated by white space, with a decimal point whatever the
 * host's locale. A token that is not a number reads as 0, a trailing single token is ignored
 * (docs/formats/membership.md).
 *
 * Texts are copied bounded and terminated; a type text that does not fit is replaced by a name
 * that cannot be found, never cut.
 */
class CLUTTERCLASSIFIER_EXPORT Cfuzzy {
  public:
    /** ninputs inputs of nmfs_in functions, noutputs outputs of nmfs_out; negative counts are 0. */
    Cfuzzy(int ninputs, int nmfs_in, int noutputs, int nmfs_out);
    ~Cfuzzy();
    Cfuzzy(const Cfuzzy&) = delete;
    Cfuzzy& operator=(const Cfuzzy&) = delete;

    /** Names variable index of a kind ("input" or "output") and sets its range.
     * Returns 1; -1 when there is no such variable; -2 for any other kind. */
    int FillVars(int index, const char* kind, const char* name, float minval, float maxval);

    /** Sets membership function mf of a variable: name, type and the five params (null: left as
     * they are). Returns 1; -2 for an unknown kind (tested first); -1 for no such variable; -3 for
     * no such function. */
    int Fillmfs(int var, int mf, const char* kind, const char* name, const char* type,
                float* params);

    /**
     * Copies nrules rows of ninputs + noutputs shorts. Entry i < ninputs of a row is the function
     * of input i, negative when the input is left out (degree 1.0); entry ninputs is the class of
     * the rule. Returns 1.
     */
    int Fillrules(short* table, int nrules);

    /** Points input index at a caller-owned array (null: the input is absent, degree 1.0).
     * Returns 1, or -1 when there is no such input. */
    int AddressDataPointers(int index, float* values);

    /**
     * Classifies n elements: out receives the class of the strongest rule (the earliest among
     * equals), or -1 where all rules are equally strong. out may be one of the inputs. Every file
     * is read before anything is written.
     *
     * Returns 1; 0 after "Membership function not found: ..." (out untouched), or when out is null.
     */
    int Evaluate(float* out, int n);

    /** Degrees of n elements of input var in function mf (1.0 for a negative mf or an absent
     * input). Returns 1, or 0 when there is no such function or its file cannot be read. */
    int Evalmfs(int var, short mf, double* degrees, int n);

    /** Reads a membership file: npoints points into new arrays x and y, which the caller frees
     * (delete[]). Returns 1; -1 when it cannot be opened; -2 when it holds no complete pair. */
    int readmf(char* path, double** x, double** y, int& npoints);

    double* weights; /**< owned, one per input, 1.0; used by the weighted sum */
    int combination; /**< 1 product of degrees; else 1 + sum of weights[i] * degree */
    Cvars* inputs;   /**< owned */
    Cvars* outputs;  /**< owned */
    int ninputs;
    int noutputs;
    int nrules;
    short* rules; /**< owned; null until Fillrules */
    float** data; /**< owned array of caller-owned pointers, one per input */
};

#endif
