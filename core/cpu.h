// What the processor offers beyond the build's baseline, asked where a
// faster path depends on it.
//
// The C library's dynamic loader asks the processor once at every process
// start and keeps the answers, reduced to what the operating system also
// supports; they are read from there. Asking the processor again with
// CPUID is not free: in a virtual machine each CPUID leaves the guest, a
// few microseconds every time, which a CGI request of a small page notices.
#ifndef KX_CORE_CPU_H
#define KX_CORE_CPU_H

#if defined(__x86_64__) || defined(__i386__)
#define KX_X86_BLOCKS 1
#if defined(__GLIBC__) && __has_include(<sys/platform/x86.h>)
// The header's inline readers return C's _Bool, which C++ spells bool.
#define _Bool bool
#include <sys/platform/x86.h>
#undef _Bool
#define KX_LOADER_CPU_FEATURES 1
#else
#include <cpuid.h>
#define KX_LOADER_CPU_FEATURES 0
#endif
#else
#define KX_X86_BLOCKS 0
#endif

namespace kx::core {

#if KX_X86_BLOCKS
#if KX_LOADER_CPU_FEATURES

// Every x86-64 processor has SSE2.
inline bool HasSse2() {
#ifdef __SSE2__
    return true;
#else
    return CPU_FEATURE_ACTIVE(SSE2);
#endif
}

// SSSE3 with POPCNT: the 16-byte URL decoder counts its lanes with POPCNT,
// which some processors with SSSE3 lack.
inline bool HasSsse3AndPopcnt() { return CPU_FEATURE_ACTIVE(SSSE3) && CPU_FEATURE_ACTIVE(POPCNT); }

// AVX2, with an operating system that keeps the 256-bit registers.
inline bool HasAvx2() { return CPU_FEATURE_ACTIVE(AVX2); }

#else  // a C library that keeps no answers: the processor is asked

inline bool HasSse2() {
#ifdef __SSE2__
    return true;
#else
    unsigned eax = 0, ebx = 0, ecx = 0, edx = 0;
    return __get_cpuid(1, &eax, &ebx, &ecx, &edx) != 0 && (edx & bit_SSE2) != 0;
#endif
}

inline bool HasSsse3AndPopcnt() {
    unsigned eax = 0, ebx = 0, ecx = 0, edx = 0;
    if (__get_cpuid(1, &eax, &ebx, &ecx, &edx) == 0) return false;
    return (ecx & bit_SSSE3) != 0 && (ecx & bit_POPCNT) != 0;
}

inline bool HasAvx2() {
    static const bool has = [] {
        unsigned eax = 0, ebx = 0, ecx = 0, edx = 0;
        if (__get_cpuid(1, &eax, &ebx, &ecx, &edx) == 0) return false;
        if ((ecx & bit_OSXSAVE) == 0 || (ecx & bit_AVX) == 0) return false;
        unsigned low = 0, high = 0;
        __asm__("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
        constexpr unsigned kSseAndAvxState = 6;
        if ((low & kSseAndAvxState) != kSseAndAvxState) return false;
        if (__get_cpuid_count(7, 0, &eax, &ebx, &ecx, &edx) == 0) return false;
        return (ebx & bit_AVX2) != 0;
    }();
    return has;
}

#endif
#endif

}  // namespace kx::core

#endif
