// What a call takes of its caller and leaves behind, for every member over fixed inputs: how much stack it uses, and
// that no exception flag for invalid operations, no other rounding or mask and no used vector state is left on ordinary
// data.
#include <fenv.h>
#include <pthread.h>
#include <sys/mman.h>
#include <xmmintrin.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "fixedinputs.h"
#include "noxcore.h"

namespace bench {

namespace {

/// What a call may take from the stack, all functions together.
constexpr int mostStack = 16384;

/// The stack of the thread that makes the calls, and the pattern it is painted with.
constexpr std::size_t stackBytes = std::size_t(1) << 20;
constexpr unsigned char paint = 0xA7;
unsigned char *stack = nullptr;

/// Bytes of the stack below `here` that do not carry the paint any more.
[[maybe_unused]] int used(const unsigned char *here) {
    return int(here - std::find_if(stack, const_cast<unsigned char *>(here),
                                   [](unsigned char byte) { return byte != paint; }));
}

/// The x87 environment as the processor stores it; the tag word is all ones when no register is in use.
struct Environment {
    std::uint32_t control, status, tags, rest[4];
};

Environment environment() {
    Environment now;
    __asm__ volatile("fnstenv %0\n\tfldenv %0" : "=m"(now));
    return now;
}

struct Report {
    int stack = 0;
    bool invalid = false, control = false, tags = false;
};

/// Makes one call. A function of its own, whose frame ends where the painted part begins.
[[gnu::noinline]] void observe(const Work &work, Report &report) {
    unsigned char *const here = static_cast<unsigned char *>(__builtin_frame_address(0)) - 512;
#ifndef __SANITIZE_ADDRESS__ // which watches the stack itself, and uses more of it
    std::memset(stack, paint, here - stack);
#endif
    feclearexcept(FE_ALL_EXCEPT);
    const unsigned before = _mm_getcsr();
    const Environment old = environment();
    work.run();
    const Environment now = environment();
    report.invalid |= fetestexcept(FE_INVALID) != 0;
    constexpr unsigned flags = 0x3F, words = 0xFFFF;
    report.control |= ((_mm_getcsr() ^ before) & ~flags) != 0 || ((now.control ^ old.control) & words) != 0;
    report.tags |= (now.tags & words) != words;
#ifndef __SANITIZE_ADDRESS__
    report.stack = std::max(report.stack, used(here));
#endif
}

/// Members that may raise the flag on some pixels, and why.
bool mayBeInvalid(const std::string &name) {
    // The squares of two channels wrap, and the root of a negative sum is formed before it is passed over.
    return name == "noxiGradientColorToGray_16u_C3C1R norm 2";
}

void *observeAll(void *failed) {
    int deepest = 0;
    for (const Member &member : members()) {
        Report report;
        for (const Case &each : casesOf(member)) {
            noxSetNumThreads(each.threads);
            const Work work = workOf(member, each);
            observe(work, report);
            noxSetNumThreads(1);
        }
        const bool invalid = report.invalid && !mayBeInvalid(member.name);
        if (report.stack > mostStack)
            std::printf("%s uses %d bytes of stack\n", member.name.c_str(), report.stack);
        if (invalid)
            std::printf("%s raises the flag of invalid operations\n", member.name.c_str());
        if (report.control)
            std::printf("%s changes the floating-point control\n", member.name.c_str());
        if (report.tags)
            std::printf("%s leaves the x87 registers in use\n", member.name.c_str());
        if (report.stack > mostStack || invalid || report.control || report.tags)
            ++*static_cast<int *>(failed);
        deepest = std::max(deepest, report.stack);
    }
    std::printf("footprint: %d members, at most %d bytes of stack\n", int(members().size()), deepest);
    return nullptr;
}

} // namespace

void keepBytes(const void *bytes, std::size_t) { __asm__ volatile("" : : "r"(bytes) : "memory"); }

} // namespace bench

int main() {
    bench::stack = static_cast<unsigned char *>(
        mmap(nullptr, bench::stackBytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_STACK, -1, 0));
    if (bench::stack == MAP_FAILED)
        return 2;
    int failed = 0;
    pthread_attr_t attributes;
    pthread_t thread;
    if (pthread_attr_init(&attributes) != 0 ||
        pthread_attr_setstack(&attributes, bench::stack, bench::stackBytes) != 0 ||
        pthread_create(&thread, &attributes, bench::observeAll, &failed) != 0 || pthread_join(thread, nullptr) != 0)
        return 2;
    return failed == 0 ? 0 : 1;
}
