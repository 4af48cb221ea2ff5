#pragma once
// The bench for the dialogs: the requesters' frame loop over a main window,
// drawn with the shipped skin so that texts are measured with its font, and
// helpers that find a dialog's controls and queue clicks on them.

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "screens/dialogs/dialog_form.h"
#include "ui/requesters/message_text.h"
#include "ui/requesters_fixture.h"
#include "ui/widgets/frame.h"
#include "ui/widgets/list_box.h"
#include "ui/widgets/menu_button.h"
#include "ui/widgets/push_button.h"
#include "ui/widgets/text_line.h"
#include "ui/widgets/toggle_widget.h"

namespace sondrel {

inline bool Overlap(const Gorb_Rect& a, const Gorb_Rect& b) {
    return a.x < b.x + b.w && b.x < a.x + a.w && a.y < b.y + b.h && b.y < a.y + a.h;
}

class DialogFixture : public RequesterFixture {
protected:
    DialogFixture() {
        toolkit.Init(*screen, &ShippedSkin());
        main = toolkit.OpenWindow(1, {0, 0, kScreenWidth, kScreenHeight}, kWindowNotDraggable, "main");
    }

    Window* Dialog() { return toolkit.FindWindow(kDialogWindowId); }
    // The dialog's widgets of one kind, in the order they were added.
    template <typename W>
    std::vector<W*> All() {
        std::vector<W*> found;
        for (const auto& widget : Dialog()->Widgets())
            if (auto* w = dynamic_cast<W*>(widget.get())) found.push_back(w);
        return found;
    }
    // The texts of the dialog's widgets in the order they were added (a
    // group's frame after its rows): labels, choices joined by "|", buttons,
    // check boxes, and a list's line count.
    std::vector<std::string> Texts() {
        std::vector<std::string> texts;
        for (const auto& widget : Dialog()->Widgets()) {
            const Widget* w = widget.get();
            if (const auto* text = dynamic_cast<const MessageText*>(w))
                texts.insert(texts.end(), text->Lines().begin(), text->Lines().end());
            if (const auto* frame = dynamic_cast<const Frame*>(w)) texts.push_back(frame->Label());
            if (const auto* button = dynamic_cast<const PushButton*>(w)) texts.push_back(button->Text());
            if (const auto* box = dynamic_cast<const ToggleWidget*>(w); box && !box->Text().empty())
                texts.push_back(box->Text());
            if (const auto* list = dynamic_cast<const ListBox*>(w))
                texts.push_back(std::to_string(list->LineCount()) + " lines");
            if (const auto* choice = dynamic_cast<const MenuButton*>(w)) {
                std::string joined;
                for (const std::string& c : choice->Choices()) joined += (joined.empty() ? "" : "|") + c;
                texts.push_back(joined);
            }
        }
        return texts;
    }
    // The widget added offset places after the label reading text.
    template <typename W>
    W* After(const std::string& text, int offset = 1) {
        const auto& widgets = Dialog()->Widgets();
        for (size_t i = 0; i + offset < widgets.size(); ++i) {
            const auto* label = dynamic_cast<const MessageText*>(widgets[i].get());
            if (label != nullptr && label->Lines() == std::vector<std::string>{text})
                return dynamic_cast<W*>(widgets[i + offset].get());
        }
        return nullptr;
    }
    void ClickOn(const Widget* widget, Point offset = {-1, -1}) {
        ASSERT_NE(widget, nullptr);
        const Gorb_Rect& r = widget->Rect();
        ClickAt(kDialogWindowId, offset.x < 0 ? Point{r.x + r.w / 2, r.y + r.h / 2} : Point{r.x + offset.x, r.y + offset.y});
    }
    void ClickPlus(const TextLine* number) { ClickOn(number, {number->Rect().w - 4, 3}); }
    // Two frames: the button opens its list, then a click picks the choice.
    void Choose(const std::string& label, int choice) {
        Then([=, this] { ClickOn(After<MenuButton>(label)); });
        Then([=, this] {
            const Gorb_Rect line = After<MenuButton>(label)->LineRect(choice);
            Queue(kGorbButton1Down, {line.x + 4, line.y + 4});
            Queue(kGorbButton1Up, {line.x + 4, line.y + 4});
        });
    }
    void ClickButton(const std::string& text) {
        for (const PushButton* button : All<PushButton>())
            if (button->Text() == text) return ClickOn(button);
        ADD_FAILURE() << "no button " << text;
    }

    // Everything inside the window on the screen, what begins in a group's
    // frame inside it, no two controls on each other, and every text within
    // its widget, each choice within its button.
    void ExpectTidy() {
        const Gorb_Rect& window = Dialog()->Rect();
        EXPECT_TRUE(window.x >= 0 && window.y >= 0 && window.x + window.w <= kScreenWidth &&
                    window.y + window.h <= kScreenHeight);
        const Gorb_Font* font = toolkit.Style().font;
        ASSERT_NE(font, nullptr);
        const auto& widgets = Dialog()->Widgets();
        for (size_t i = 0; i < widgets.size(); ++i) {
            const Gorb_Rect& r = widgets[i]->Rect();
            EXPECT_TRUE(r.x >= 0 && r.y >= kTitleBarHeight && r.x + r.w <= window.w && r.y + r.h <= window.h) << i;
            if (widgets[i]->Kind() == WidgetKind::Frame) continue;
            for (size_t j = 0; j < widgets.size(); ++j) {
                const Gorb_Rect& o = widgets[j]->Rect();
                if (widgets[j]->Kind() != WidgetKind::Frame) {
                    EXPECT_TRUE(j <= i || !Overlap(r, o)) << "widgets " << i << " and " << j;
                } else if (Contains(o, {r.x, r.y})) {
                    EXPECT_TRUE(r.x + r.w <= o.x + o.w && r.y + r.h <= o.y + o.h) << i << " leaves frame " << j;
                }
            }
            if (const auto* text = dynamic_cast<const MessageText*>(widgets[i].get())) {
                for (const std::string& line : text->Lines()) EXPECT_LE(MeasureText(line, font), r.w) << line;
            }
            if (const auto* choice = dynamic_cast<const MenuButton*>(widgets[i].get())) {
                for (const std::string& line : choice->Choices())
                    EXPECT_LE(MeasureText(line, font), r.w - 6 - MenuButton::kArrowWidth) << line;
            }
        }
    }
};

constexpr uint16_t kKeyEscape = TextLine::kKeyEscape;
constexpr uint16_t kKeyReturn = TextLine::kKeyEnter;

// The dialogs run their own frames; each step of a test acts on the open dialog.
class ToolDialogTest : public DialogFixture {
protected:
    // The control after the nth label with this text, or the column-th of
    // the controls side by side after it.
    template <typename W>
    W& Field(const std::string& label, int nth = 0, int column = 0) {
        const auto& widgets = Dialog()->Widgets();
        for (size_t i = 0; i + 1 + column < widgets.size(); ++i) {
            const auto* text = dynamic_cast<const MessageText*>(widgets[i].get());
            if (text != nullptr && text->Lines() == std::vector<std::string>{label} && nth-- == 0)
                return dynamic_cast<W&>(*widgets[i + 1 + column]);
        }
        throw std::runtime_error("no field " + label);
    }
    // The button, check box or choice showing this text.
    Widget& Labelled(const std::string& text) {
        for (const auto& widget : Dialog()->Widgets()) {
            if (const auto* button = dynamic_cast<const PushButton*>(widget.get()); button && button->Text() == text)
                return *widget;
            if (const auto* box = dynamic_cast<const ToggleWidget*>(widget.get()); box && box->Text() == text)
                return *widget;
        }
        throw std::runtime_error("nothing labelled " + text);
    }
    void Press(const std::string& text) { ClickWidget(kDialogWindowId, Labelled(text).Id()); }
    // A click on a line of a list whose lines are 14 pixels high, as the forms make them.
    void ClickLine(const Widget& list, int line) {
        ClickAt(kDialogWindowId, {list.Rect().x + 20, list.Rect().y + ListBox::kBorder + line * 14 + 7});
    }
    // Types at the end of a text entry.
    void TypeInto(Widget& field, const std::string& text) {
        toolkit.Focus(Dialog(), &field);
        QueueKey(kKeyEnd);
        for (char c : text) QueueKey(0x10, static_cast<uint8_t>(c));
    }
    std::vector<std::string> Labels() {
        std::vector<std::string> labels;
        for (const auto& widget : Dialog()->Widgets())
            if (const auto* text = dynamic_cast<const MessageText*>(widget.get())) labels.push_back(text->Lines()[0]);
        return labels;
    }
};

}  // namespace sondrel
