#include "app/editor.h"

#include "sound/song_player.h"
#include "ui/requesters/requesters.h"

namespace sondrel {

void RequesterPrompts::ShowMessage(const std::string& text) { requesters_.ShowMessage(text); }

bool RequesterPrompts::AskQuestion(const std::string& text) { return requesters_.AskQuestion(text, "Yes", "No"); }

Editor::Editor(Module& module, SongPlayer& song, NotePlayer& notes, AudioMutex& audioMutex, Requesters& requesters)
    : prompts_(requesters),
      view_(module),
      undo_([&song] { return song.Playing(); }),
      context_{module, view_, undo_, song, notes, audioMutex, prompts_} {
    undo_.Reset(module);
}

void Editor::ModuleReplaced() {
    view_.SetModule(context_.module);
    undo_.Reset(context_.module);
    view_.Invalidate(kRedrawAll);
}

}  // namespace sondrel
