// What the processor offers beyond the build's baseline, asked once where a
// faster path depends on it.
#ifndef KX_CORE_CPU_H
#define KX_CORE_CPU_H

#if defined(__x86_64__) || defined(__i386__)
#include <cpuid.h>
#define KX_X86_BLOCKS 1
#else
#define KX_X86_BLOCKS 0
#endif

namespace kx::core {

#if KX_X86_BLOCKS
// Every x86-64 processor has SSE2; a 32-bit build asks the processor. (The
// compiler's own feature check would add a constructor to every process.)
inline bool HasSse2() {
#ifdef __SSE2__
    return true;
#else
    unsigned eax = 0, ebx = 0, ecx = 0, edx = 0;
    return __get_cpuid(1, &eax, &ebx, &ecx, &edx) != 0 && (edx & bit_SSE2) != 0;
#endif
}

// SSSE3 with POPCNT: the 16-byte URL decoder counts its lanes with POPCNT,
// which some processors with SSSE3 lack.
inline bool HasSsse3AndPopcnt() {
    unsigned eax = 0, ebx = 0, ecx = 0, edx = 0;
    if (__get_cpuid(1, &eax, &ebx, &ecx, &edx) == 0) return false;
    return (ecx & bit_SSSE3) != 0 && (ecx & bit_POPCNT) != 0;
}

// AVX2, and an operating system that keeps the 256-bit registers across
// switches. Asked of the processor once.
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

}  // namespace kx::core

#endif
