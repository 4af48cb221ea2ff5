#include "platform/midi_input.h"

#include <rtmidi/RtMidi.h>

namespace sondrel {

namespace {

// RtMidi reports problems through this instead of printing or throwing.
void IgnoreError(RtMidiError::Type, const std::string&, void*) {}

std::unique_ptr<RtMidiIn> MakeInput() {
    try {
        auto input = std::make_unique<RtMidiIn>(RtMidi::UNSPECIFIED, "Sondrel");
        input->setErrorCallback(&IgnoreError, nullptr);
        return input;
    } catch (const RtMidiError&) {
        return nullptr;
    }
}

}  // namespace

struct MidiInputPort::Impl {
    std::unique_ptr<RtMidiIn> input;
    Callback callback;

    static void OnMessage(double, std::vector<unsigned char>* message, void* self) {
        auto& impl = *static_cast<Impl*>(self);
        if (message && !message->empty() && impl.callback) impl.callback(message->data(), message->size());
    }
};

MidiInputPort::MidiInputPort() : impl_(std::make_unique<Impl>()) {}

MidiInputPort::~MidiInputPort() { Close(); }

bool MidiInputPort::Open(unsigned port, Callback callback) {
    Close();
    impl_->input = MakeInput();
    if (!impl_->input) return false;
    try {
        if (port >= impl_->input->getPortCount()) {
            impl_->input.reset();
            return false;
        }
        impl_->callback = std::move(callback);
        impl_->input->setCallback(&Impl::OnMessage, impl_.get());
        impl_->input->openPort(port, "Sondrel MIDI in");
        if (!impl_->input->isPortOpen()) {
            Close();
            return false;
        }
    } catch (const RtMidiError&) {
        Close();
        return false;
    }
    return true;
}

void MidiInputPort::Close() {
    if (impl_->input) {
        try {
            impl_->input->closePort();
            impl_->input->cancelCallback();
        } catch (const RtMidiError&) {
        }
        impl_->input.reset();
    }
    impl_->callback = nullptr;
}

bool MidiInputPort::IsOpen() const { return impl_->input && impl_->input->isPortOpen(); }

std::vector<std::string> MidiInputPort::PortNames() {
    std::vector<std::string> names;
    auto input = MakeInput();
    if (!input) return names;
    try {
        const unsigned count = input->getPortCount();
        for (unsigned port = 0; port < count; ++port) names.push_back(input->getPortName(port));
    } catch (const RtMidiError&) {
    }
    return names;
}

}  // namespace sondrel
