/*
 * kernel.h - the build attribute of row kernels.
 *
 * A kernel is a plain loop over lanes: independent results that are computed side by side.
 * CLUTTER_KERNEL compiles it for several instruction sets and lets the loader choose one. All
 * versions give the same bits, since nothing is contracted or reordered. A single version is built
 * for sanitizers, which start before the loader can choose, for GCC 11, which does not know these
 * sets, and for Clang 14, which chooses the wrong version.
 */
#ifndef CLUTTER_BASE_KERNEL_H
#define CLUTTER_BASE_KERNEL_H

namespace clutter::base {

/* Lanes of a block. Its arrays of floats or doubles stay in the first-level cache. */
inline constexpr int kBlockLanes = 256;

}  // namespace clutter::base

#if defined(__x86_64__) && defined(__GNUC__) && __GNUC__ >= 12 && !defined(__clang__) && \
    !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
#define CLUTTER_KERNEL \
    __attribute__((target_clones("arch=x86-64-v4", "arch=x86-64-v3", "default"), flatten))
#else
#define CLUTTER_KERNEL
#endif

#endif
