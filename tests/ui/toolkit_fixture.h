#pragma once
// The bench every toolkit test runs on: a screen, a toolkit fed from queued
// events with a clock the test moves, and helpers that send mouse and key
// input one update at a time, read the queue and read drawn pixels.

#include <gtest/gtest.h>

#include <cctype>
#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <vector>

#include "test_support.h"
#include "ui/entry_kinds.h"
#include "ui/queued_input.h"
#include "ui/skin/skin_library.h"
#include "ui/toolkit.h"
#include "ui/widgets/text_edit.h"

namespace sondrel {

class FakeClipboard : public Clipboard {
public:
    std::string Text() const override { return text; }
    void SetText(const std::string& value) override { text = value; }
    std::string text;
};

// A keystroke: its key code, the character it types and the modifiers held.
struct Stroke {
    uint16_t key;
    uint16_t character = 0;
    uint32_t modifiers = 0;
};

inline Stroke Type(char c) { return {0x10, static_cast<uint16_t>(c)}; }
inline Stroke Ctrl(uint16_t key) { return {key, 0, kGorbLeftCtrl}; }
inline Stroke Shift(uint16_t key) { return {key, 0, kGorbLeftShift}; }

using Entries = std::vector<QueueEntry>;

// A text filter that upper-cases letters and drops everything else.
inline char UpperLetters(char ch) {
    return std::isalpha(static_cast<unsigned char>(ch)) ? static_cast<char>(std::toupper(ch)) : '\0';
}

// The pixels of part of a surface, row by row.
inline std::vector<uint16_t> SurfacePixels(Gorb_Surface& surface, const Gorb_Rect& rect) {
    std::vector<uint16_t> out;
    const Gorb_Pixels pixels = surface.Lock();
    for (int y = rect.y; y < rect.y + rect.h; ++y)
        out.insert(out.end(), pixels.Row(y) + rect.x, pixels.Row(y) + rect.x + rect.w);
    surface.Unlock();
    return out;
}

// The shipped skin, loaded once for the whole run.
inline const SkinLibrary& ShippedSkin() {
    static const std::unique_ptr<SkinLibrary> skin = [] {
        auto library = std::make_unique<SkinLibrary>(test::BinaryDir() / "skins");
        library->LoadSkin("default.skin");
        return library;
    }();
    return *skin;
}

class ToolkitFixture : public ::testing::Test {
public:
    ToolkitFixture() { toolkit.Init(*screen); }

    // Starts the toolkit afresh, drawing with skin, with one window open.
    Window* Restart(const Gorb_Rect& rect, const SkinLibrary* skin = nullptr, uint32_t flags = 0) {
        toolkit.Init(*screen, skin);
        return toolkit.OpenWindow(1, rect, flags, "test");
    }
    // Queues an event for the next update.
    void Queue(int type, Point at = {}, uint16_t key = 0, uint16_t character = 0) {
        Gorb_Event event;
        event.type = type;
        event.x = at.x;
        event.y = at.y;
        event.key = key;
        event.character = character;
        input.events.push_back(event);
    }
    // Sends one event through an update with those modifiers held.
    void Mouse(int type, Point at, uint32_t modifiers = 0) {
        Queue(type, at);
        Update(modifiers);
    }
    void Click(Point at, uint32_t modifiers = 0) {
        Mouse(kGorbButton1Down, at, modifiers);
        Mouse(kGorbButton1Up, at, modifiers);
    }
    // A click in the middle of a widget.
    void Click(const Widget& widget) {
        const Gorb_Rect& w = widget.Owner()->Rect();
        const Gorb_Rect& r = widget.Rect();
        Click({w.x + r.x + r.w / 2, w.y + r.y + r.h / 2});
    }
    // Presses and lets go of a key in one update.
    void Key(uint16_t key, uint32_t modifiers = 0) {
        Queue(kGorbKeyDown, {}, key);
        Queue(kGorbKeyUp, {}, key);
        Update(modifiers);
    }
    // Presses each stroke in its own update; true when the focused widget took every one.
    bool Keys(const std::vector<Stroke>& strokes) {
        bool allTaken = true;
        for (const Stroke& s : strokes) {
            Queue(kGorbKeyDown, {}, s.key, s.character);
            Update(s.modifiers);
            while (const QueueEntry* entry = toolkit.PopEntry()) {
                if (entry->kind == kEntryKeyDown) allTaken = allTaken && KeyTaken(entry->b);
                else if (entry->kind != kEntryKeyUp) popped_.push_back(*entry);
            }
        }
        return allTaken;
    }
    void Update(uint32_t modifiers = 0) {
        input.modifiers = modifiers;
        toolkit.Update();
        input.modifiers = 0;
    }
    // The entries other than keys queued since the last call.
    Entries Drain() {
        Entries out;
        out.swap(popped_);
        while (const QueueEntry* entry = toolkit.PopEntry())
            if (entry->kind != kEntryKeyDown && entry->kind != kEntryKeyUp) out.push_back(*entry);
        return out;
    }
    // Every queued entry, keys too, oldest first.
    Entries DrainAll() {
        Entries out;
        while (const QueueEntry* entry = toolkit.PopEntry()) out.push_back(*entry);
        return out;
    }
    std::vector<uint16_t> Pixels(const Gorb_Rect& rect) {
        toolkit.Draw();
        return SurfacePixels(*screen, rect);
    }

    QueuedInput input;
    double now = 0;
    std::unique_ptr<Gorb_Surface> screen = Gorb_CreateSurface(kScreenWidth, kScreenHeight);
    Toolkit toolkit{input, [this] { return now; }};

private:
    Entries popped_;
};

}  // namespace sondrel
