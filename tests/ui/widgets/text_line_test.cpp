#include "ui/widgets/text_line.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ui/toolkit_fixture.h"

namespace sondrel {
namespace {

class TextLineTest : public ToolkitFixture {
protected:
    void SetUp() override {
        line->SetClipboard(&clipboard);
        toolkit.Focus(window, line);
    }
    Entries ValueEntries() {
        Entries out;
        for (const QueueEntry& entry : Drain())
            if (entry.kind == kEntryValue) out.push_back(entry);
        return out;
    }

    Window* window = Restart({0, 0, 400, 300});
    TextLine* line = &window->Emplace<TextLine>(7, Gorb_Rect{20, 40, 200, 20}, 10);
    TextLine* other = &window->Emplace<TextLine>(8, Gorb_Rect{20, 80, 200, 20});
    FakeClipboard clipboard;
};

TEST_F(TextLineTest, EditingKeysChangeTextCursorAndSelection) {
    using T = TextLine;
    struct Case {
        const char* name;
        std::vector<Stroke> strokes;
        std::string text;
        std::size_t cursor, selStart, selEnd;
        std::string clipboard = "";
        bool lettersOnly = false;  // a filter that upper-cases letters and drops the rest
    };
    const Case cases[] = {
        {"insert in the middle", {{T::kKeyLeft}, {T::kKeyLeft}, Type('X')}, "abcXde", 4, 4, 4},
        {"backspace and delete", {{T::kKeyHome}, {T::kKeyDelete}, {T::kKeyEnd}, {T::kKeyBackspace}}, "bcd", 3, 3, 3},
        {"backspace at the start", {{T::kKeyHome}, {T::kKeyBackspace}, {T::kKeyLeft}}, "abcde", 0, 0, 0},
        {"shift selects, typing replaces", {Shift(T::kKeyLeft), Shift(T::kKeyLeft), Type('Z')}, "abcZ", 4, 4, 4},
        {"shift+home selects to the start", {{T::kKeyLeft}, Shift(T::kKeyHome)}, "abcde", 0, 0, 4},
        {"copy leaves the text", {Shift(T::kKeyHome), Ctrl(T::kKeyC)}, "abcde", 0, 0, 5, "abcde"},
        {"cut removes the selection", {{T::kKeyHome}, Shift(T::kKeyRight), Ctrl(T::kKeyX)}, "bcde", 0, 0, 0, "a"},
        {"paste stops at the maximum length", {Ctrl(T::kKeyV)}, "abcdeclipb", 10, 10, 10, "clipboard!"},
        {"typing stops at the maximum length", {Type('1'), Type('2'), Type('3'), Type('4'), Type('5'), Type('6')},
         "abcde12345", 10, 10, 10},
        {"select all then delete", {Ctrl(T::kKeyA), {T::kKeyDelete}}, "", 0, 0, 0},
        {"filtered typing and paste", {Type('a'), Type('1'), Ctrl(T::kKeyV)}, "abcdeACLIP", 10, 10, 10, "", true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        line->SetText("abcde");
        clipboard.text = "clipboard!";
        line->SetFilter(c.lettersOnly ? TextLine::Filter(UpperLetters) : TextLine::Filter{});
        EXPECT_TRUE(Keys(c.strokes));
        EXPECT_EQ(line->Text(), c.text);
        EXPECT_EQ(line->Cursor(), c.cursor);
        EXPECT_EQ(line->SelectionStart(), c.selStart);
        EXPECT_EQ(line->SelectionEnd(), c.selEnd);
        if (!c.clipboard.empty()) {
            EXPECT_EQ(clipboard.text, c.clipboard);
        }
    }
}

TEST_F(TextLineTest, EditsReturnAndLosingTheFocusQueueEntries) {
    EXPECT_FALSE(Keys({{TextLine::kKeyEscape}}));  // left for the dialog
    // Each stroke that changes the text tells its length; moving the cursor
    // tells nothing; Return tells the number in numeric mode.
    const auto notes = [&](const std::vector<Stroke>& strokes) {
        Keys(strokes);
        return Drain();
    };
    EXPECT_EQ(notes({Type('a'), Type('b'), {TextLine::kKeyLeft}, {TextLine::kKeyBackspace}, {TextLine::kKeyEnter}}),
              (Entries{{kEntryTextChanged, 7, 1}, {kEntryTextChanged, 7, 2},
                                       {kEntryTextChanged, 7, 1}, {kEntryTextReturn, 7, 0}}));
    line->SetNumeric(0, 50);
    line->SetText("77");
    EXPECT_EQ(notes({{TextLine::kKeyEnter}}), (Entries{{kEntryTextReturn, 7, 50}}));
    EXPECT_EQ(line->Text(), "50");
    line->SetNumeric(-100000, 100000);
    line->SetText("");
    Click({30, 90});
    EXPECT_EQ(window->Focus(), other);
    EXPECT_EQ(ValueEntries(), (Entries{{kEntryValue, 7, 0}}));
}

TEST_F(TextLineTest, MouseSetsTheCursorAndDragsOrShiftClicksASelection) {
    line->SetText("abcdefgh");
    const int left = 20 + 3;  // the text starts after the padding; 8 pixels a character without a font
    Click({left + 2 * 8 + 1, 50});
    EXPECT_EQ(line->Cursor(), 2u);
    EXPECT_EQ(line->SelectionStart(), line->SelectionEnd());
    Click({left + 5 * 8, 50}, kGorbLeftShift);
    EXPECT_EQ(line->SelectionStart(), 2u);
    EXPECT_EQ(line->SelectionEnd(), 5u);
    Mouse(kGorbButton1Down, {left + 6 * 8, 50});
    Mouse(kGorbMouseMove, {left + 1 * 8, 50});
    Mouse(kGorbButton1Up, {left + 1 * 8, 50});
    EXPECT_EQ(line->SelectionStart(), 1u);
    EXPECT_EQ(line->SelectionEnd(), 6u);
    EXPECT_EQ(line->Cursor(), 1u);
}

TEST_F(TextLineTest, NumericModeStepsWithinItsRangeAndCommitsOnRelease) {
    line->SetNumeric(-3, 40);
    const int buttons = 20 + 200 - 6;
    struct Case {
        int32_t start, y;  // the plus button is the upper half
        double held;
        int32_t committed;
    };
    const Case cases[] = {{30, 42, 0.05, 36}, {36, 55, 0.1, 25}, {39, 42, 0.05, 40}, {-2, 55, 0.05, -3}};
    for (const Case& c : cases) {
        line->SetNumber(c.start);
        ValueEntries();
        Mouse(kGorbButton1Down, {buttons, c.y});
        now += c.held;
        Update();  // the held button repeats every tick
        Mouse(kGorbButton1Up, {buttons, c.y});
        EXPECT_EQ(ValueEntries(), (Entries{{kEntryValue, 7, static_cast<uint32_t>(c.committed)}}))
            << "from " << c.start;
    }
    EXPECT_TRUE(Keys({Ctrl(TextLine::kKeyA), Type('x'), Type('-'), Type('5')}));
    EXPECT_EQ(line->Text(), "-5");
    ValueEntries();
    toolkit.Focus(window, other);  // leaving clamps to the minimum
    EXPECT_EQ(line->Text(), "-3");
    EXPECT_EQ(ValueEntries(), (Entries{{kEntryValue, 7, static_cast<uint32_t>(-3)}}));
}

}  // namespace
}  // namespace sondrel
