#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "model/exception.h"
#include "ui/toolkit_fixture.h"
#include "ui/widgets/list_box.h"

namespace sondrel {
namespace {

// A 20-line list at (10,10), 200x100 with 12-pixel lines and no header: eight
// lines show, line i (from the top one) at y = 18 + 12 * i.
class ListBoxTest : public ToolkitFixture {
protected:
    void SetUp() override {
        list->SetColumns({{40, "%3d", ""}, {150, "%-10s", ""}});
        list->SetLineHeight(12);
        std::vector<ListLine> lines;
        for (int i = 0; i < 20; ++i) lines.push_back({ListCell{i}, ListCell{"line " + std::to_string(i)}});
        list->SetLines(std::move(lines));
        list->SetExtended(true);
    }
    void ClickLine(int line, uint32_t modifiers = 0) {
        const Point at{50, 18 + 12 * (line - list->Top())};
        Mouse(kGorbMouseMove, at);
        Click(at, modifiers);
    }
    std::set<int> Selection() const {
        std::set<int> out;
        for (int i = 0; i < list->LineCount(); ++i)
            if (list->Selected(i)) out.insert(i);
        return out;
    }

    Window* window = Restart({0, 0, 320, 200});
    ListBox* list = &window->Emplace<ListBox>(21, Gorb_Rect{10, 10, 200, 100});
};

TEST_F(ListBoxTest, ClicksSelectExtendAndToggleLines) {
    struct Step {
        int line;
        uint32_t modifiers;
        std::set<int> selection;
    };
    struct Case {
        bool extended;
        std::vector<Step> steps;
    };
    const Case cases[] = {
        {true, {{2, 0, {2}}, {5, kGorbLeftShift, {2, 3, 4, 5}}, {0, kGorbRightShift, {0, 1, 2}}}},
        // Ctrl moves the anchor Shift extends from.
        {true, {{2, 0, {2}}, {4, kGorbLeftCtrl, {2, 4}}, {2, kGorbLeftCtrl, {4}}, {6, kGorbShift, {2, 3, 4, 5, 6}}}},
        {true, {{3, 0, {3}}, {1, 0, {1}}}},
        // A single-selection list ignores the modifiers.
        {false, {{2, 0, {2}}, {5, kGorbLeftShift, {5}}, {7, kGorbLeftCtrl, {7}}}},
    };
    for (const Case& c : cases) {
        list->SetExtended(c.extended);
        list->Select(-1);
        for (const Step& step : c.steps) {
            SCOPED_TRACE(testing::Message() << "extended " << c.extended << " line " << step.line);
            now += 1;  // never a double click
            ClickLine(step.line, step.modifiers);
            EXPECT_EQ(Selection(), step.selection);
            EXPECT_EQ(list->Current(), step.line);
            EXPECT_EQ(Drain(), (Entries{{kEntryListLine, 21, static_cast<uint32_t>(step.line)}}));
        }
    }
    // Below the last line nothing changes.
    list->SetLines({{ListCell{1}}});
    ClickLine(3);
    EXPECT_EQ(list->Current(), -1);
    EXPECT_TRUE(Drain().empty());
}

TEST_F(ListBoxTest, TwoPressesOnOneLineWithinTheTimeMakeADoubleClick) {
    struct Case {
        int second;       // line of the second press
        double after;     // seconds after the first
        bool doubled;
    };
    const Case cases[] = {{3, 0.1, true}, {3, 0.4, true}, {3, 0.5, false}, {4, 0.1, false}};
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.second << " after " << c.after);
        now += 10;
        ClickLine(3);
        now += c.after;
        ClickLine(c.second);
        const uint32_t line = static_cast<uint32_t>(c.second);
        Entries expected{{kEntryListLine, 21, 3}, {kEntryListLine, 21, line}};
        if (c.doubled) expected.push_back({kEntryListActivate, 21, line});
        EXPECT_EQ(Drain(), expected);
    }
    // A third quick press starts a new pair.
    now += 10;
    for (int i = 0; i < 3; ++i) ClickLine(3);
    EXPECT_EQ(Drain(), (Entries{{kEntryListLine, 21, 3}, {kEntryListLine, 21, 3}, {kEntryListActivate, 21, 3},
                                                {kEntryListLine, 21, 3}}));
}

TEST_F(ListBoxTest, NavigationKeysMoveTheCurrentLineAndKeepItVisible) {
    struct Case {
        int from;
        uint16_t key;
        uint32_t modifiers;
        int to;
        int top;
        std::set<int> selection;
    };
    const Case cases[] = {
        {5, kKeyDown, 0, 6, 0, {6}},      {5, kKeyUp, 0, 4, 0, {4}},
        {0, kKeyUp, 0, 0, 0, {0}},        {7, kKeyDown, 0, 8, 1, {8}},
        {0, kKeyPageDown, 0, 8, 1, {8}},  {19, kKeyPageUp, 0, 11, 11, {11}},
        {3, kKeyEnd, 0, 19, 12, {19}},    {19, kKeyHome, 0, 0, 0, {0}},
        {17, kKeyPageDown, 0, 19, 12, {19}},
        {2, kKeyDown, kGorbLeftShift, 3, 0, {2, 3}},
        {4, kKeyHome, kGorbShift, 0, 0, {0, 1, 2, 3, 4}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << "from " << c.from << " key " << c.key);
        list->SetTop(0);
        list->Select(c.from);
        toolkit.Focus(window, list);
        Key(c.key, c.modifiers);
        EXPECT_EQ(list->Current(), c.to);
        EXPECT_EQ(list->Top(), c.top);
        EXPECT_EQ(Selection(), c.selection);
        EXPECT_EQ(Drain(), (Entries{{kEntryListLine, 21, static_cast<uint32_t>(c.to)}}));
    }
}

TEST_F(ListBoxTest, WheelScrollsWithinTheLines) {
    const Point over{50, 50};
    Mouse(kGorbMouseMove, over);
    const struct {
        int type;
        int top;
        uint32_t entry;
    } steps[] = {{kGorbWheelDown, 3, kEntryWheelWidgetDown}, {kGorbWheelDown, 6, kEntryWheelWidgetDown},
                 {kGorbWheelDown, 9, kEntryWheelWidgetDown}, {kGorbWheelDown, 12, kEntryWheelWidgetDown},
                 {kGorbWheelDown, 12, kEntryWheelWidgetDown}, {kGorbWheelUp, 9, kEntryWheelWidgetUp}};
    for (const auto& step : steps) {
        Mouse(step.type, over);
        EXPECT_EQ(list->Top(), step.top);
        EXPECT_EQ(Drain(), (Entries{{step.entry, 21, 0}}));
    }
    // Lines are counted from the scrolled top.
    ClickLine(10);
    EXPECT_EQ(Selection(), (std::set<int>{10}));
}

TEST_F(ListBoxTest, AttachedScrollBarMovesTheTopLineInStepWithTheKeys) {
    // Eight of twenty lines show, so the bar stands at x 194-207, y 12-107,
    // with 14-pixel arrows and a 27-pixel grip on the 68-pixel track.
    const int x = 200;
    const auto click = [&](int y) { Click({x, y}); };
    click(100);  // the lower arrow
    EXPECT_EQ(list->Top(), 1);
    Mouse(kGorbButton1Down, {x, 40});  // the grip, dragged to the bottom
    Mouse(kGorbMouseMove, {x, 107});
    EXPECT_EQ(list->Top(), 12);
    Mouse(kGorbButton1Up, {x, 107});
    EXPECT_EQ(list->Current(), -1);
    EXPECT_TRUE(Drain().empty());
    // The bar starts from where the keys left the list.
    Key(kKeyHome);
    click(100);
    EXPECT_EQ(list->Top(), 1);
    click(15);  // the upper arrow
    EXPECT_EQ(list->Top(), 0);
    // With every line shown there is no bar: the click selects a line.
    list->SetLines({{ListCell{1}}, {ListCell{2}}});
    click(20);
    EXPECT_EQ(list->Current(), 0);
}

TEST_F(ListBoxTest, DisabledListIgnoresClicksKeysAndTheWheel) {
    list->Select(2);
    list->SetEnabled(false);
    ClickLine(5);
    Key(kKeyDown);
    Mouse(kGorbMouseMove, {50, 50});
    Mouse(kGorbWheelDown, {50, 50});
    EXPECT_EQ(Selection(), (std::set<int>{2}));
    EXPECT_EQ(list->Top(), 0);
    for (const QueueEntry& entry : Drain()) EXPECT_NE(entry.kind, kEntryListLine);
}

TEST(ListCellFormat, WritesCellsThroughTheColumnFormatAndRejectsBadOnes) {
    EXPECT_EQ(FormatListCell("%3d", ListCell{7}), "  7");
    EXPECT_EQ(FormatListCell("%02X h", ListCell{10}), "0A h");
    EXPECT_EQ(FormatListCell("[%-4s] 100%%", ListCell{"ab"}), "[ab  ] 100%");
    EXPECT_EQ(FormatListCell("%4S|", ListCell{"abcdef"}), "abcd|");
    EXPECT_EQ(FormatListCell("%4S|", ListCell{"ab"}), "ab  |");
    EXPECT_EQ(FormatListCell("ch %2D", ListCell{7}), "ch  7");
    EXPECT_EQ(FormatListCell("", ListCell{-5}), "-5");
    EXPECT_EQ(FormatListCell("", ListCell{"x"}), "x");
    for (const char* bad : {"%s", "%d %d", "none", "%ld", "%*d", "%n"}) {
        SCOPED_TRACE(bad);
        EXPECT_THROW(FormatListCell(bad, ListCell{1}), ParseException);
    }
    EXPECT_THROW(FormatListCell("%d", ListCell{"text"}), ParseException);
    ListBox list(1, {0, 0, 10, 10});
    EXPECT_THROW(list.SetColumns({{10, "%q", ""}}), ParseException);
}

}  // namespace
}  // namespace sondrel
