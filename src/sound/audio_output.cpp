#include "sound/audio_output.h"

#include <algorithm>
#include <chrono>
#include <cstring>

namespace sondrel {

AudioOutput::AudioOutput(SoundBuffer& buffer, SongPlayer& song, NotePlayer& notes, AudioMutex& audioMutex)
    : buffer_(buffer), mixer_(song, notes), mutex_(audioMutex) {}

AudioOutput::~AudioOutput() { StopThread(); }

bool AudioOutput::Create() {
    ready_ = buffer_.Create();
    return ready_;
}

void AudioOutput::SetVolume(int preference) {
    volume_.store(static_cast<uint8_t>(std::clamp(preference, 0, 100)));
}

uint32_t AudioOutput::PlayCursor() {
    uint32_t position = 0;
    if (!buffer_.GetPlayCursor(position)) return 0;
    return position % kSoundBufferBytes;
}

void AudioOutput::StartThread() {
    if (!ready_ || Running()) return;
    SoundBufferRegions whole;
    if (buffer_.Lock(0, kSoundBufferBytes, whole)) {
        if (whole.first) std::memset(whole.first, 0, whole.firstBytes);
        if (whole.second) std::memset(whole.second, 0, whole.secondBytes);
        buffer_.Unlock(whole);
    }
    buffer_.Play();
    writeCursor_ = PlayCursor();
    pendingBytes_ = 0;
    exitRequested_ = false;
    thread_ = std::thread([this] { Run(); });
}

void AudioOutput::StopThread() {
    if (thread_.joinable()) {
        exitRequested_ = true;
        thread_.join();
    }
    if (ready_) {
        ready_ = false;
        buffer_.Release();
    }
}

void AudioOutput::Run() {
    for (;;) {
        Pass();
        if (exitRequested_) return;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

void AudioOutput::Pass() {
    std::lock_guard<AudioMutex> lock(mutex_);
    for (int piece = 0; piece < kAudioPiecesPerPass; ++piece) {
        if (pendingBytes_ == 0) pendingBytes_ += mixer_.RenderTick(MasterFromVolume(volume_.load()));

        // Unwrapped, the play cursor lies in [W, W + size): P - W is the free space.
        uint32_t play = PlayCursor();
        const uint32_t write = writeCursor_;
        if (play < write) play += kSoundBufferBytes;
        if (play <= write + kAudioWriteGap || play + kAudioWriteGap >= write + kSoundBufferBytes) break;

        const uint32_t bytes = std::min(pendingBytes_, kAudioPieceBytes);
        SoundBufferRegions regions;
        if (!buffer_.Lock(write, bytes, regions) || !regions.first) {
            // A short gap in the sound, but both chips stay in step.
            mixer_.Discard(bytes);
        } else {
            mixer_.Take(regions.first, regions.firstBytes);
            if (regions.second) mixer_.Take(regions.second, regions.secondBytes);
            writeCursor_ = (write + bytes) % kSoundBufferBytes;
            buffer_.Unlock(regions);
        }
        pendingBytes_ -= bytes;
    }
}

}  // namespace sondrel
