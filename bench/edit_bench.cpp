// How fast note entry records its changes and undo takes them back: 10,000
// notes typed one by one into a 256-line pattern through the pattern keys
// (each one single-line undo entry, sounded as typing sounds it), then every
// change the history still holds undone. Counter "ops": notes entered plus
// changes undone, per second.

#include <benchmark/benchmark.h>

#include <memory>
#include <string>

#include "edit/editor_context.h"
#include "edit/keys/note_keys.h"
#include "edit/keys/pattern_editing.h"
#include "sound/song_player.h"

namespace sondrel {
namespace {

class SilentPrompts : public EditPrompts {
public:
    void ShowMessage(const std::string&) override {}
    bool AskQuestion(const std::string&) override { return false; }
};

constexpr int kNotes = 10000;
constexpr uint16_t kPianoKeys[] = {kScanZ, kScanS, kScanX, kScanD, kScanC, kScanV, kScanG, kScanB};

void BM_NoteEntryAndUndo(benchmark::State& state) {
    auto module = std::make_unique<Module>();
    module->NewModule({});
    module->patterns[0].length = kMaxLines;
    PatternView view{*module};
    SongPlayer song;
    song.Attach(*module);
    NotePlayer notes;
    notes.Init(module->Settings());
    AudioMutex audioMutex;
    SilentPrompts prompts;
    UndoHistory undo{[&song] { return song.Playing(); }};
    PatternViewUndo undoView{view};
    EditorContext ctx{*module, view, undo, song, notes, audioMutex, prompts};

    int64_t operations = 0;
    for (auto _ : state) {
        undo.Reset(*module);
        view.SetModule(*module);
        for (int n = 0; n < kNotes; ++n) {
            if (view.State().cursorLine == kMaxLines - 1) view.SetSelection({(n / kMaxLines) % 4 * 3, 0, 1, 1});
            HandlePatternKey(ctx, {kPianoKeys[n % 8], 0, 0, false});
        }
        operations += kNotes;
        while (undo.Undo(undoView)) ++operations;
        benchmark::DoNotOptimize(module->patterns[0].lines[0]);
    }
    state.counters["ops"] = benchmark::Counter(static_cast<double>(operations), benchmark::Counter::kIsRate);
}
BENCHMARK(BM_NoteEntryAndUndo)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace sondrel
