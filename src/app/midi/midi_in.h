#pragma once
// MIDI-in: the device callback keeps the note-on and note-off messages of
// MIDI channel 1, drops repeats of keys it already saw go down, and queues
// them for the main loop, which drains the queue once a frame.

#include <array>
#include <atomic>
#include <bitset>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>

namespace sondrel {

enum MidiEventKind : uint8_t { kMidiNoteOn = 1, kMidiNoteOff = 2 };

struct MidiEvent {
    uint8_t kind = 0;
    uint8_t note = 0;      // 0..127
    uint8_t velocity = 0;
    bool operator==(const MidiEvent&) const = default;
};

constexpr int kMidiQueueSize = 32;

// Where the messages come from: the platform's MIDI input port, or a test's.
class MidiDevice {
public:
    using Callback = std::function<void(const uint8_t* bytes, std::size_t count)>;
    virtual ~MidiDevice() = default;
    // false when the device can't be opened; the callback may run on any thread.
    virtual bool Open(unsigned deviceId, Callback callback) = 0;
    virtual void Close() = 0;
};

class MidiIn {
public:
    explicit MidiIn(std::unique_ptr<MidiDevice> device);
    ~MidiIn();
    MidiIn(const MidiIn&) = delete;
    MidiIn& operator=(const MidiIn&) = delete;

    // Opens the device with the preferences' device number; when that fails
    // MIDI-in simply stays off.
    void Open(uint8_t deviceId);
    void Close();
    bool Opened() const { return opened_; }

    // The oldest queued event; false when the queue is empty.
    bool Pop(MidiEvent& event);
    void Clear();

    // The device callback: one short message, status byte first.
    void HandleMessage(const uint8_t* bytes, std::size_t count);

private:
    void Push(const MidiEvent& event);

    std::unique_ptr<MidiDevice> device_;
    std::atomic<bool> opened_{false};
    std::mutex queueMutex_;
    std::bitset<128> heldNotes_;
    std::array<MidiEvent, kMidiQueueSize> queue_{};
    uint8_t head_ = 0;
    uint8_t count_ = 0;
};

}  // namespace sondrel
