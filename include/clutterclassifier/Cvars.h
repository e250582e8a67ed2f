/**
 * @file Cvars.h
 * One fuzzy variable.
 */
#ifndef CLUTTERCLASSIFIER_CVARS_H
#define CLUTTERCLASSIFIER_CVARS_H

#include "clutterclassifier/Cmfs.h"
#include "clutterclassifier/export.h"

/** A name, a range (stored, not used in evaluation) and an owned array of membership functions. */
class CLUTTERCLASSIFIER_EXPORT Cvars {
  public:
    Cvars();
    ~Cvars();
    Cvars(const Cvars&) = delete;
    Cvars& operator=(const Cvars&) = delete;

    /** Allocates n membership functions, once: does nothing when n < 1 or when there are some
     * already. */
    void CreateMFSspace(int n);

    char name[20]; /**< " " after construction */
    float minval;
    float maxval;
    Cmfs* mfs; /**< owned, nmfs functions; null until created */
    int nmfs;
};

#endif
