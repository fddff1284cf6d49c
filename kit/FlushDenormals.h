// FlushDenormals: denormal floats read and made as zero while a recursive filter runs.
#pragma once

#if defined(__x86_64__) || defined(__i386__)
#include <xmmintrin.h>
#endif

namespace kit {

/// Flushes denormals to zero while it lives. A recursion that decays across an empty margin
/// would otherwise crawl through denormal floats at a hundred times the cost, for values far
/// below an 8-bit step.
class FlushDenormals {
public:
#if defined(__x86_64__) || defined(__i386__)
    FlushDenormals() : m_saved(_mm_getcsr()) { _mm_setcsr(m_saved | 0x8040); }
    ~FlushDenormals() { _mm_setcsr(m_saved); }
    FlushDenormals(const FlushDenormals&) = delete;
    FlushDenormals& operator=(const FlushDenormals&) = delete;

private:
    unsigned m_saved;
#endif
};

} // namespace kit
