#include "sound/audio_output.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

#include "sound/song_player.h"

namespace sondrel {
namespace {

constexpr uint32_t kNtscTickBytes = 735 * 4;
using Piece = std::pair<uint32_t, uint32_t>;

// A sound buffer whose play cursor the test moves by hand.
class FakeSoundBuffer : public SoundBuffer {
public:
    bool Create() override { return ++creates, createSucceeds; }
    void Release() override { ++releases; }
    bool Play() override { return playing = true; }
    bool GetPlayCursor(uint32_t& position) override { return seenCursor = position = cursor.load(), true; }
    bool Lock(uint32_t offset, uint32_t bytes, SoundBufferRegions& regions) override {
        std::lock_guard<std::mutex> lock(logMutex);
        // The distance rule, seen from the device: what is written lies in the
        // played part, more than the gap ahead of the play cursor.
        const uint32_t free = (seenCursor + kSoundBufferBytes - offset) % kSoundBufferBytes;
        if (bytes < kSoundBufferBytes && (free <= kAudioWriteGap || free >= kSoundBufferBytes - kAudioWriteGap))
            ++tooClose;
        if (bytes < kSoundBufferBytes) pieces.push_back({offset, bytes});
        if (failLocks) return false;
        regions = SplitRegions(data.data(), kSoundBufferBytes, offset, bytes);
        return true;
    }
    void Unlock(const SoundBufferRegions&) override {}

    std::vector<Piece> Pieces() {
        std::lock_guard<std::mutex> lock(logMutex);
        return pieces;
    }
    uint32_t TotalWritten() {
        uint32_t total = 0;
        for (const auto& piece : Pieces()) total += piece.second;
        return total;
    }

    bool createSucceeds = true;
    int creates = 0;
    int releases = 0;
    bool playing = false;
    std::atomic<uint32_t> cursor{0};
    uint32_t seenCursor = 0;  // what the writer last read, as the device's lock saw it
    std::atomic<bool> failLocks{false};
    std::atomic<int> tooClose{0};
    std::array<uint8_t, kSoundBufferBytes> data{};
    std::mutex logMutex;
    std::vector<Piece> pieces;
};

// A song with a tone on channel 0 and a note-player voice on channel 1, so
// that both chips make sound.
struct Players {
    explicit Players(uint8_t songNote = 57) {
        module = std::make_unique<Module>();
        module->NewModule({});
        PatternLine& line = module->patterns[0].lines[0];
        line.note[0] = songNote;
        line.volume[0] = 15;
        song.Attach(*module);
        notes.Init(module->Settings());
        song.Start(0, 0, false);
        notes.StartVoice(1, module->instruments[0], 12, 69, 0, kPlayForever);
    }
    std::unique_ptr<Module> module;
    SongPlayer song;
    NotePlayer notes;
};

// The samples the audio thread should produce: the same players, ticked and
// mixed directly.
std::vector<uint8_t> ReferenceStream(uint32_t bytes, int volume) {
    Players reference;
    TickMixer mixer(reference.song, reference.notes);
    std::vector<uint8_t> stream;
    while (stream.size() < bytes) {
        const uint32_t tick = mixer.RenderTick(MasterFromVolume(volume));
        std::vector<uint8_t> samples(tick);
        mixer.Take(samples.data(), tick);
        stream.insert(stream.end(), samples.begin(), samples.end());
    }
    stream.resize(bytes);
    return stream;
}

struct AudioOutputTest : ::testing::Test {
    AudioOutputTest() : output(buffer, players.song, players.notes, mutex) { output.Create(); }

    void ExpectChipsInStep() {
        EXPECT_EQ(players.song.Chip().Fill(), players.notes.Chip().Fill());
        EXPECT_EQ(players.song.Chip().ReadPos(), players.notes.Chip().ReadPos());
    }

    FakeSoundBuffer buffer;
    Players players;
    AudioMutex mutex;
    AudioOutput output;
};

TEST_F(AudioOutputTest, WritesOnlyWhenTheFreeSpaceLiesStrictlyInsideTheGaps) {
    // Play and write cursor together: no free space, one tick rendered and kept.
    output.Pass();
    EXPECT_TRUE(buffer.Pieces().empty());
    EXPECT_EQ(output.PendingBytes(), kNtscTickBytes);

    buffer.cursor = kAudioWriteGap;  // exactly the gap: still nothing
    output.Pass();
    EXPECT_TRUE(buffer.Pieces().empty());

    // The rule holds before every piece: one piece, and the gap has closed again.
    buffer.cursor = kAudioWriteGap + 1;
    output.Pass();
    EXPECT_EQ(buffer.Pieces(), (std::vector<Piece>{{0, 1024}}));
    EXPECT_EQ(output.PendingBytes(), kNtscTickBytes - 1024);

    // The rest of the tick goes out in pieces of at most 1024 bytes, then the
    // next tick begins.
    buffer.cursor = kNtscTickBytes + 1024 + kAudioWriteGap;
    output.Pass();
    EXPECT_EQ(buffer.Pieces(), (std::vector<Piece>{{0, 1024}, {1024, 1024}, {2048, 892}, {2940, 1024}}));
    EXPECT_EQ(output.WriteCursor(), kNtscTickBytes + 1024);
    EXPECT_EQ(output.PendingBytes(), kNtscTickBytes - 1024);
    ExpectChipsInStep();
    EXPECT_EQ(buffer.tooClose, 0);
}

TEST_F(AudioOutputTest, AtMostFourPiecesPerPassAndTheStreamIsTheMixedTicks) {
    output.SetVolume(80);
    buffer.cursor = kSoundBufferBytes - kAudioWriteGap - 1;  // the most free space allowed
    output.Pass();
    EXPECT_EQ(buffer.Pieces().size(), 4u);

    // With the play cursor running ahead, the buffer fills on round the loop.
    for (int pass = 0; pass < 40; ++pass) {
        buffer.cursor = (output.WriteCursor() + kSoundBufferBytes - kAudioWriteGap - 1) % kSoundBufferBytes;
        output.Pass();
    }
    EXPECT_EQ(buffer.tooClose, 0);
    ExpectChipsInStep();
    // Everything written so far wrapped round; the last 16384 bytes are in the buffer.
    const uint32_t total = buffer.TotalWritten();
    ASSERT_GT(total, kSoundBufferBytes);
    const std::vector<uint8_t> expected = ReferenceStream(total, 80);
    for (uint32_t i = total - kSoundBufferBytes; i < total; ++i)
        ASSERT_EQ(buffer.data[i % kSoundBufferBytes], expected[i]) << "byte " << i;
}

TEST_F(AudioOutputTest, FallingBehindWaitsUntilThePlayCursorIsWellPastTheWriteCursor) {
    buffer.cursor = 8000;
    output.Pass();
    const uint32_t write = output.WriteCursor();
    ASSERT_EQ(write, 1024 + 1024 + 892 + 1024);  // four pieces
    const size_t before = buffer.Pieces().size();

    // The play cursor has gone round and is just short of the write cursor:
    // fewer than 3072 bytes unplayed, nothing is written.
    // Just past it, and up to the gap past it: still nothing.
    for (uint32_t cursor : {write - 100, write + 100, write + kAudioWriteGap}) {
        buffer.cursor = cursor;
        output.Pass();
    }
    EXPECT_EQ(buffer.Pieces().size(), before);
    EXPECT_EQ(output.WriteCursor(), write);

    buffer.cursor = write + kAudioWriteGap + 1;
    output.Pass();
    EXPECT_GT(buffer.Pieces().size(), before);
    EXPECT_EQ(buffer.Pieces()[before].first, write);
    ExpectChipsInStep();
}

TEST_F(AudioOutputTest, AFailedLockDropsTheBytesButKeepsBothChipsInStep) {
    buffer.data.fill(0xAA);
    buffer.failLocks = true;
    buffer.cursor = 8000;
    output.Pass();
    EXPECT_EQ(output.WriteCursor(), 0u);
    EXPECT_EQ(output.PendingBytes(), kNtscTickBytes - 1024);
    for (uint8_t byte : buffer.data) ASSERT_EQ(byte, 0xAA);
    ExpectChipsInStep();

    // Once locks work again the stream goes on where the chips are, not where it stopped.
    buffer.failLocks = false;
    output.Pass();
    const uint32_t dropped = 1024 + 1024 + 892 + 1024;
    ASSERT_EQ(output.WriteCursor(), dropped);
    const std::vector<uint8_t> expected = ReferenceStream(2 * dropped, 50);
    for (uint32_t i = 0; i < dropped; ++i) ASSERT_EQ(buffer.data[i], expected[dropped + i]) << "byte " << i;
}

TEST_F(AudioOutputTest, VolumeZeroRendersSilenceWhileThePlayersAdvance) {
    output.SetVolume(0);
    for (int pass = 0; pass < 30; ++pass) {
        buffer.cursor = (output.WriteCursor() + 8000) % kSoundBufferBytes;
        output.Pass();
    }
    for (uint8_t byte : buffer.data) ASSERT_EQ(byte, 0);
    // 120 pieces are 40 ticks of 6-tick lines.
    EXPECT_GE(players.song.Line(), 5);
    EXPECT_TRUE(players.notes.GetVoice(1).active);
}

TEST_F(AudioOutputTest, NoDeviceMeansNoThread) {
    FakeSoundBuffer absent;
    absent.createSucceeds = false;
    AudioOutput silent(absent, players.song, players.notes, mutex);
    EXPECT_FALSE(silent.Create());
    silent.StartThread();
    EXPECT_FALSE(silent.Running());
    EXPECT_FALSE(absent.playing);
}

TEST_F(AudioOutputTest, TheThreadKeepsItsDistanceFromAMovingPlayCursor) {
    buffer.data.fill(0xAA);
    buffer.cursor = 2000;
    output.StartThread();
    EXPECT_TRUE(buffer.playing);
    // Play about a quarter second in steps of 2048 bytes, as a device does.
    uint32_t played = 2000;
    for (int step = 0; step < 24; ++step) {
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
        played += 2048;
        buffer.cursor = played % kSoundBufferBytes;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    output.StopThread();
    EXPECT_FALSE(output.Running());
    EXPECT_EQ(buffer.releases, 1);
    EXPECT_EQ(buffer.tooClose, 0);
    ExpectChipsInStep();

    // Everything the thread wrote, in order from where it started, is the mixed stream.
    const uint32_t total = buffer.TotalWritten();
    ASSERT_GT(total, 0u);
    const std::vector<uint8_t> expected = ReferenceStream(total, 50);
    const uint32_t first = total > kSoundBufferBytes ? total - kSoundBufferBytes : 0;
    for (uint32_t i = first; i < total; ++i)
        ASSERT_EQ(buffer.data[(2000 + i) % kSoundBufferBytes], expected[i]) << "byte " << i;
}

TEST_F(AudioOutputTest, StoppingMidTickLeavesTheRestInTheRingsAndARestartBeginsAFreshTick) {
    output.StartThread();
    buffer.cursor = 7000;  // room for four pieces, then the gap closes
    while (buffer.Pieces().size() < 4) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
    output.StopThread();
    EXPECT_EQ(output.PendingBytes(), kNtscTickBytes - 1024);
    EXPECT_EQ(players.song.Chip().Fill(), kNtscTickBytes - 1024);
    ExpectChipsInStep();

    // The restart forgets the old tick and renders a new one at once; with
    // the write cursor at the play cursor nothing more happens.
    ASSERT_TRUE(output.Create());
    output.StartThread();
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
    output.StopThread();
    EXPECT_EQ(output.WriteCursor(), 7000u);
    EXPECT_EQ(output.PendingBytes(), kNtscTickBytes);
    EXPECT_EQ(buffer.Pieces().size(), 4u);
    ExpectChipsInStep();
}

}  // namespace
}  // namespace sondrel
