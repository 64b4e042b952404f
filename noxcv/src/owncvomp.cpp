#include "owncvomp.h"

int owncvGetNumThreads() {
    int count = 1;
    noxGetNumThreads(&count);
    return count;
}

int owncvGetMaxNumThreads() { return owncvGetNumThreads(); }

int owncvGetIdThreads() { return omp_get_thread_num(); }

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
