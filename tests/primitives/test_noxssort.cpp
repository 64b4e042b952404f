#include <algorithm>
#include <chrono>
#include <cstdint>
#include <utility>

#include "noxcv.h"
#include "support/vector.h"

using test::Vector;

namespace {

std::vector<std::uint64_t> sortedBits(const Vector<Nox64f> &vector) {
    std::vector<std::uint64_t> bits;
    for (int i = 0; i < vector.length(); ++i)
        bits.push_back(std::bit_cast<std::uint64_t>(Nox64f(vector[i])));
    std::sort(bits.begin(), bits.end());
    return bits;
}

/// Ascending, and the very elements that were there, zeros of both signs included.
void expectSorted(const Vector<Nox64f> &vector) {
    const Vector<Nox64f> before(vector);
    ASSERT_EQ(noxsSortAscend_64f_I(vector.data(), vector.length()), noxStsNoError);
    for (int i = 1; i < vector.length(); ++i)
        ASSERT_LE(vector[i - 1], vector[i]) << i << " of " << vector.length();
    ASSERT_EQ(sortedBits(vector), sortedBits(before));
    ASSERT_TRUE(vector.gapsIntact());
}

TEST(Sort, RandomElementsOfEveryLength) {
    test::Random random(1);
    for (const int length : test::testLengths())
        for (const int range : {1, 2, 3, 10, 1000000})
            for (const int shift : {0, 1, 4}) {
                Vector<Nox64f> vector(length, shift);
                vector.generate([&](int) { return int(random() % range) - range / 2; });
                expectSorted(vector);
            }
}

TEST(Sort, OrderedInputs) {
    for (const int length : {2, 9, 10, 11, 100, 5000}) {
        Vector<Nox64f> vector(length);
        expectSorted(vector.generate([](int i) { return i; }));
        expectSorted(vector.generate([](int i) { return -i; }));
        expectSorted(vector.generate([](int) { return 3; }));
        expectSorted(vector.generate([=](int i) { return std::min(i, length - i); }));
        expectSorted(vector.generate([=](int i) { return std::max(i, length - i); }));
        expectSorted(vector.generate([](int i) { return i % 7; }));
        expectSorted(vector.generate([](int i) { return i % 2 == 0 ? 0.0 : -0.0; }));
    }
}

TEST(Sort, SpecialValues) {
    const double infinity = std::numeric_limits<double>::infinity();
    const double values[] = {infinity, -infinity, 0.0, -0.0, 5e-324, 1.0, -1.7e308};
    test::Random random(2);
    Vector<Nox64f> vector(500);
    expectSorted(vector.generate([&](int) { return values[random() % 7]; }));
}

TEST(Sort, NotANumbersEndTheSortAndLoseNothing) {
    test::Random random(3);
    for (const int length : {2, 9, 10, 33, 1000})
        for (const int share : {1, 2, 5, 50}) {
            Vector<Nox64f> vector(length);
            vector.generate([&](int) {
                return random() % share == 0 ? std::numeric_limits<double>::quiet_NaN() : double(random() % 100);
            });
            const Vector<Nox64f> before(vector);
            ASSERT_EQ(noxsSortAscend_64f_I(vector.data(), length), noxStsNoError);
            ASSERT_EQ(sortedBits(vector), sortedBits(before));
            ASSERT_TRUE(vector.gapsIntact());
        }
}

/// Makes the input that this sort likes least (M. D. McIlroy's adversary, 1999): elements get their value only when a
/// comparison needs it, and always so that pivots turn out small.
class Adversary {
public:
    explicit Adversary(int length) : values_(length, length), items_(length) {
        for (int i = 0; i < length; ++i)
            items_[i] = i;
        for (int lo = 0, hi = length - 1; hi - lo + 1 >= 10;)
            lo = divide(lo, hi);
        for (double &value : values_)
            if (value == length)
                value = solid_++;
    }
    double operator[](int i) const { return values_[i]; }

private:
    bool isGas(int item) const { return values_[item] == double(values_.size()); }

    bool above(int a, int b) {
        if (isGas(a) && isGas(b))
            values_[a == candidate_ ? a : b] = solid_++;
        if (isGas(a))
            candidate_ = a;
        else if (isGas(b))
            candidate_ = b;
        return values_[a] > values_[b];
    }

    void order(int low, int high) {
        if (above(items_[low], items_[high]))
            std::swap(items_[low], items_[high]);
    }

    /// Divides as the sort does and returns where the larger part begins.
    int divide(int lo, int hi) {
        const int middle = lo + (hi - lo + 1) / 2;
        order(lo + 1, lo);
        order(lo, middle);
        order(middle, hi);
        order(lo, middle);
        const int pivot = items_[middle];
        int i = lo + 1, j = hi;
        for (;;) {
            while (i < j && !above(items_[i], pivot))
                ++i;
            while (i < j && above(items_[j], pivot))
                --j;
            if (i >= j)
                return j;
            std::swap(items_[i], items_[j]);
        }
    }

    std::vector<double> values_;
    std::vector<int> items_;
    int solid_ = 0, candidate_ = 0;
};

double secondsToSort(const Vector<Nox64f> &vector) {
    double best = 1e9;
    for (int run = 0; run < 5; ++run) {
        const Vector<Nox64f> copy(vector);
        const auto start = std::chrono::steady_clock::now();
        noxsSortAscend_64f_I(copy.data(), copy.length());
        best = std::min(best, std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    }
    return best;
}

TEST(Sort, AdverseInputIsNotQuadratic) {
    const int length = 30000;
    const Adversary adversary(length);
    test::Random random(4);
    Vector<Nox64f> usual(length), adverse(length);
    usual.generate([&](int) { return random(); });
    adverse.generate([&](int i) { return adversary[i]; });
    // A quadratic sort takes over forty times as long.
    EXPECT_LT(secondsToSort(adverse), 15 * secondsToSort(usual));
    expectSorted(adverse);
}

TEST(Sort, StatusesInOrder) {
    Nox64f elements[] = {2, 1};
    EXPECT_EQ(noxsSortAscend_64f_I(nullptr, 0), noxStsNullPointer);
    EXPECT_EQ(noxsSortAscend_64f_I(elements, 0), noxStsBadSize);
    EXPECT_EQ(noxsSortAscend_64f_I(elements, -1), noxStsBadSize);
    EXPECT_EQ(noxsSortAscend_64f_I(elements, 1), noxStsNoError);
    EXPECT_EQ(elements[0], 2.0);
    EXPECT_EQ(elements[1], 1.0);
}

} // namespace
