#include "ui/widgets/text_field.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ui/toolkit_fixture.h"

namespace sondrel {
namespace {

using F = TextField;

// "line 0\nline 1\n..." with count lines.
std::string Lines(int count) {
    std::string out;
    for (int i = 0; i < count; ++i) out += (i > 0 ? "\nline " : "line ") + std::to_string(i);
    return out;
}

// Without a skin there is no font: 8 pixels a character, 12 a line. The field
// at (20,40) is 200x64, so four lines show from y = 43, text from x = 23; a
// taller text gets its scroll bar at x 204-217, y 42-101, arrows 14 high.
class TextFieldTest : public ToolkitFixture {
protected:
    static constexpr int kLeft = 23;
    static constexpr int kFirstLine = 43;
    static constexpr int kBarX = 210;

    void SetUp() override {
        field->SetClipboard(&clipboard);
        toolkit.Focus(window, field);
        Drain();
    }

    Window* window = Restart({0, 0, 400, 300});
    TextField* field = &window->Emplace<TextField>(7, Gorb_Rect{20, 40, 200, 64}, 80);
    TextField* other = &window->Emplace<TextField>(8, Gorb_Rect{20, 150, 200, 40});
    FakeClipboard clipboard;
};

TEST_F(TextFieldTest, EditsAcrossLines) {
    struct Case {
        const char* name;
        std::string start;  // the cursor starts at its beginning
        std::vector<Stroke> strokes;
        std::string text;
        std::size_t cursor, selStart, selEnd;
        bool upperLetters = false;  // a filter that upper-cases letters and drops the rest
    };
    const Case cases[] = {
        {"return splits a line", "abc\ndef", {{F::kKeyEnd}, {F::kKeyEnter}, Type('x')}, "abc\nx\ndef", 5, 5, 5},
        {"backspace joins lines", "abc\ndef", {{F::kKeyDown}, {F::kKeyHome}, {F::kKeyBackspace}}, "abcdef", 3, 3, 3},
        {"delete at a line's end joins", "abc\ndef", {{F::kKeyEnd}, {F::kKeyDelete}}, "abcdef", 3, 3, 3},
        {"up and down keep the column", "abcdef\nab\nabcdef", {{F::kKeyEnd}, {F::kKeyDown}, {F::kKeyDown}},
         "abcdef\nab\nabcdef", 16, 16, 16},
        {"down then up returns", "abcdef\nab\nabcdef", {{F::kKeyRight}, {F::kKeyRight}, {F::kKeyDown}, {F::kKeyUp}},
         "abcdef\nab\nabcdef", 2, 2, 2},
        {"up on the first line goes to the start", "abc\ndef", {{F::kKeyEnd}, {F::kKeyUp}}, "abc\ndef", 0, 0, 0},
        {"down on the last line goes to the end", "abc\ndef", {{F::kKeyDown}, {F::kKeyDown}}, "abc\ndef", 7, 7, 7},
        {"ctrl+end and shift+ctrl+home select all", "abc\ndef",
         {Ctrl(F::kKeyEnd), {F::kKeyHome, 0, kGorbLeftCtrl | kGorbLeftShift}}, "abc\ndef", 0, 0, 7},
        {"shift+down selects across a break", "abc\ndef", {{F::kKeyRight}, Shift(F::kKeyDown)}, "abc\ndef", 5, 1, 5},
        {"page down moves a box's height", Lines(10), {{F::kKeyPageDown}}, Lines(10), 28, 28, 28},
        {"paste keeps breaks, filtered, cut to the maximum", "ab", {Ctrl(F::kKeyEnd), Ctrl(F::kKeyV)},
         "abX\nY\n" + std::string(74, 'Z'), 80, 80, 80, true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        field->SetText(c.start);
        clipboard.text = "x1\ny\n" + std::string(100, 'z');
        field->SetFilter(c.upperLetters ? F::Filter(UpperLetters) : F::Filter{});
        EXPECT_TRUE(Keys(c.strokes));
        EXPECT_EQ(field->Text(), c.text);
        EXPECT_EQ(field->Cursor(), c.cursor);
        EXPECT_EQ(field->SelectionStart(), c.selStart);
        EXPECT_EQ(field->SelectionEnd(), c.selEnd);
    }
}

TEST_F(TextFieldTest, ReadOnlyRefusesEditsButSelectsAndCopies) {
    field->SetReadOnly(true);
    field->SetText("first\nsecond");
    EXPECT_TRUE(Keys({Type('x'), {F::kKeyEnter}, {F::kKeyDelete}, Ctrl(F::kKeyV), {F::kKeyDown}, Shift(F::kKeyEnd),
                      Ctrl(F::kKeyX), {F::kKeyBackspace}}));
    EXPECT_EQ(field->Text(), "first\nsecond");
    EXPECT_EQ(clipboard.text, "second");
    Keys({Ctrl(F::kKeyA), Ctrl(F::kKeyC)});
    EXPECT_EQ(clipboard.text, "first\nsecond");
    EXPECT_TRUE(Drain().empty());
}

TEST_F(TextFieldTest, EditsQueueLineCountsAndLeavingQueuesAValue) {
    field->SetText("ab");
    EXPECT_FALSE(Keys({{F::kKeyEscape}}));
    Keys({{F::kKeyEnd}, Type('c'), {F::kKeyEnter}, {F::kKeyLeft}, {F::kKeyDelete}});
    EXPECT_EQ(Drain(), (Entries{{kEntryTextField, 7, 1}, {kEntryTextField, 7, 2}, {kEntryTextField, 7, 1}}));
    // Tab still moves the focus; leaving queues the value entry, and so does
    // the field that Tab brings the keyboard to.
    EXPECT_TRUE(Keys({{kKeyTab}}));
    EXPECT_EQ(window->Focus(), other);
    EXPECT_EQ(Drain(), (Entries{{kEntryValue, 7, 0}, {kEntryValue, 8, 0}}));
}

TEST_F(TextFieldTest, ScrollingFollowsTheCursorAndTheWheel) {
    field->SetText(Lines(10));
    struct Step {
        const char* name;
        std::vector<Stroke> strokes;
        int wheel;  // notches, negative toward the user
        int top;
        Entries entries;
    };
    const Step steps[] = {
        {"ctrl+end shows the last lines", {Ctrl(F::kKeyEnd)}, 0, 6, {}},
        {"up inside the view keeps it", {{F::kKeyUp}, {F::kKeyUp}, {F::kKeyUp}}, 0, 6, {}},
        {"one more line up scrolls", {{F::kKeyUp}}, 0, 5, {}},
        {"the wheel toward the first line", {}, 1, 2, {{kEntryWheelWidgetUp, 7, 0}}},
        {"the wheel stops at the top", {}, 1, 0, {{kEntryWheelWidgetUp, 7, 0}}},
        {"and at the bottom", {}, -5, 6, {{kEntryWheelWidgetDown, 7, 0}}},
        {"typing brings the cursor back", {Type('!')}, 0, 5, {{kEntryTextField, 7, 10}}},
        {"page up scrolls a page", {{F::kKeyPageUp}}, 0, 1, {}},
    };
    Mouse(kGorbMouseMove, {100, 60});
    for (const Step& step : steps) {
        SCOPED_TRACE(step.name);
        Keys(step.strokes);
        if (step.wheel != 0) {
            Queue(step.wheel > 0 ? kGorbWheelUp : kGorbWheelDown, {100, 60});
            input.events.back().delta = step.wheel;
            Update();
        }
        EXPECT_EQ(field->Top(), step.top);
        EXPECT_EQ(Drain(), step.entries);
    }
}

TEST_F(TextFieldTest, MouseSelectsAndTheScrollBarScrolls) {
    field->SetText(Lines(10));
    // A click on the third shown line, then a drag to the first line's start.
    Click({kLeft + 3 * 8, kFirstLine + 2 * 12 + 5});
    EXPECT_EQ(field->Cursor(), 14u + 3);
    Mouse(kGorbButton1Down, {kLeft + 2 * 8, kFirstLine + 5}, kGorbLeftShift);
    Mouse(kGorbButton1Up, {kLeft + 2 * 8, kFirstLine + 5});
    EXPECT_EQ(field->SelectionStart(), 2u);
    EXPECT_EQ(field->SelectionEnd(), 17u);
    // A drag below the box scrolls the text along.
    Mouse(kGorbButton1Down, {kLeft, kFirstLine + 5});
    Mouse(kGorbMouseMove, {kLeft, kFirstLine + 4 * 12 + 20});
    EXPECT_EQ(field->Top(), 2);
    Mouse(kGorbButton1Up, {kLeft, kFirstLine + 4 * 12 + 20});
    EXPECT_EQ(field->SelectionStart(), 0u);

    field->SetTop(0);
    const std::size_t cursor = field->Cursor();
    Click({kBarX, 98});  // the lower arrow
    EXPECT_EQ(field->Top(), 1);
    Click({kBarX, 45});  // the upper arrow
    EXPECT_EQ(field->Top(), 0);
    // The grip (14 of the 32-pixel track) dragged to the bottom shows the last lines.
    Mouse(kGorbButton1Down, {kBarX, 60});
    Mouse(kGorbMouseMove, {kBarX, 95});
    EXPECT_EQ(field->Top(), 6);
    Mouse(kGorbButton1Up, {kBarX, 95});
    EXPECT_EQ(field->Cursor(), cursor);  // the bar leaves the cursor where it was
    Click({kBarX, 62});                    // the track above the grip pages up
    EXPECT_EQ(field->Top(), 2);
}

}  // namespace
}  // namespace sondrel
