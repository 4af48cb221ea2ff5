#include "app/dialogs/instrument_editing.h"

#include <mutex>

#include "edit/keys/note_keys.h"
#include "sound/song_player.h"
#include "sound/voice.h"

namespace sondrel {

namespace {

constexpr int kPreviewChannel = 0;
constexpr uint8_t kPreviewVolume = 15;  // as loud as the envelope picture shows it

}  // namespace

InstrumentEditing::InstrumentEditing(EditorContext& context, Requesters& requesters)
    : context_(context),
      editor_(requesters, [this](const Instrument& instrument, int octave, uint16_t scanCode, bool down) {
          Preview(instrument, octave, scanCode, down);
      }) {}

void InstrumentEditing::Run() {
    const EditSettings& settings = context_.view.Settings();
    const auto edited =
        editor_.Run(context_.module.instruments, settings.currentInstrument % kInstruments, settings.octave);
    if (!edited || *edited == context_.module.instruments) return;
    // The playing song's voices read the instruments on the audio thread.
    std::lock_guard<AudioMutex> lock(context_.audioMutex);
    context_.undo.BeginInstruments();
    context_.module.instruments = *edited;
    context_.undo.EndInstruments();
    context_.view.Invalidate(kRedrawInstruments | kRedrawTitle | kRedrawMenus);
}

void InstrumentEditing::Preview(const Instrument& instrument, int octave, uint16_t scanCode, bool down) {
    std::lock_guard<AudioMutex> lock(context_.audioMutex);
    if (!down) {
        // Only the key that sounds stops it.
        if (soundingKey_ != scanCode) return;
        context_.notes.StopVoice(kPreviewChannel);
        soundingKey_.reset();
        return;
    }
    const auto note = ToneNoteOf(scanCode, 0, octave);
    if (!note) return;
    sounding_ = instrument;
    context_.notes.StartVoice(kPreviewChannel, sounding_, kPreviewVolume, *note, 0, kPlayForever);
    soundingKey_ = scanCode;
}

}  // namespace sondrel
