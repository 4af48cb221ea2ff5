#include <SDL.h>
#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <thread>

#include "model/exception.h"
#include "platform/fault_trap.h"
#include "platform/midi_input.h"
#include "platform/sdl_sound_buffer.h"
#include "platform/system.h"
#include "test_support.h"

namespace sondrel {
namespace {

TEST(FaultTrap, FaultsInsideBecomeExceptionsAndTheTrapCanBeUsedAgain) {
    EXPECT_THROW(RunTranslatingFaults([] { std::raise(SIGSEGV); }), Exception);
    try {
        RunTranslatingFaults([] { std::raise(SIGFPE); });
        FAIL() << "no exception";
    } catch (const Exception& error) {
        EXPECT_NE(std::string(error.what()).find("SIGFPE"), std::string::npos) << error.what();
    }
    // Nested traps: the inner one catches, the outer one carries on.
    bool innerCaught = false;
    RunTranslatingFaults([&] {
        try {
            RunTranslatingFaults([] { std::raise(SIGBUS); });
        } catch (const Exception&) {
            innerCaught = true;
        }
    });
    EXPECT_TRUE(innerCaught);
    // Exceptions of the guarded code pass through unchanged.
    EXPECT_THROW(RunTranslatingFaults([] { throw ParseException("x"); }), ParseException);
}

TEST(FaultTrap, AFaultOutsideTheTrapStillKillsTheProcess) {
    RunTranslatingFaults([] {});  // the handlers are installed now
    EXPECT_EXIT(std::raise(SIGILL), ::testing::KilledBySignal(SIGILL), "");
}

// Without speakers the buffer plays into the dummy driver, whose cursor still
// moves at 176400 bytes a second, whether the dummy was asked for or is the
// fallback for a driver that does not open.
TEST(SdlSoundBuffer, WithoutASoundCardTheCursorStillRunsInRealTime) {
    for (const char* asked : {"dummy", "no-such-driver"}) {
        SCOPED_TRACE(asked);
        test::ScopedEnv driver("SDL_AUDIODRIVER", asked);
        SdlSoundBuffer buffer;
        ASSERT_TRUE(buffer.Create()) << SDL_GetError();
        EXPECT_TRUE(buffer.IsSilent());
        SoundBufferRegions regions;
        ASSERT_TRUE(buffer.Lock(0, 1024, regions));
        buffer.Unlock(regions);
        ASSERT_TRUE(buffer.Play());

        // Sum the cursor's steps (it wraps every 93 ms) over half a second.
        const auto start = std::chrono::steady_clock::now();
        uint32_t last = 0, cursor = 0;
        uint64_t travelled = 0;
        while (std::chrono::steady_clock::now() - start < std::chrono::milliseconds(500)) {
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
            ASSERT_TRUE(buffer.GetPlayCursor(cursor));
            EXPECT_EQ(cursor % 4, 0u);
            travelled += (cursor + kSoundBufferBytes - last) % kSoundBufferBytes;
            last = cursor;
        }
        const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        EXPECT_NEAR(static_cast<double>(travelled) / seconds, 176400.0, 176400.0 * 0.05);
        buffer.Release();
    }
}

TEST(Devices, AbsentDevicesFailQuietly) {
    SdlSoundBuffer buffer;  // never created
    uint32_t cursor = 0;
    EXPECT_FALSE(buffer.GetPlayCursor(cursor));
    SoundBufferRegions regions;
    EXPECT_FALSE(buffer.Lock(0, 1024, regions));
    EXPECT_FALSE(buffer.Play());

    MidiInputPort port;
    const auto ports = static_cast<unsigned>(MidiInputPort::PortNames().size());
    EXPECT_FALSE(port.Open(ports + 7, [](const uint8_t*, std::size_t) {}));
    EXPECT_FALSE(port.IsOpen());
}

// The disk driver plays into a file in real time, so the cursor moves as on a sound card.
TEST(SdlSoundBuffer, TheDeviceLoopsThroughTheBufferAndWritesWhatWasLocked) {
    test::ScratchDir dir;
    test::ScopedEnv driver("SDL_AUDIODRIVER", "disk");
    test::ScopedEnv file("SDL_DISKAUDIOFILE", (dir / "out.raw").string());
    SdlSoundBuffer buffer;
    if (!buffer.Create()) GTEST_SKIP() << "SDL has no disk audio driver: " << SDL_GetError();

    // A wrapping lock gives the end and then the start of the buffer.
    SoundBufferRegions regions;
    ASSERT_TRUE(buffer.Lock(kSoundBufferBytes - 100, 300, regions));
    EXPECT_EQ(regions.firstBytes, 100u);
    EXPECT_EQ(regions.secondBytes, 200u);
    EXPECT_EQ(regions.second + 16384, regions.first + 100);
    buffer.Unlock(regions);

    // Fill the whole buffer with one sample value, play, and watch the cursor go round.
    ASSERT_TRUE(buffer.Lock(0, kSoundBufferBytes, regions));
    for (uint32_t i = 0; i < regions.firstBytes; ++i) regions.first[i] = i % 2 ? 0x12 : 0x34;
    buffer.Unlock(regions);
    ASSERT_TRUE(buffer.Play());
    uint32_t cursor = 0, moves = 0, last = 0;
    for (int wait = 0; wait < 300 && moves < 3; ++wait) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        ASSERT_TRUE(buffer.GetPlayCursor(cursor));
        EXPECT_LT(cursor, kSoundBufferBytes);
        if (cursor != last) ++moves;
        last = cursor;
    }
    EXPECT_GE(moves, 3u);
    buffer.Release();

    // A paused device plays silence, so the file may start with some before Play.
    const auto raw = test::ReadBytes(dir / "out.raw");
    size_t start = 0;
    while (start < raw.size() && raw[start] == 0) ++start;
    EXPECT_EQ(start % 4, 0u) << "the sound starts inside a stereo frame";
    ASSERT_GE(raw.size(), start + 2048);
    for (size_t i = 0; i < 2048; ++i) ASSERT_EQ(raw[start + i], i % 2 ? 0x12 : 0x34) << i;
}

TEST(MessageBox, HeadlessMessagesGoToStandardError) {
    test::ScopedEnv video("SDL_VIDEODRIVER", "offscreen");
    ::testing::internal::CaptureStderr();
    ShowMessageBox("Couldn't load module.");
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "Couldn't load module.\n");
}

}  // namespace
}  // namespace sondrel
