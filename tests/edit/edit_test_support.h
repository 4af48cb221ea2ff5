#pragma once
// A small editor for command tests: a module of its own on the heap, the
// pattern view over it, an undo history locked while the song plays, the
// players, the audio mutex and prompts that note every message and answer
// questions from a script; and the bytes a module saves to.

#include <gtest/gtest.h>

#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "edit/editor_context.h"
#include "edit/tools/tool_dialogs.h"
#include "files/module_file.h"
#include "sound/song_player.h"
#include "test_support.h"

namespace sondrel::test {

class ScriptedPrompts : public EditPrompts {
public:
    void ShowMessage(const std::string& text) override { messages.push_back(text); }
    // Answers from the front of the script; no when it has run out.
    bool AskQuestion(const std::string& text) override {
        questions.push_back(text);
        if (answers.empty()) return false;
        bool answer = answers.front();
        answers.pop_front();
        return answer;
    }

    std::vector<std::string> messages;
    std::vector<std::string> questions;
    std::deque<bool> answers;
};

class EditTest : public ::testing::Test {
protected:
    EditTest() {
        module->NewModule({});
        view.SetModule(*module);
        undo.Reset(*module);
        song.Attach(*module);
    }

    Pattern& Shown() { return module->patterns[view.State().currentPattern]; }
    PatternLine& Line(int line) { return Shown().lines[line]; }
    // The frame in cursor columns and lines, anchor at the top left.
    void Select(int x, int y, int w, int h) {
        view.SetSelection({x, y, 1, 1});
        view.SetSelection({x, y, w, h});
    }
    // The shown pattern at this length, every line different in every cell, no cell empty.
    void Fill(int length) { FillPattern(Shown(), length); }
    // The same for any pattern; patterns filled with other variants hold other notes.
    static void FillPattern(Pattern& pattern, int length, int variant = 0) {
        pattern.length = static_cast<uint16_t>(length);
        for (int l = 0; l < kMaxLines; ++l) {
            PatternLine& line = pattern.lines[l];
            for (int c = 0; c < kChannels; ++c) {
                line.note[c] = static_cast<uint8_t>(c == 3 ? 247 + (l + c) % 8 : 45 + (l * 5 + c + variant) % 70);
                line.detune[c] = static_cast<int8_t>(l % 7 - 3);
                line.instrument[c] = static_cast<uint8_t>((l + c) % 16);
                line.volume[c] = static_cast<uint8_t>((l * 3 + c) % 16);
                line.channelCommand[c] = static_cast<uint8_t>(1 + (l + c) % 2);
                line.channelParam[c] = static_cast<uint8_t>(l);
            }
            line.command = static_cast<uint8_t>(1 + l % 2);
            line.commandParam = static_cast<uint8_t>(255 - l);
        }
    }
    std::unique_ptr<Module> Snapshot() const { return std::make_unique<Module>(*module); }
    // The bytes a module file of the module holds (saved from a copy, which
    // takes the file's path as its own).
    std::vector<unsigned char> SavedBytes(const Module& from) {
        auto copy = std::make_unique<Module>(from);
        if (!scratch) scratch.emplace();
        const auto path = *scratch / "saved.sdrltk";
        SaveModule(*copy, path.string());
        return ReadBytes(path);
    }

    // Undo of the newest entry gives back `before`, redo gives `after` again.
    void ExpectUndoAndRedo(const Module& before, const Module& after) {
        ASSERT_TRUE(undo.Undo(undoView));
        EXPECT_TRUE(*module == before) << "undo";
        ASSERT_TRUE(undo.Redo(undoView));
        EXPECT_TRUE(*module == after) << "redo";
    }

    std::unique_ptr<Module> module = std::make_unique<Module>();
    PatternView view{*module};
    SongPlayer song;
    NotePlayer notes;
    AudioMutex audioMutex;
    ScriptedPrompts prompts;
    std::optional<ScratchDir> scratch;
    UndoHistory undo{[this] { return song.Playing(); }};
    PatternViewUndo undoView{view};
    EditorContext ctx{*module, view, undo, song, notes, audioMutex, prompts};
};

}  // namespace sondrel::test
