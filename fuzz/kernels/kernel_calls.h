/*
 * kernel_calls.h - the library's row kernels through its operations, on a small scan made of a
 * fuzzer's bytes. The same calls are compiled twice: into the fuzzer, where every kernel has one
 * version, and into a module of the release build, where the loader chooses among all of them.
 */
#ifndef CLUTTER_FUZZ_KERNELS_KERNEL_CALLS_H
#define CLUTTER_FUZZ_KERNELS_KERNEL_CALLS_H

#include <cstddef>
#include <cstdint>

/* Fills at most room results and returns their number. membership is a directory with its trailing
 * separator. */
extern "C" __attribute__((visibility("default"))) std::size_t clutterKernelCalls(
    const std::uint8_t* data, std::size_t size, const char* membership, float* results,
    std::size_t room);

using ClutterKernelCalls = decltype(&clutterKernelCalls);

#endif
