// The companion core library: what the machine offers, and how many threads a call may use.
#include "noxcore.h"

#include <cpuid.h>
#include <sched.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <limits>

namespace {

int usableProcessors(cpu_set_t &set) {
    CPU_ZERO(&set);
    if (sched_getaffinity(0, sizeof(set), &set) != 0)
        return 1;
    return std::max(1, CPU_COUNT(&set));
}

/// One number from the kernel's description of a processor, or -1.
int topologyEntry(int cpu, const char *entry) {
    char path[96];
    std::snprintf(path, sizeof(path), "/sys/devices/system/cpu/cpu%d/topology/%s", cpu, entry);
    int value = -1;
    if (std::FILE *file = std::fopen(path, "re")) {
        if (std::fscanf(file, "%d", &value) != 1)
            value = -1;
        std::fclose(file);
    }
    return value;
}

/// A core, by the numbers that the kernel gives it.
struct Core {
    int package, number;
    bool operator==(const Core &) const = default;
};

/// Logical processors that share a core count once; where the kernel does not tell, each counts as a core.
int countCores() {
    cpu_set_t set;
    const int processors = usableProcessors(set);
    Core cores[CPU_SETSIZE]; // on the stack: this library cannot run out of memory
    int count = 0;
    for (int cpu = 0; cpu < CPU_SETSIZE; ++cpu) {
        if (!CPU_ISSET(cpu, &set))
            continue;
        const Core core = {topologyEntry(cpu, "physical_package_id"), topologyEntry(cpu, "core_id")};
        if (core.number < 0)
            return processors;
        if (std::find(cores, cores + count, core) == cores + count)
            cores[count++] = core;
    }
    return std::max(1, count);
}

/// Walks the processor's deterministic cache parameters (one leaf layout at two leaf numbers, by vendor).
unsigned long long largestCache(unsigned leaf) {
    constexpr unsigned typeData = 1, typeUnified = 3;
    unsigned long long largest = 0;
    for (unsigned index = 0; index < 16; ++index) {
        unsigned eax = 0, ebx = 0, ecx = 0, edx = 0;
        if (!__get_cpuid_count(leaf, index, &eax, &ebx, &ecx, &edx))
            break;
        const unsigned type = eax & 31U;
        if (type == 0)
            break;
        if (type != typeData && type != typeUnified)
            continue;
        const unsigned long long ways = (ebx >> 22) + 1ULL;
        const unsigned long long partitions = ((ebx >> 12) & 0x3ffU) + 1ULL;
        const unsigned long long line = (ebx & 0xfffU) + 1ULL;
        largest = std::max(largest, ways * partitions * line * (ecx + 1ULL));
    }
    return largest;
}

int readCacheSize() {
    constexpr unsigned leafIntel = 4, leafAmd = 0x8000001D;
    constexpr unsigned long long fallback = 1ULL << 20;
    unsigned long long bytes = std::max(largestCache(leafIntel), largestCache(leafAmd));
    if (bytes == 0)
        bytes = fallback;
    return static_cast<int>(std::min<unsigned long long>(bytes, std::numeric_limits<int>::max()));
}

int defaultThreads() {
    cpu_set_t set;
    return usableProcessors(set);
}

} // namespace

int threads_omp_of_n_nox = defaultThreads();

const Nox64f noxConstantOfNAN_64f = std::numeric_limits<Nox64f>::quiet_NaN();
const Nox64f noxConstantOfINF_64f = std::numeric_limits<Nox64f>::infinity();
const Nox64f noxConstantOfINF_NEG_64f = -std::numeric_limits<Nox64f>::infinity();

NoxStatus noxGetNumThreads(int *count) {
    if (count == nullptr)
        return noxStsNullPointer;
    *count = threads_omp_of_n_nox;
    return noxStsNoError;
}

NoxStatus noxSetNumThreads(int count) {
    if (count < 1)
        return noxStsBadArgument;
    threads_omp_of_n_nox = count;
    return noxStsNoError;
}

// The two answers below are computed at the first question, by each of the threads that ask at once, and kept.

int noxGetNumCoresOnDie() {
    static std::atomic<int> known = 0;
    if (known == 0)
        known = countCores();
    return known;
}

NoxStatus noxGetMaxCacheSizeB(int *bytes) {
    static std::atomic<int> known = 0;
    if (bytes == nullptr)
        return noxStsNullPointer;
    if (known == 0)
        known = readCacheSize();
    *bytes = known;
    return noxStsNoError;
}
