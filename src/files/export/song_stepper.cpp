#include "files/export/song_stepper.h"

#include "model/notes.h"

namespace sondrel {

SongStepper::SongStepper(Module& module) : module_(module), player_(std::make_unique<SongPlayer>()) { Restart(); }

void SongStepper::Restart() {
    player_->Attach(module_);
    player_->Start(0, 0, false);
}

void SongStepper::Step() { player_->Tick(); }

ChannelFrame SongStepper::Channel(int channel) const {
    const Voice& voice = player_->GetVoice(channel);
    ChannelFrame frame;
    frame.triggered = voice.started != 0;
    frame.note = voice.note;
    frame.instrument = voice.instrumentIndex;
    // "Nul" sounds a constant level, not a pitch, so it carries no note.
    frame.notePresent = frame.triggered && voice.active && voice.note != kNoteNull;
    frame.sounding = voice.active && voice.outputVolume > 0;
    frame.level = voice.active ? voice.outputVolume : 0;
    return frame;
}

uint8_t SongStepper::MidiNote(int channel) const {
    // Tone notes are numbered as MIDI notes; the 2x divider drops every tone an octave.
    // The note nearest to what the effects make of it (arpeggio steps, slides).
    const uint8_t note = player_->GetVoice(channel).SoundingNote();
    return module_.frequencyDivider == kDivider2x ? static_cast<uint8_t>(note - 12) : note;
}

}  // namespace sondrel
