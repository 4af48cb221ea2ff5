#include "screens/dialogs/dialog_form.h"

#include <algorithm>

#include "ui/entry_kinds.h"
#include "ui/requesters/message_text.h"
#include "ui/requesters/requesters.h"
#include "ui/toolkit.h"
#include "ui/widgets/check_box.h"
#include "ui/widgets/frame.h"
#include "ui/widgets/list_box.h"
#include "ui/widgets/menu_button.h"
#include "ui/widgets/push_button.h"
#include "ui/widgets/text_line.h"

namespace sondrel {
namespace {

constexpr int kButtonHeight = 22;
constexpr int kGroupLabelSpace = 16;  // a group's label stands in its frame's top edge
constexpr int kGroupIndent = 8;

}  // namespace

DialogForm::DialogForm(Requesters& requesters, const std::string& title, int width, int labelWidth)
    : requesters_(requesters), width_(width), rowsRight_(width), labelWidth_(labelWidth) {
    // The window grows to its rows when it runs; until then it stands where it will.
    const int height = requesters.ScreenHeight() - 2 * kMargin;
    const Gorb_Rect rect{(requesters.ScreenWidth() - width) / 2, kMargin, width, height};
    window_ = requesters.Kit().OpenWindow(kDialogWindowId, rect, 0, title);
}

DialogForm::~DialogForm() {
    if (window_ != nullptr && !ran_) requesters_.Kit().CloseWindow(window_);
}

void DialogForm::BeginGroup(const std::string& label) {
    groupTop_ = y_;
    groupLabel_ = label;
    y_ += kGroupLabelSpace;
    indent_ = kGroupIndent;
}

void DialogForm::EndGroup() {
    if (groupTop_ < 0 || window_ == nullptr) return;
    const Gorb_Rect frame{kMargin, groupTop_, rowsRight_ - 2 * kMargin, y_ - groupTop_ + kRowGap};
    window_->Emplace<Frame>(NextId(), frame, groupLabel_);
    y_ += 2 * kRowGap + kRowGap;
    indent_ = 0;
    groupTop_ = -1;
}

Gorb_Rect DialogForm::Row(const std::string& label, int height) {
    const int left = kMargin + indent_;
    const int right = rowsRight_ - kMargin - indent_;
    Gorb_Rect rect{left, y_, right - left, height};
    if (!label.empty()) {
        if (window_ != nullptr)
            window_->Emplace<MessageText>(NextId(), Gorb_Rect{left, y_ + 3, labelWidth_ - 8, kRowHeight - 3},
                                          std::vector<std::string>{label}, TextAlign::Right);
        rect.x = left + labelWidth_;
        rect.w = right - rect.x;
    }
    y_ += height + kRowGap;
    return rect;
}

void DialogForm::Note(const std::string& text) {
    const Gorb_Rect rect = Row({}, kRowHeight);
    if (window_ != nullptr)
        window_->Emplace<MessageText>(NextId(), Gorb_Rect{rect.x, rect.y + 3, rect.w, rect.h - 3},
                                      std::vector<std::string>{text}, TextAlign::Left);
}

void DialogForm::Show(const std::string& label, const std::string& value) {
    const Gorb_Rect rect = Row(label, kRowHeight);
    if (window_ != nullptr)
        window_->Emplace<MessageText>(NextId(), Gorb_Rect{rect.x + 4, rect.y + 3, rect.w - 4, rect.h - 3},
                                      std::vector<std::string>{value}, TextAlign::Left);
}

TextLine& DialogForm::Text(const std::string& label, const std::string& value, std::size_t maxLength) {
    TextLine& line = Add<TextLine>(label, kRowHeight, maxLength);
    line.SetText(value);
    return line;
}

TextLine& DialogForm::Number(const std::string& label, int32_t value, int32_t minimum, int32_t maximum) {
    // Wide enough for the digits and the two step buttons, no wider.
    const Gorb_Rect rect = Row(label, kRowHeight);
    TextLine& line = window_->Emplace<TextLine>(NextId(), Gorb_Rect{rect.x, rect.y, std::min(rect.w, 90), rect.h}, 6);
    line.SetNumeric(minimum, maximum);
    line.SetNumber(value);
    return line;
}

MenuButton& DialogForm::Choice(const std::string& label, std::string_view choices, int choice) {
    return Add<MenuButton>(label, kRowHeight, choices, choice);
}

CheckBox& DialogForm::Check(const std::string& text, bool on) {
    CheckBox& box = Add<CheckBox>({}, kRowHeight - 4, text);
    box.SetOn(on);
    return box;
}

ListBox& DialogForm::List(int rows, int lineHeight) {
    ListBox& list = Add<ListBox>({}, rows * lineHeight + 2 * ListBox::kBorder);
    list.SetLineHeight(lineHeight);
    return list;
}

ListBox& DialogForm::ListBeside(int top) {
    // Whole lines only, ending no lower than the last row.
    const int lines = std::max(1, (y_ - kRowGap - top - 2 * ListBox::kBorder) / kListLineHeight);
    const Gorb_Rect rect{rowsRight_, top, width_ - kMargin - rowsRight_, lines * kListLineHeight + 2 * ListBox::kBorder};
    ListBox& list = window_->Emplace<ListBox>(NextId(), rect);
    list.SetLineHeight(kListLineHeight);
    return list;
}

int DialogForm::Run(const std::vector<std::string>& buttons, const std::function<bool(int)>& accept,
                    const std::function<void(const QueueEntry&)>& onEntry) {
    if (window_ == nullptr) return kCancelled;
    ran_ = true;
    const int count = static_cast<int>(buttons.size());
    const int buttonY = y_ + kMargin - kRowGap;
    int x = width_ - kMargin - count * kButtonWidth - (count - 1) * kMargin;
    firstButtonId_ = nextId_;
    for (const std::string& label : buttons) {
        window_->Emplace<PushButton>(NextId(), Gorb_Rect{x, buttonY, kButtonWidth, kButtonHeight}, label);
        x += kButtonWidth + kMargin;
    }
    // A form without buttons ends a margin below its last row.
    const int height = count > 0 ? buttonY + kButtonHeight + kMargin : y_ - kRowGap + kMargin;
    window_->SetRect({(requesters_.ScreenWidth() - width_) / 2, std::max(0, (requesters_.ScreenHeight() - height) / 2),
                      width_, height});

    int pressed = kCancelled;
    const auto press = [&](int index) {
        if (accept && !accept(index)) return false;
        pressed = index;
        return true;
    };
    const bool answered = requesters_.RunUntilAnswered(window_, [&](const QueueEntry& entry) {
        if (entry.kind == kEntryValue && entry.a >= firstButtonId_ && entry.a < firstButtonId_ + static_cast<uint32_t>(count))
            return press(static_cast<int>(entry.a - firstButtonId_));
        if (IsReturnEntry(entry) && count > 0) return press(0);
        if (IsEscapeEntry(entry) || (entry.kind == kEntryWindowClose && entry.a == kDialogWindowId)) return true;
        if (onEntry) onEntry(entry);
        return false;
    });
    window_ = nullptr;  // closed with its controls
    return answered ? pressed : kCancelled;
}

}  // namespace sondrel
