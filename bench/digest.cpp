// Prints a hash of what each member computes on fixed inputs, a line a member. Builds, processor tiers and word sizes
// give the same lines; a committed list shows when a number has changed.
#include <algorithm>
#include <cstdint>
#include <cstdio>

#include "fixedinputs.h"
#include "noxcore.h"

namespace bench {

namespace {

/// A hash that takes in bytes (Fowler, Noll and Vo, 64 bits, variant 1a).
class Hash {
public:
    void add(const void *bytes, std::size_t count) {
        const auto *byte = static_cast<const unsigned char *>(bytes);
        for (std::size_t i = 0; i < count; ++i)
            value_ = (value_ ^ byte[i]) * 0x100000001B3U;
    }
    std::uint64_t value() const { return value_; }

private:
    std::uint64_t value_ = 0xCBF29CE484222325U;
};

Hash hash;

/// The hash of one member over all its calls.
std::uint64_t digest(const Member &member) {
    hash = {};
    for (const Case &each : casesOf(member)) {
        noxSetNumThreads(each.threads);
        const Work work = workOf(member, each);
        work.run();
        noxSetNumThreads(1);
        visitImages([](const void *memory, std::size_t bytes) { hash.add(memory, bytes); });
    }
    return hash.value();
}

} // namespace

void keepBytes(const void *bytes, std::size_t count) { hash.add(bytes, count); }

} // namespace bench

int main() {
    std::vector<std::string> lines;
    for (const bench::Member &member : bench::members()) {
        char line[32];
        std::snprintf(line, sizeof(line), "%016llx ", static_cast<unsigned long long>(bench::digest(member)));
        lines.push_back(line + member.name);
    }
    std::sort(lines.begin(), lines.end(), [](const auto &a, const auto &b) { return a.substr(17) < b.substr(17); });
    for (const std::string &line : lines)
        std::puts(line.c_str());
    return 0;
}
