#pragma once
// What every editing command works on: the module and the pattern view that
// shows it, the undo history, the players and the mutex that guards the
// module against the audio thread, and the prompts that put questions to the
// user. The program builds one over its real parts; tests build one over a
// module of their own and scripted prompts.

#include <string>

#include "edit/undo/undo_history.h"
#include "edit/undo/undo_view.h"
#include "model/module.h"
#include "screens/pattern_view/pattern_view.h"
#include "sound/audio_mutex.h"

namespace sondrel {

class NotePlayer;
class SongPlayer;

// Messages and yes/no questions; the program answers them with its
// requesters, tests with a script.
class EditPrompts {
public:
    virtual ~EditPrompts() = default;
    virtual void ShowMessage(const std::string& text) = 0;
    // True for yes.
    virtual bool AskQuestion(const std::string& text) = 0;
};

// Undo and redo show their changes through the pattern view.
class PatternViewUndo : public UndoView {
public:
    explicit PatternViewUndo(PatternView& view) : view_(view) {}
    void RestoreState(const EditorPosition& position) override {
        view_.RestoreState(position);
        view_.EnsureListPositionVisible();
        view_.Invalidate(kRedrawAll);
    }
    void SetListPosition(int position) override {
        view_.SetListPosition(static_cast<uint8_t>(position));
        view_.EnsureListPositionVisible();
        view_.Invalidate(kRedrawAll);
    }
    void RedrawLines(int, int) override { view_.Invalidate(kRedrawGridRows | kRedrawGridState | kRedrawMenus); }
    void RedrawAll() override { view_.Invalidate(kRedrawAll); }

private:
    PatternView& view_;
};

struct EditorContext {
    Module& module;
    PatternView& view;
    UndoHistory& undo;
    SongPlayer& song;
    NotePlayer& notes;
    AudioMutex& audioMutex;
    EditPrompts& prompts;
};

}  // namespace sondrel
