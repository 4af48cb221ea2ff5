#pragma once
// The audio mutex: held by the audio thread for each pass and by the main
// thread around everything the playing song can see. It remembers which
// thread holds it, so that after a fault abandoned a locked section the
// crash path can hand it back instead of leaving the audio thread waiting.

#include <atomic>
#include <mutex>
#include <thread>

namespace sondrel {

class AudioMutex {
public:
    void lock() {
        mutex_.lock();
        owner_.store(std::this_thread::get_id());
    }
    void unlock() {
        owner_.store(std::thread::id{});
        mutex_.unlock();
    }
    bool HeldByThisThread() const { return owner_.load() == std::this_thread::get_id(); }

private:
    std::mutex mutex_;
    std::atomic<std::thread::id> owner_{};
};

}  // namespace sondrel
