#include "ui/requesters/requesters.h"

#include <algorithm>

#include "ui/entry_kinds.h"
#include "ui/requesters/message_text.h"
#include "ui/requesters/requester_host.h"
#include "ui/toolkit.h"
#include "ui/widgets/push_button.h"
#include "ui/widgets/text_line.h"

namespace sondrel {
namespace {

constexpr int kMargin = 12;
constexpr int kButtonWidth = 80;
constexpr int kButtonHeight = 22;
constexpr int kMinimumWidth = 200;
constexpr uint16_t kTextId = 100;

bool UntakenKey(const QueueEntry& entry, uint16_t key) {
    return entry.kind == kEntryKeyDown && KeyCode(entry.a) == key && !KeyTaken(entry.b) && !KeyRepeat(entry.b);
}

}  // namespace

bool IsEscapeEntry(const QueueEntry& entry) { return UntakenKey(entry, TextLine::kKeyEscape); }

bool IsReturnEntry(const QueueEntry& entry) {
    return UntakenKey(entry, TextLine::kKeyEnter) || UntakenKey(entry, TextLine::kKeyPadEnter);
}

bool Requesters::RunUntilAnswered(Window* window, const std::function<bool(const QueueEntry&)>& handle) {
    if (depth_ == 0) quitting_ = false;
    ++depth_;
    bool answered = false;
    while (!answered && !quitting_) {
        host_.PollInput();
        toolkit_.Update();
        // A copy: a requester opened from handle pops entries of its own.
        while (const QueueEntry* popped = toolkit_.PopEntry()) {
            const QueueEntry entry = *popped;
            if (answered || quitting_) continue;  // the rest of the frame is dropped
            if (entry.kind == kEntryCloseRequest)
                quitting_ = host_.HandleCloseRequest();
            else
                answered = handle(entry);
        }
        if (!answered && !quitting_) host_.DrawFrame();
    }
    --depth_;
    toolkit_.CloseWindow(window);
    return answered;
}

Window* Requesters::OpenMessageWindow(const std::string& title, const std::string& text,
                                      const std::vector<std::string>& labels) {
    if (Window* open = toolkit_.FindWindow(kMessageWindowId)) {
        toolkit_.Raise(open);
        return nullptr;
    }
    const Gorb_Font* font = toolkit_.Style().font;
    const std::vector<std::string> lines = WrapText(text, screenWidth_ * 3 / 5, font);
    int textWidth = 0;
    for (const std::string& line : lines) textWidth = std::max(textWidth, MeasureText(line, font));
    const int count = static_cast<int>(labels.size());
    const int buttonsWidth = count * kButtonWidth + (count - 1) * kMargin;
    const int width = std::max({textWidth, buttonsWidth, kMinimumWidth - 2 * kMargin}) + 2 * kMargin;
    const int textHeight = static_cast<int>(lines.size()) * TextLineHeight(font);
    const int height = kTitleBarHeight + kMargin + textHeight + kMargin + kButtonHeight + kMargin;
    const Gorb_Rect rect{(screenWidth_ - width) / 2, (screenHeight_ - height) / 2, width, height};

    Window* window = toolkit_.OpenWindow(kMessageWindowId, rect, kWindowNotDraggable, title);
    if (window == nullptr) return nullptr;
    window->Emplace<MessageText>(kTextId, Gorb_Rect{kMargin, kTitleBarHeight + kMargin, width - 2 * kMargin,
                                                    textHeight},
                                 lines);
    const int buttonY = height - kMargin - kButtonHeight;
    int x = (width - buttonsWidth) / 2;
    for (int id = 0; id < count; ++id, x += kButtonWidth + kMargin)
        window->Emplace<PushButton>(static_cast<uint16_t>(id), Gorb_Rect{x, buttonY, kButtonWidth, kButtonHeight},
                                    labels[id]);
    toolkit_.Focus(window, window->Widgets()[1].get());
    return window;
}

void Requesters::ShowMessage(const std::string& text) {
    Window* window = OpenMessageWindow("Message", text, {"OK"});
    if (window == nullptr) return;
    RunUntilAnswered(window, [&](const QueueEntry& entry) {
        return (entry.kind == kEntryValue && entry.a == 0) || IsEscapeEntry(entry) || IsReturnEntry(entry) ||
               (entry.kind == kEntryWindowClose && entry.a == kMessageWindowId);
    });
}

bool Requesters::AskQuestion(const std::string& text, const std::string& yesLabel, const std::string& noLabel) {
    Window* window = OpenMessageWindow("Requester", text, {yesLabel, noLabel});
    if (window == nullptr) return false;
    bool yes = false;
    const bool answered = RunUntilAnswered(window, [&](const QueueEntry& entry) {
        uint32_t button = entry.a;
        if (IsReturnEntry(entry)) {
            const Widget* focused = window->Focus();
            if (focused == nullptr || focused->Kind() != WidgetKind::Button) return false;
            button = focused->Id();
        } else if (entry.kind != kEntryValue) {
            return IsEscapeEntry(entry) || (entry.kind == kEntryWindowClose && entry.a == kMessageWindowId);
        }
        if (button > 1) return false;
        yes = button == 0;
        return true;
    });
    return answered && yes;
}

}  // namespace sondrel
