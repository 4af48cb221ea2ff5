#pragma once
// The bench of the dialog tests: the requesters' frame loop with helpers that
// find a dialog's controls by their labels and act on them.

#include <stdexcept>
#include <string>
#include <vector>

#include "screens/dialogs/dialog_form.h"
#include "ui/requester_fixture.h"
#include "ui/requesters/message_text.h"
#include "ui/widgets/list_box.h"
#include "ui/widgets/push_button.h"
#include "ui/widgets/toggle_widget.h"

namespace sondrel {

// The dialogs run their own frames; each step of a test acts on the open dialog.
class ToolDialogTest : public RequestersTest {
protected:
    Window& Dialog() {
        Window* window = toolkit.FindWindow(kDialogWindowId);
        if (window == nullptr) throw std::runtime_error("no dialog is open");
        return *window;
    }
    // The control after the nth label with this text, or the column-th of
    // the controls side by side after it.
    template <typename W>
    W& Field(const std::string& label, int nth = 0, int column = 0) {
        const auto& widgets = Dialog().Widgets();
        for (size_t i = 0; i + 1 + column < widgets.size(); ++i) {
            const auto* text = dynamic_cast<const MessageText*>(widgets[i].get());
            if (text != nullptr && text->Lines() == std::vector<std::string>{label} && nth-- == 0)
                return dynamic_cast<W&>(*widgets[i + 1 + column]);
        }
        throw std::runtime_error("no field " + label);
    }
    // The button, check box or choice showing this text.
    Widget& Labelled(const std::string& text) {
        for (const auto& widget : Dialog().Widgets()) {
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
        toolkit.Focus(&Dialog(), &field);
        QueueKey(kKeyEnd);
        for (char c : text) QueueKey(0x10, static_cast<uint8_t>(c));
    }
    std::vector<std::string> Labels() {
        std::vector<std::string> labels;
        for (const auto& widget : Dialog().Widgets())
            if (const auto* text = dynamic_cast<const MessageText*>(widget.get())) labels.push_back(text->Lines()[0]);
        return labels;
    }
};

}  // namespace sondrel
