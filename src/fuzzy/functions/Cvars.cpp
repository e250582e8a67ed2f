/*
 * One fuzzy variable.
 */
#include "clutterclassifier/Cvars.h"

#include "base/array.h"

Cvars::Cvars() : name{" "}, minval(0.0f), maxval(0.0f), mfs(nullptr), nmfs(0) {}

Cvars::~Cvars() {
    clutter::base::release(mfs);
}

void Cvars::CreateMFSspace(int n) {
    if (n < 1 || mfs != nullptr) {
        return;
    }
    mfs = new Cmfs[n];
    nmfs = n;
}
