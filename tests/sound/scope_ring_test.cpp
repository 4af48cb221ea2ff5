#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "sound/scope_ring.h"

namespace sondrel {
namespace {

TEST(ScopeRingTest, TheNewestSamplesComeOutOldestFirst) {
    ScopeRing<16> ring;
    std::vector<int16_t> out(4);
    EXPECT_FALSE(ring.ReadNewest(out.data(), 4));  // nothing written yet
    const int16_t first[] = {1, 2, 3};
    ring.Write(first, 3);
    EXPECT_FALSE(ring.ReadNewest(out.data(), 4));
    ASSERT_TRUE(ring.ReadNewest(out.data(), 3));
    EXPECT_EQ(std::vector<int16_t>(out.begin(), out.begin() + 3), (std::vector<int16_t>{1, 2, 3}));
    std::vector<int16_t> many(21);
    for (int i = 0; i < 21; ++i) many[i] = static_cast<int16_t>(100 + i);
    ring.Write(many.data(), many.size());  // round the ring and more
    ASSERT_TRUE(ring.ReadNewest(out.data(), 4));
    EXPECT_EQ(out, (std::vector<int16_t>{117, 118, 119, 120}));
    EXPECT_FALSE(ring.ReadNewest(out.data(), 9));  // more than half the ring is never asked for
    EXPECT_EQ(ring.Written(), 24u);
}

// The audio thread writes ramps that each count up from their own start; a
// copy the reader gets must be one unbroken stretch of them.
TEST(ScopeRingTest, ACopyTakenWhileTheWriterRunsIsWholeOrRefused) {
    ScopeRing<256> ring;
    std::atomic<bool> stop{false};
    std::thread writer([&] {
        int16_t next = 0;
        std::vector<int16_t> block(37);
        while (!stop.load()) {
            for (auto& sample : block) sample = next++;
            ring.Write(block.data(), block.size());
            if (next % 3 == 0) std::this_thread::yield();  // now and then as slow as the reader, now and then faster
        }
    });
    while (ring.Written() < ScopeRing<256>::kCapacity) std::this_thread::yield();
    int whole = 0;
    std::vector<int16_t> out(128);
    for (int attempt = 0; attempt < 50000; ++attempt) {
        if (!ring.ReadNewest(out.data(), out.size())) continue;
        ++whole;
        for (size_t i = 1; i < out.size(); ++i)
            ASSERT_EQ(static_cast<int16_t>(out[i - 1] + 1), out[i]) << "a torn copy at " << i;
    }
    stop = true;
    writer.join();
    EXPECT_GT(whole, 0);
}

}  // namespace
}  // namespace sondrel
