#include "app/midi/midi_in.h"

namespace sondrel {

MidiIn::MidiIn(std::unique_ptr<MidiDevice> device) : device_(std::move(device)) {}

MidiIn::~MidiIn() { Close(); }

void MidiIn::Open(uint8_t deviceId) {
    Close();
    if (!device_) return;
    {
        std::lock_guard<std::mutex> lock(queueMutex_);
        heldNotes_.reset();
        head_ = 0;
        count_ = 0;
    }
    if (!device_->Open(deviceId, [this](const uint8_t* bytes, std::size_t count) { HandleMessage(bytes, count); }))
        return;
    opened_ = true;
}

void MidiIn::Close() {
    if (opened_ && device_) device_->Close();
    opened_ = false;
}

bool MidiIn::Pop(MidiEvent& event) {
    std::lock_guard<std::mutex> lock(queueMutex_);
    if (count_ == 0) return false;
    event = queue_[head_];
    head_ = static_cast<uint8_t>((head_ + 1) % kMidiQueueSize);
    --count_;
    return true;
}

void MidiIn::Clear() {
    std::lock_guard<std::mutex> lock(queueMutex_);
    head_ = 0;
    count_ = 0;
}

void MidiIn::Push(const MidiEvent& event) {
    if (count_ >= kMidiQueueSize) return;  // full: the event is lost
    queue_[(head_ + count_) % kMidiQueueSize] = event;
    ++count_;
}

void MidiIn::HandleMessage(const uint8_t* bytes, std::size_t count) {
    if (count == 0) return;
    uint8_t status = bytes[0];
    const uint8_t note = count > 1 ? bytes[1] & 0x7F : 0;
    const uint8_t velocity = count > 2 ? bytes[2] : 0;
    if (status == 0x90 && velocity == 0) status = 0x80;

    std::lock_guard<std::mutex> lock(queueMutex_);
    if (status == 0x90) {
        if (heldNotes_[note]) return;
        heldNotes_[note] = true;
        Push({kMidiNoteOn, note, velocity});
    } else if (status == 0x80) {
        if (!heldNotes_[note]) return;
        heldNotes_[note] = false;
        Push({kMidiNoteOff, note, velocity});
    }
}

}  // namespace sondrel
