#include <utility>

#include "bench.h"

namespace bench {

namespace {

std::vector<Member> &list() {
    static std::vector<Member> members;
    return members;
}

} // namespace

void add(Member member) { list().push_back(std::move(member)); }

const std::vector<Member> &members() { return list(); }

} // namespace bench
