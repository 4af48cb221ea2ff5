#pragma once
// What one channel rendered, handed from the audio thread to the main thread
// without a lock and without allocating: the audio thread appends samples,
// overwriting the oldest, and the main thread copies the newest ones once a
// frame. A copy that the writer overtook while it was made is refused
// rather than shown torn.

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>

namespace sondrel {

template <std::size_t Capacity>
class ScopeRing {
    static_assert((Capacity & (Capacity - 1)) == 0, "the capacity is a power of two");

public:
    static constexpr std::size_t kCapacity = Capacity;

    // The audio thread's side.
    void Write(const int16_t* samples, std::size_t count) {
        uint64_t end = written_.load(std::memory_order_relaxed);
        // Told before the slots change: a reader that sees a changed slot
        // (each store releases, each load acquires) sees this too.
        reserved_.store(end + count, std::memory_order_relaxed);
        for (std::size_t i = 0; i < count; ++i, ++end)
            slots_[end & (Capacity - 1)].store(samples[i], std::memory_order_release);
        written_.store(end, std::memory_order_release);
    }

    // The main thread's side: the newest count samples (at most half the
    // capacity) into out, oldest first. False when fewer were ever written
    // or the writer got round to them while they were copied.
    bool ReadNewest(int16_t* out, std::size_t count) const {
        if (count > Capacity / 2) return false;
        const uint64_t end = written_.load(std::memory_order_acquire);
        if (end < count) return false;
        const uint64_t start = end - count;
        for (std::size_t i = 0; i < count; ++i)
            out[i] = slots_[(start + i) & (Capacity - 1)].load(std::memory_order_acquire);
        // The slots copied are intact if the writer has not set out to come round to the first of them.
        return reserved_.load(std::memory_order_relaxed) - start <= Capacity;
    }

    uint64_t Written() const { return written_.load(std::memory_order_acquire); }

private:
    std::array<std::atomic<int16_t>, Capacity> slots_{};
    std::atomic<uint64_t> written_{0};
    std::atomic<uint64_t> reserved_{0};
};

}  // namespace sondrel
