#include "owncvomp.h"

#include <pthread.h>
#include <xmmintrin.h>

int owncvGetNumThreads() {
    int count = 1;
    noxGetNumThreads(&count);
    return count;
}

int owncvGetMaxNumThreads() { return owncvGetNumThreads(); }

int owncvGetIdThreads() {
#ifdef _OPENMP
    return omp_get_thread_num();
#else
    return 0;
#endif
}

int runomp() {
    const int cores = noxGetNumCoresOnDie();
    return cores == 1 ? 0 : cores;
}

int runsepomp(int kernelSize) {
    const int pays = runomp();
    return kernelSize == 3 || kernelSize == 5 ? pays : pays | 1;
}

int owncvGetCacheSize() {
    int bytes = 0;
    noxGetMaxCacheSizeB(&bytes);
    return bytes;
}

namespace nox {
namespace {

// Set in a child of fork: the runtime's threads exist in the parent only, and a team would wait for them for ever.
bool forked = false;
[[maybe_unused]] const int registered = pthread_atfork(nullptr, nullptr, [] { forked = true; });

} // namespace

bool mayOpenTeam() {
#if defined(_OPENMP) || defined(NOXCV_STANDARD_THREADS)
    return !forked;
#else
    return false;
#endif
}

FloatControl FloatControl::ofThisThread() {
    FloatControl control;
    control.vector_ = _mm_getcsr();
    // Storing the environment masks all exceptions, so the control word is loaded again.
    __asm__ volatile("fnstenv %0\n\tfldcw %0" : "=m"(control.extended_));
    return control;
}

void FloatControl::apply() const {
    constexpr unsigned flags = 0x3F;
    _mm_setcsr(vector_ & ~flags);
    __asm__ volatile("fnclex\n\tfldcw %0" : : "m"(extended_));
}

void FloatControl::restore() const {
    _mm_setcsr(vector_);
    __asm__ volatile("fldenv %0" : : "m"(extended_));
}

} // namespace nox
