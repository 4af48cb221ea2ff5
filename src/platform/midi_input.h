#pragma once
// A MIDI input port (ALSA through RtMidi). Short messages arrive on the
// library's own thread and are handed to the callback as raw bytes.

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace sondrel {

class MidiInputPort {
public:
    using Callback = std::function<void(const uint8_t* bytes, std::size_t count)>;

    MidiInputPort();
    ~MidiInputPort();
    MidiInputPort(const MidiInputPort&) = delete;
    MidiInputPort& operator=(const MidiInputPort&) = delete;

    // Opens input port number `port`; false (and closed) when there is no
    // MIDI system or no such port. The callback runs on the MIDI thread.
    bool Open(unsigned port, Callback callback);
    void Close();
    bool IsOpen() const;

    // The names of the input ports, by number.
    static std::vector<std::string> PortNames();

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace sondrel
