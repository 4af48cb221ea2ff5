#pragma once
// The editor over the program's one module: the pattern view, the undo
// history (locked while the song plays), the prompts that the requesters
// answer, and the context that every editing command takes.

#include <string>

#include "edit/editor_context.h"

namespace sondrel {

class Requesters;

// Editing commands' messages and questions go to the message requester.
class RequesterPrompts : public EditPrompts {
public:
    explicit RequesterPrompts(Requesters& requesters) : requesters_(requesters) {}
    void ShowMessage(const std::string& text) override;
    bool AskQuestion(const std::string& text) override;

private:
    Requesters& requesters_;
};

class Editor {
public:
    Editor(Module& module, SongPlayer& song, NotePlayer& notes, AudioMutex& audioMutex, Requesters& requesters);
    Editor(const Editor&) = delete;
    Editor& operator=(const Editor&) = delete;

    EditorContext& Context() { return context_; }
    // A module was created or loaded in place of the old one: the view starts
    // over on it and the history forgets the old module's changes.
    void ModuleReplaced();

private:
    RequesterPrompts prompts_;
    PatternView view_;
    UndoHistory undo_;
    EditorContext context_;
};

}  // namespace sondrel
