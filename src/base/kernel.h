/*
 * kernel.h - the build attribute of row kernels.
 *
 * A kernel is a plain loop over lanes. CLUTTER_KERNEL compiles it once for every common instruction
 * set and lets the loader choose; all versions give the same bits, since nothing is contracted or
 * reordered. Sanitizers run before such a choice can be made, and Clang 14 chooses wrongly: both
 * get one version.
 */
#ifndef CLUTTER_BASE_KERNEL_H
#define CLUTTER_BASE_KERNEL_H

#if defined(__x86_64__) && defined(__GNUC__) && !defined(__clang__) && \
    !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
#define CLUTTER_KERNEL \
    __attribute__((target_clones("arch=x86-64-v4", "arch=x86-64-v3", "default"), flatten))
#else
#define CLUTTER_KERNEL
#endif

#endif
