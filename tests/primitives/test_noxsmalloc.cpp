#include <cstdint>
#include <cstring>

#include "noxcv.h"
#include "support/allocator.h"
#include "support/image.h"

namespace {

template <class T>
void expectAlignedBlock(T *(*allocate)(int)) {
    for (const int length : {1, 2, 31, 32, 33, 1000}) {
        const test::CountedAllocator counted;
        T *block = allocate(length);
        ASSERT_NE(block, nullptr);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % 32, 0U);
        EXPECT_EQ(test::CountedAllocator::lastSize(), length * sizeof(T) + 32 + sizeof(void *));
        std::memset(block, 1, length * sizeof(T));
        EXPECT_EQ(test::CountedAllocator::live(), 1);
        noxsFree(block);
        EXPECT_EQ(test::CountedAllocator::live(), 0);
    }
    const test::CountedAllocator counted;
    EXPECT_EQ(allocate(0), nullptr);
    EXPECT_EQ(allocate(-4), nullptr);
    EXPECT_EQ(test::CountedAllocator::allocations(), 0);
}

TEST(Malloc, BlocksAreAlignedAndGoThroughTheEntries) {
    expectAlignedBlock(noxsMalloc_8u);
    expectAlignedBlock(noxsMalloc_8s);
    expectAlignedBlock(noxsMalloc_16u);
    expectAlignedBlock(noxsMalloc_32s);
    expectAlignedBlock(noxsMalloc_32f);
    expectAlignedBlock(noxsMalloc_64f);
}

TEST(Malloc, FailureOfTheEntryGivesNull) {
    const test::CountedAllocator counted(1);
    EXPECT_EQ(noxsMalloc_32f(5), nullptr);
    EXPECT_EQ(test::CountedAllocator::live(), 0);
}

TEST(Malloc, SizeBeyondTheAddressSpaceGivesNull) {
    if (sizeof(void *) == 4) {
        const test::CountedAllocator counted;
        // The last one's product fits, and its sum with what a block needs besides does not.
        for (const int length : {0x7fffffff, 0x20000000, 0x1fffffff})
            EXPECT_EQ(noxsMalloc_64f(length), nullptr) << length;
        EXPECT_EQ(test::CountedAllocator::allocations(), 0);
    }
}

unsigned char arena[256];
int arenaOffset = 0;
const void *released = nullptr;

void *arenaMalloc(std::size_t) { return arena + arenaOffset; }
void arenaFree(void *block) { released = block; }

TEST(Malloc, EveryRawPointerComesBack) {
    auto *const before = nox_malloc;
    auto *const beforeFree = nox_free;
    nox_malloc = arenaMalloc;
    nox_free = arenaFree;
    for (arenaOffset = 0; arenaOffset < 64; ++arenaOffset) {
        Nox8u *block = noxsMalloc_8u(40);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % 32, 0U);
        EXPECT_GE(block - (arena + arenaOffset), int(sizeof(void *)));
        EXPECT_LE(block - (arena + arenaOffset), int(31 + sizeof(void *)));
        noxsFree(block);
        EXPECT_EQ(released, arena + arenaOffset);
    }
    nox_malloc = before;
    nox_free = beforeFree;
    noxsFree(nullptr);
}

TEST(Malloc, VersionsOfTheEntries) {
    EXPECT_EQ(nox_version, 1);
    EXPECT_EQ(nox_min_version, 0);
    EXPECT_NE(nox_calloc, nullptr);
    EXPECT_NE(nox_realloc, nullptr);
}

} // namespace
