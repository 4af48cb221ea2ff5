#include <gtest/gtest.h>

#include <memory>

#include "screens/pattern_view/pattern_view.h"
#include "sound/song_player.h"

namespace sondrel {
namespace {

constexpr uint32_t kLeftShift = 1;
constexpr uint32_t kRightShift = 2;
constexpr uint32_t kLeftCtrl = 4;

// Pattern 0 has 64 lines, pattern 1 has 20 (shorter than the grid); the
// pattern list is 0, 1, 0, 1, ... over `listLength` entries.
struct Fixture {
    std::unique_ptr<Module> module = std::make_unique<Module>();
    std::unique_ptr<PatternView> view;

    explicit Fixture(int listLength = 2) {
        module->NewModule({});
        module->CreatePattern(1);
        module->patterns[1].length = 20;
        module->patternListLength = static_cast<uint16_t>(listLength);
        for (int i = 0; i < listLength; ++i) module->patternList[i] = static_cast<uint8_t>(i % 2);
        view = std::make_unique<PatternView>(*module);
    }
    const PatternViewState& S() const { return view->State(); }
    void Cursor(int column, int line) { view->RestoreState({column, line, column, line, S().listPosition}); }
    void ListTop(int top) { view->EnsureListRangeVisible(top, kPatternListVisibleLines); }
};

TEST(PatternViewTest, MoveCursorClampsScrollsAndKeepsTheAnchorOnlyWithShift) {
    struct Case {
        int pattern, column, line, top;
        uint32_t modifiers;
        int dx, dy;
        int wantColumn, wantLine, wantAnchorColumn, wantAnchorLine, wantTop;
    };
    const Case cases[] = {
        {0, 0, 0, 0, 0, 0, 1, 0, 1, 0, 1, 0},                   // down, anchor follows
        {0, 0, 0, 0, kLeftShift, 3, 2, 3, 2, 0, 0, 0},          // shift grows the frame
        {0, 0, 0, 0, kRightShift, 3, 0, 3, 0, 0, 0, 0},         // either shift key
        {0, 5, 5, 0, kLeftCtrl, 1, 0, 6, 5, 6, 5, 0},           // ctrl is no shift
        {0, 0, 0, 0, 0, -1, -1, 0, 0, 0, 0, 0},                 // top-left corner holds
        {0, 10, 0, 0, 0, 20, 0, 12, 0, 12, 0, 0},               // last column is 12
        {0, 0, 0, 0, 0, 0, 32, 0, 32, 0, 32, 1},                // page down: line 32 is the 33rd row
        {0, 0, 0, 0, 0, 0, 31, 0, 31, 0, 31, 0},                // line 31 is still on view
        {0, 0, 0, 0, 0, 0, 256, 0, 63, 0, 63, 32},              // end
        {0, 0, 63, 32, 0, 0, -256, 0, 0, 0, 0, 0},              // home
        {0, 0, 40, 20, 0, 0, -13, 0, 27, 0, 27, 20},            // up inside the view
        {0, 0, 40, 20, 0, 0, -21, 0, 19, 0, 19, 19},            // up past the top
        {1, 0, 0, 0, 0, 0, 256, 0, 19, 0, 19, 0},               // short pattern never scrolls
        {1, 0, 0, 0, kLeftShift, 0, 25, 0, 19, 0, 0, 0},
    };
    for (const Case& c : cases) {
        Fixture f;
        f.view->SetListPosition(static_cast<uint8_t>(c.pattern));
        f.Cursor(c.column, c.line);
        f.view->ScrollTo(c.top);
        f.view->MoveCursor(c.modifiers, c.dx, c.dy);
        SCOPED_TRACE(testing::Message() << c.column << "," << c.line << " by " << c.dx << "," << c.dy);
        EXPECT_EQ(f.S().cursorColumn, c.wantColumn);
        EXPECT_EQ(f.S().cursorLine, c.wantLine);
        EXPECT_EQ(f.S().anchorColumn, c.wantAnchorColumn);
        EXPECT_EQ(f.S().anchorLine, c.wantAnchorLine);
        EXPECT_EQ(f.S().topLine, c.wantTop);
    }
}

TEST(PatternViewTest, SetCursorLineCollapsesLinesButKeepsColumns) {
    Fixture f;
    f.view->RestoreState({2, 10, 5, 15, 0});
    f.view->SetCursorLine(40);
    EXPECT_EQ(f.view->SaveState(), (EditorPosition{2, 55, 5, 55, 0}));
    EXPECT_EQ(f.S().topLine, 24);
    f.view->SetCursorLine(-100);
    EXPECT_EQ(f.view->SaveState(), (EditorPosition{2, 0, 5, 0, 0}));
    EXPECT_EQ(f.S().topLine, 0);
}

TEST(PatternViewTest, EnsureLinesVisibleMovesTheTopAsLittleAsItCan) {
    struct Case {
        int top, first, count, wantTop;
    };
    const Case cases[] = {
        {0, 40, 1, 9},    // below the view
        {20, 10, 5, 10},  // above it
        {5, 10, 20, 5},   // already on view
        {0, 10, 40, 10},  // more than a screen: its first 32 lines
        {0, 50, 20, 32},  // past the end: clamped
        {30, -5, 3, 0},
    };
    for (const Case& c : cases) {
        Fixture f;
        f.view->ScrollTo(c.top);
        f.view->EnsureLinesVisible(c.first, c.count);
        EXPECT_EQ(f.S().topLine, c.wantTop) << c.first << "+" << c.count << " from " << c.top;
    }
}

TEST(PatternViewTest, SelectionIsReadAndSetAsARectangle) {
    Fixture f;
    f.view->RestoreState({9, 30, 4, 12, 0});  // cursor above and left of the anchor
    EXPECT_EQ(f.view->GetSelection(), (SelectionFrame{4, 12, 6, 19}));

    f.view->SetSelection({2, 5, 1, 1});  // one cell: both corners on it
    EXPECT_EQ(f.view->SaveState(), (EditorPosition{2, 5, 2, 5, 0}));
    f.view->SetSelection({2, 5, 4, 3});  // the cursor goes to the far corner
    EXPECT_EQ(f.view->SaveState(), (EditorPosition{2, 5, 5, 7, 0}));
    f.view->SetSelection({0, 2, 3, 4});  // the anchor is on the far edge: the cursor takes the near one
    EXPECT_EQ(f.view->SaveState(), (EditorPosition{2, 5, 0, 2, 0}));
    // An anchor strictly inside is left there, so the frame read back differs.
    f.view->SetSelection({0, 0, 13, 20});
    EXPECT_EQ(f.view->SaveState(), (EditorPosition{2, 5, 12, 19, 0}));
    EXPECT_EQ(f.view->GetSelection(), (SelectionFrame{2, 5, 11, 15}));
}

TEST(PatternViewTest, ClampSelectionAndSelectAllFollowThePatternLength) {
    Fixture f;
    f.view->SetListPosition(1);
    f.view->RestoreState({-3, 300, 15, -5, 1});
    EXPECT_EQ(f.view->SaveState(), (EditorPosition{0, 19, 12, 0, 1}));

    f.view->SelectAllLines();
    EXPECT_EQ(f.S().anchorLine, 0);
    EXPECT_EQ(f.S().cursorLine, 20);  // one past the end until clamped
    f.view->ClampSelection();
    EXPECT_EQ(f.view->GetSelection(), (SelectionFrame{0, 0, 13, 20}));
}

TEST(PatternViewTest, HalveAndDoubleScaleTheLineExtent) {
    enum Op { kHalve, kDouble };
    struct Case {
        Op op;
        int anchor, cursor, wantAnchor, wantCursor;
    };
    const Case cases[] = {
        {kHalve, 0, 4, 0, 2},     // 5 lines become 3 (rounded up)
        {kHalve, 4, 0, 2, 0},     // cursor above: the anchor moves
        {kHalve, 5, 0, 2, 0},
        {kHalve, 10, 15, 10, 12}, // 6 lines become 3
        {kHalve, 7, 7, 7, 7},
        {kDouble, 0, 4, 0, 9},    // 5 lines become 10
        {kDouble, 4, 0, 9, 0},
        {kDouble, 3, 3, 4, 3},    // one line becomes two
        {kDouble, 40, 60, 40, 63},  // clamped to the pattern
    };
    for (const Case& c : cases) {
        Fixture f;
        f.view->RestoreState({0, c.anchor, 0, c.cursor, 0});
        c.op == kHalve ? f.view->HalveSelection() : f.view->DoubleSelection();
        EXPECT_EQ(f.S().anchorLine, c.wantAnchor) << c.op << " " << c.anchor << ".." << c.cursor;
        EXPECT_EQ(f.S().cursorLine, c.wantCursor) << c.op << " " << c.anchor << ".." << c.cursor;
    }
}

TEST(PatternViewTest, ListPositionCarriesThePatternShown) {
    Fixture f(3);
    f.module->patternList[2] = 7;
    f.view->SetListPosition(2);
    EXPECT_EQ(f.S().currentPattern, 7);

    f.view->MoveCursor(0, 4, 40);
    const EditorPosition saved = f.view->SaveState();
    EXPECT_EQ(saved, (EditorPosition{4, 40, 4, 40, 2}));
    f.view->SetListPosition(0);
    EXPECT_EQ(f.S().topLine, 9);
    // Restoring takes the pattern from the list as it stands now, and clamps to it.
    f.module->patternList[2] = 1;
    f.view->RestoreState(saved);
    EXPECT_EQ(f.S().listPosition, 2);
    EXPECT_EQ(f.S().currentPattern, 1);
    EXPECT_EQ(f.view->SaveState(), (EditorPosition{4, 19, 4, 19, 2}));
    EXPECT_EQ(f.S().topLine, 0);

    // A new module puts the view back to the start but keeps the edit settings.
    f.view->Settings().currentInstrument = 5;
    f.view->Settings().lineStep = 4;
    f.module->patternList[0] = 1;
    f.view->SetModule(*f.module);
    EXPECT_EQ(f.view->SaveState(), EditorPosition{});
    EXPECT_EQ(f.S().currentPattern, 1);
    EXPECT_EQ(f.view->Settings().currentInstrument, 0);
    EXPECT_EQ(f.view->Settings().lineStep, 4);
}

TEST(PatternViewTest, PatternListScrollsWithinTheList) {
    enum Op { kCenter, kEnsure, kClamp, kRange };
    struct Case {
        int listLength, visible, top;
        Op op;
        int position;  // list position, or the range's first entry
        int count;
        int wantTop;
    };
    const Case cases[] = {
        {20, 9, 0, kCenter, 0, 0, 0},
        {20, 9, 0, kCenter, 10, 0, 6},
        {20, 9, 0, kCenter, 19, 0, 11},   // never past the last full box
        {20, 9, 0, kEnsure, 15, 0, 7},
        {20, 9, 5, kEnsure, 2, 0, 2},
        {20, 9, 2, kEnsure, 5, 0, 2},
        {20, 9, 11, kEnsure, 19, 0, 11},
        {5, 9, 0, kCenter, 4, 0, 0},      // a list shorter than the box
        {5, 9, 10, kClamp, 0, 0, 0},      // the list shrank under the box
        {15, 9, 10, kClamp, 0, 0, 6},
        {20, 9, 0, kRange, 10, 20, 10},   // a long range shows its first entries
        {20, 9, 0, kRange, 18, 5, 11},
        {20, 9, 5, kRange, 1, 3, 1},
        {20, 5, 0, kRange, 10, 3, 4},     // ranges are kept in view against 9 entries
        {20, 5, 0, kEnsure, 10, 0, 6},    // a single position against the box's own height
    };
    for (const Case& c : cases) {
        Fixture f(c.op == kClamp ? 20 : c.listLength);
        f.view->SetPatternListVisible(c.visible);
        f.ListTop(c.top);
        ASSERT_EQ(f.S().patternListTop, c.top);
        switch (c.op) {
            case kCenter: f.view->SetListPosition(static_cast<uint8_t>(c.position)); f.view->CenterListPosition(); break;
            case kEnsure: f.view->SetListPosition(static_cast<uint8_t>(c.position)); f.view->EnsureListPositionVisible(); break;
            case kClamp: f.module->patternListLength = static_cast<uint16_t>(c.listLength); f.view->ClampPatternListTop(); break;
            case kRange: f.view->EnsureListRangeVisible(c.position, c.count); break;
        }
        EXPECT_EQ(f.S().patternListTop, c.wantTop)
            << "op " << c.op << " at " << c.position << " of " << c.listLength << " from " << c.top;
    }
}

TEST(PatternViewTest, RestoreFromPlayerFollowsThePlayPosition) {
    Fixture f(30);
    auto player = std::make_unique<SongPlayer>();
    player->Attach(*f.module);
    f.view->MoveCursor(0, 3, 60);

    player->Start(40, 20, false);
    f.view->RestoreFromPlayer(*player);
    EXPECT_EQ(f.S().playLine, 40);
    EXPECT_TRUE(f.S().followPlay);
    EXPECT_EQ(f.S().listPosition, 20);
    EXPECT_EQ(f.S().currentPattern, 0);
    EXPECT_EQ(f.S().patternListTop, 16);
    EXPECT_EQ(f.S().topLine, 24);
    EXPECT_EQ(f.view->SaveState(), (EditorPosition{3, 60, 3, 60, 20}));  // the cursor stays

    player->Start(10, 29, false);  // a 20-line pattern at the end of the list
    player->Stop();
    f.view->RestoreFromPlayer(*player);
    EXPECT_FALSE(f.S().followPlay);
    EXPECT_EQ(f.S().currentPattern, 1);
    EXPECT_EQ(f.S().patternListTop, 21);
    EXPECT_EQ(f.S().topLine, 0);
    EXPECT_EQ(f.view->SaveState(), (EditorPosition{3, 19, 3, 19, 29}));
}

}  // namespace
}  // namespace sondrel
