// Fixed inputs for the programs that look at every member: the same pixels in each build, no library function's
// rounding in them.
#pragma once

#include "bench.h"

namespace bench {

/// The kind of pictures: smooth ones with a little texture, or rough ones of all values.
enum class Kind { Smooth, Rough };

/// One call of a member.
struct Case {
    NoxiSize size;
    Kind kind;
    int threads;
};

/// The calls that a member is looked at in: its own sizes or the standard ones, both kinds, one thread and three.
std::vector<Case> casesOf(const Member &member);

/// Sets up a call. Images made here are those that visitImages() shows, until the next call is set up.
Work workOf(const Member &member, const Case &each);

/// visit(memory, bytes) for every image that is alive, in the order of their making.
void visitImages(const std::function<void(const void *, std::size_t)> &visit);

} // namespace bench
