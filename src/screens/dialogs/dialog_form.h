#pragma once
// A dialog window laid out as a form: rows of a label and its control, in
// labelled groups, with a row of buttons at the bottom. The dialog opens over
// everything (the windows below turn inert), runs the requesters' frame loop
// until a button, Escape or its close box ends it, and closes again.
//
// Typical use: add the fields, Run() with the button labels; the first
// button confirms. The window and its controls go when Run returns, so the
// caller reads the controls in accept, which is asked before a button press
// ends the dialog.

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/gorb.h"
#include "ui/command_queue.h"
#include "ui/window.h"

namespace sondrel {

class CheckBox;
class ListBox;
class MenuButton;
class Requesters;
class TextLine;

constexpr uint16_t kDialogWindowId = 10002;

class DialogForm {
public:
    static constexpr int kMargin = 12;
    static constexpr int kRowHeight = 20;
    static constexpr int kRowGap = 4;
    static constexpr int kButtonWidth = 80;
    static constexpr int kListLineHeight = 14;
    static constexpr int kCancelled = -1;

    DialogForm(Requesters& requesters, const std::string& title, int width = 380, int labelWidth = 150);
    ~DialogForm();
    DialogForm(const DialogForm&) = delete;
    DialogForm& operator=(const DialogForm&) = delete;

    // False when the window could not be opened (a dialog is open already).
    bool Opened() const { return window_ != nullptr; }
    Window* GetWindow() const { return window_; }

    // A labelled frame around the rows added until EndGroup.
    void BeginGroup(const std::string& label);
    void EndGroup();
    // A line of text across the form (no control).
    void Note(const std::string& text);
    // A label and its value as text, read-only.
    void Show(const std::string& label, const std::string& value);

    TextLine& Text(const std::string& label, const std::string& value, std::size_t maxLength);
    TextLine& Number(const std::string& label, int32_t value, int32_t minimum, int32_t maximum);
    // A selection field; choices separated by "\n".
    MenuButton& Choice(const std::string& label, std::string_view choices, int choice);
    CheckBox& Check(const std::string& text, bool on);
    // A list box across the form, rows lines of lineHeight pixels high.
    ListBox& List(int rows, int lineHeight = kListLineHeight);

    // Two columns: the rows added from now on take only the left width
    // pixels of the form, and ListBeside puts a list right of them, from the
    // row that began at top down to the last row added.
    void NarrowRows(int width) { rowsRight_ = width; }
    int NextRowTop() const { return y_; }
    ListBox& ListBeside(int top);

    // A control of any kind in the control column (or across the form),
    // height pixels high.
    template <typename W, typename... Args>
    W& Add(const std::string& label, int height, Args&&... args) {
        const Gorb_Rect rect = Row(label, height);
        return window_->Emplace<W>(NextId(), rect, std::forward<Args>(args)...);
    }
    // The next row's rectangle for a control: beside the label, or across
    // the form when label is empty.
    Gorb_Rect Row(const std::string& label, int height = kRowHeight);
    uint16_t NextId() { return nextId_++; }

    // Lays out the buttons, sizes and centres the window and runs it. Returns
    // the index of the button pressed, or kCancelled for Escape and the close
    // box. accept is asked about a press of button index (Return presses the
    // first button); false keeps the dialog open. onEntry sees the other
    // entries of the dialog's controls.
    int Run(const std::vector<std::string>& buttons, const std::function<bool(int)>& accept = {},
            const std::function<void(const QueueEntry&)>& onEntry = {});

private:
    Requesters& requesters_;
    Window* window_ = nullptr;
    int width_;
    int rowsRight_;
    int labelWidth_;
    int y_ = kTitleBarHeight + kMargin;
    int indent_ = 0;
    int groupTop_ = -1;
    std::string groupLabel_;
    uint16_t nextId_ = 1;
    uint16_t firstButtonId_ = 0;
    bool ran_ = false;
};

}  // namespace sondrel
