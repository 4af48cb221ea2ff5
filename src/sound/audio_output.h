#pragma once
// The audio thread: it ticks the song player and the editor's note player at
// the module's tick rate, lets both chips render each tick, and copies the
// mixed samples into the looping sound buffer just behind the play cursor.
// The audio mutex serialises it against every main-thread access to the
// players, their chips and the module while a song may be playing.

#include <atomic>
#include <cstdint>
#include "sound/audio_mutex.h"
#include <thread>

#include "sound/sound_buffer.h"
#include "sound/tick_mixer.h"

namespace sondrel {

class SongPlayer;
class NotePlayer;

// The free space ahead of the write cursor must stay strictly between this
// and the buffer size minus this before anything is written.
constexpr uint32_t kAudioWriteGap = 3072;
// One tick is handed out in pieces of at most this many bytes ...
constexpr uint32_t kAudioPieceBytes = 1024;
// ... and at most this many pieces per wake-up.
constexpr int kAudioPiecesPerPass = 4;

class AudioOutput {
public:
    AudioOutput(SoundBuffer& buffer, SongPlayer& song, NotePlayer& notes, AudioMutex& audioMutex);
    ~AudioOutput();
    AudioOutput(const AudioOutput&) = delete;
    AudioOutput& operator=(const AudioOutput&) = delete;

    // Opens the sound device; when it fails the program runs silently and
    // StartThread does nothing.
    bool Create();
    // Clears the buffer, starts it looping and starts the thread (only when ready).
    void StartThread();
    // Ends the thread after its current pass, then releases the device.
    void StopThread();

    // The device's play position, 0 when it can't tell.
    uint32_t PlayCursor();
    void Lock() { mutex_.lock(); }
    void Unlock() { mutex_.unlock(); }
    // The volume preference 0..100; read by the thread on every tick it renders.
    void SetVolume(int preference);

    bool Ready() const { return ready_; }
    bool Running() const { return thread_.joinable(); }

    // One wake-up of the thread: with the audio mutex held, up to four pieces.
    void Pass();
    // Only meaningful while the thread is stopped or under Lock().
    uint32_t WriteCursor() const { return writeCursor_; }
    uint32_t PendingBytes() const { return pendingBytes_; }

private:
    void Run();

    SoundBuffer& buffer_;
    TickMixer mixer_;
    AudioMutex& mutex_;
    bool ready_ = false;
    uint32_t writeCursor_ = 0;
    uint32_t pendingBytes_ = 0;
    std::atomic<uint8_t> volume_{50};
    std::atomic<bool> exitRequested_{false};
    std::thread thread_;
};

}  // namespace sondrel
