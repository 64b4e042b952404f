// Two threads of a program in the library at once, on different outputs: both get what one alone gets.
#include <atomic>
#include <cstring>
#include <functional>
#include <thread>
#include <vector>

#include "noxcv.h"
#include "support/image.h"
#include "support/masks.h"
#include "support/threads.h"

using test::Image;

namespace {

constexpr NoxiSize size = {640, 420};

/// Calls that go parallel, with outputs and buffers of their own, on inputs that both callers read.
class Calls {
public:
    Calls() : bytes_(size.width, size.height), floats_(size.width, size.height), mask_(size.width, size.height) {
        test::Random random(1);
        test::randomize(bytes_, random);
        test::randomize(floats_, random);
        mask_.generate([&](int, int, int) { return random() % 5 != 0; });
    }

    /// The bytes of all results.
    std::vector<unsigned char> results() const {
        std::vector<unsigned char> all;
        const auto take = [&](const void *data, std::size_t count) {
            const auto *begin = static_cast<const unsigned char *>(data);
            all.insert(all.end(), begin, begin + count);
        };
        Nox64f norm = 0, mean = 0, deviation = 0;
        noxiNorm_L2_32f_C1MR(floats_.data(), floats_.step(), mask_.data(), mask_.step(), size, &norm);
        noxiMean_StdDev_32f_C1R(floats_.data(), floats_.step(), size, &mean, &deviation);
        Nox32f low = 0, high = 0;
        NoxiPoint lowAt = {}, highAt = {};
        noxiMinMaxIndx_32f_C1R(floats_.data(), floats_.step(), size, &low, &high, &lowAt, &highAt);
        take(&norm, sizeof(norm)), take(&mean, sizeof(mean)), take(&deviation, sizeof(deviation));
        take(&low, sizeof(low)), take(&high, sizeof(high)), take(&lowAt, sizeof(lowAt)), take(&highAt, sizeof(highAt));

        int bufferSize = 0;
        std::vector<Nox16s> edges(std::size_t(size.width) * size.height);
        noxiFilterSobelHorizGetBufferSize_8u16s_C1R(size, noxMskSize3x3, &bufferSize);
        std::vector<Nox8u> buffer(std::size_t(bufferSize) + 1);
        noxiFilterSobelHorizBorder_8u16s_C1R(bytes_.data(), bytes_.step(), edges.data(), size.width * 2, size,
                                             noxMskSize3x3, noxBorderReplicate, 0, buffer.data());
        take(edges.data(), edges.size() * sizeof(Nox16s));

        std::vector<Nox16u> distances(std::size_t(size.width) * size.height);
        Nox32s metrics[] = {5, 7, 11};
        noxiDistanceTransform_5x5_8u16u_C1R(mask_.data(), mask_.step(), distances.data(), size.width * 2, size,
                                            metrics);
        take(distances.data(), distances.size() * sizeof(Nox16u));
        return all;
    }

private:
    Image<Nox8u> bytes_;
    Image<Nox32f> floats_;
    Image<Nox8u> mask_;
};

TEST(Callers, TwoAtOnceGetWhatOneGets) {
    const Calls calls;
    for (const int threads : {1, 2, 3}) {
        const test::ThreadCount count(threads);
        const std::vector<unsigned char> expected = calls.results();
        std::atomic<int> wrong = 0;
        const auto caller = [&] {
            for (int i = 0; i < 8; ++i)
                wrong += calls.results() != expected;
        };
        std::thread first(caller), second(caller);
        caller();
        first.join();
        second.join();
        EXPECT_EQ(wrong, 0) << threads;
    }
}

} // namespace
