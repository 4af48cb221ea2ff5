#pragma once
// A button that shows its current choice with a drop arrow. A press opens the
// list of choices over every window, below the button (above it when there is
// no room below); letting go on a choice, or clicking one later, picks it and
// queues a choice entry with its index. A press elsewhere or Escape closes the
// list without choosing. When focused, Space or Return opens the list and Up
// and Down step the choice at once; while the list is open they move its
// highlight and Return picks. A button may start with no choice (kNoChoice):
// its face stays empty until one is picked.

#include <string>
#include <string_view>
#include <vector>

#include "ui/popup.h"
#include "ui/widget.h"

namespace sondrel {

class MenuButton : public Widget {
public:
    static constexpr int kEntryHeight = 18;
    static constexpr int kListBorder = 2;
    static constexpr int kArrowWidth = 12;  // the right border that holds the drop arrow
    static constexpr uint16_t kKeyEscape = 0x01;
    static constexpr uint16_t kKeyReturn = 0x1C;
    static constexpr uint16_t kKeyPadEnter = 0x9C;
    static constexpr uint16_t kKeyUp = 0xC8;
    static constexpr uint16_t kKeyDown = 0xD0;
    static constexpr int kNoChoice = -1;

    // choices: one text, the choices separated by "\n".
    MenuButton(uint16_t id, const Gorb_Rect& rect, std::string_view choices, int choice = 0);

    const std::vector<std::string>& Choices() const { return choices_; }
    int Choice() const { return choice_; }
    // Sets the choice (kept in range; negative for none) without queueing anything.
    void SetChoice(int choice);
    int32_t Value() const override { return choice_; }

    bool IsOpen() const { return open_; }
    // The highlighted line of the open list, -1 for none.
    int Highlighted() const { return highlighted_; }
    // The open list's screen rectangle, and one choice's line in it.
    const Gorb_Rect& ListRect() const { return listRect_; }
    Gorb_Rect LineRect(int index) const;

    void Press(WidgetContext& context, Point, int part) override;
    bool KeyPress(WidgetContext& context, const Gorb_Event& event) override;
    void Draw(Painter& painter, const DrawStyle& style) const override;

private:
    class List : public Popup {
    public:
        explicit List(MenuButton& button) : button_(button) {}
        bool Contains(Point screen) const override;
        void Press(WidgetContext& context, Point screen) override;
        void Follow(Point screen) override;
        void Release(WidgetContext& context, Point screen) override;
        bool KeyPress(WidgetContext& context, const Gorb_Event& event) override;
        void Close() override { button_.open_ = false; }
        void Draw(Painter& painter, const DrawStyle& style) const override;

    private:
        MenuButton& button_;
    };

    void OpenList(WidgetContext& context);
    void Pick(WidgetContext& context, int index);
    // The choice under a screen point, -1 off the lines.
    int LineAt(Point screen) const;
    bool Focused() const;

    std::vector<std::string> choices_;
    int choice_ = 0;
    bool open_ = false;
    int highlighted_ = -1;
    Gorb_Rect listRect_{};
    List list_{*this};
};

}  // namespace sondrel
