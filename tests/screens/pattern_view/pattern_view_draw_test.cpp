#include <gtest/gtest.h>

#include <filesystem>

#include <array>
#include <memory>
#include <string>
#include <vector>

#include "model/notes.h"
#include "screens/pattern_view/pattern_rows.h"
#include "screens/pattern_view/pattern_view_drawer.h"
#include "test_support.h"
#include "ui/painter.h"
#include "ui/widgets/check_button.h"
#include "ui/widgets/image.h"
#include "ui/widgets/list_box.h"

namespace sondrel {
namespace {

// The font sheet's two colours as the grid shows them.
constexpr uint16_t kNormalInk = 0xEF7E;  // 0xE8ECF2
constexpr uint16_t kDimmedInk = 0x5B2F;  // 0x5A6478

PatternLine EmptyLine() {
    PatternLine line{};
    line.Clear();
    return line;
}

TEST(PatternRowTextTest, FieldsReadAsTheGridShowsThem) {
    PatternLine full = EmptyLine();
    full.note = {48, 246, 60, 251};
    full.detune = {-5, 12, 0, 7};
    full.instrument = {3, 15, 0, 9};
    full.volume = {15, 7, 0, 12};
    full.channelCommand = {kChannelCommandPV, kChannelCommandVO, 0, 0};
    full.channelParam = {5, 12, 0, 0};
    full.command = kCommandSP;
    full.commandParam = 255;
    EXPECT_EQ(PatternRowText(full, 42).text,
              " 42&&C 2&-5 &I 3&V15&PV   5&&Nul&+12&I15&V 7&VO  12&&C 3&   &I 0&V 0&-- ---&&WHi&   &I 9&V12&-- ---&&"
              "SP31.9");

    struct Case {
        const char* what;
        int line, at;
        uint8_t note, command, param;
        const char* want;
    };
    const Case cases[] = {
        {"line 0", 0, 0, 255, 0, 0, "  0"},
        {"line 7", 7, 0, 255, 0, 0, "  7"},
        {"line 100", 100, 0, 255, 0, 0, "100"},
        {"empty cell", 1, 5, 255, 0, 0, "---&   &---&---&-- ---"},
        {"invalid note", 1, 5, 200, 0, 0, "???&   &   &   &"},
        {"speed 0", 1, kCommandField, 255, kCommandSP, 0, "SP  .0"},
        {"speed 79", 1, kCommandField, 255, kCommandSP, 79, "SP 9.9"},
        {"speed 80", 1, kCommandField, 255, kCommandSP, 80, "SP10.0"},
        {"speed eighths", 1, kCommandField, 255, kCommandSP, 12, "SP 1.5"},
        {"stereo", 1, kCommandField, 255, kCommandST, 0x3A, "ST  3A"},
        {"unknown command", 1, kCommandField, 255, 9, 1, "??    "},
        {"no command", 1, kCommandField, 255, 0, 0, "      "},
    };
    for (const Case& c : cases) {
        PatternLine line = EmptyLine();
        line.note[0] = c.note;
        line.command = c.command;
        line.commandParam = c.param;
        const std::string text = PatternRowText(line, c.line).text;
        ASSERT_EQ(text.size(), static_cast<size_t>(kRowTextLength));
        EXPECT_EQ(text.substr(c.at, std::string(c.want).size()), c.want) << c.what;
    }
    EXPECT_EQ(BlankRowText().text, std::string(kRowTextLength, ' '));
}

TEST(PatternRowTextTest, NotesAChannelCannotPlayAreDimmed) {
    struct Case {
        int channel;
        uint8_t note, channelCommand;
        bool noteDimmed, commandDimmed;
    };
    const Case cases[] = {
        {0, 44, 0, true, false},  {0, 45, 0, false, false},  {2, 119, 0, false, false},
        {1, 120, 0, true, false}, {0, 247, 0, true, false},  {0, 200, 0, true, false},
        {3, 60, 0, true, false},  {3, 254, 0, false, false}, {3, kNoteNull, 0, false, false},
        {0, kNoteEmpty, 0, false, false},
        {3, 247, kChannelCommandPV, false, true},  // the noise channel ignores "PV"
        {3, 247, kChannelCommandVO, false, false}, {0, 60, kChannelCommandPV, false, false},
    };
    for (const Case& c : cases) {
        PatternLine line = EmptyLine();
        line.note[c.channel] = c.note;
        line.channelCommand[c.channel] = c.channelCommand;
        const RowText row = PatternRowText(line, 0);
        const int base = kChannelBlockChars * c.channel;
        const std::string what = "channel " + std::to_string(c.channel) + " note " + std::to_string(c.note);
        for (int i = base + kNoteField; i < base + kChannelBlockChars + 3; ++i) {
            if (row.text[i] == kRowGap) continue;  // a gap has no ink to colour
            const bool want = i >= base + kChannelCommandField ? c.commandDimmed : c.noteDimmed;
            EXPECT_EQ(row.colours[i] == kRowDimmed, want) << what << " at " << i;
        }
        // Nothing outside the channel's own block changes colour.
        for (int i = 0; i < kRowTextLength; ++i) {
            if (i < base + kNoteField || i >= base + kChannelBlockChars + 3) {
                EXPECT_EQ(row.colours[i], kRowNormal) << what;
            }
        }
    }
}

// Every channel command's text and parameter as channels 0 and 3 show them:
// the effects that take two hex digits show them, the others a decimal
// number like "PV" and "VO"; the noise channel dims the commands it ignores.
TEST(PatternRowTextTest, ChannelCommandsReadByKindAndDimOnTheNoiseChannel) {
    struct Case {
        uint8_t command, param;
        const char* field;  // text and parameter
        bool dimmedOnNoise;
    };
    const Case cases[] = {
        {kChannelCommandNone, 9, "-- ---", false},  {kChannelCommandPV, 5, "PV   5", true},
        {kChannelCommandVO, 12, "VO  12", false},   {kEffectArpeggio, 0x47, "AR  47", true},
        {kEffectSlideUp, 2, "SU   2", true},        {kEffectSlideDown, 99, "SD  99", true},
        {kEffectGlide, 40, "GL  40", true},         {kEffectVibrato, 0xA6, "VI  A6", true},
        {kEffectVolumeSlide, 0x0F, "VS  0F", false}, {kEffectNoteCut, 3, "NC   3", false},
        {kEffectNoteDelay, 0, "ND   0", false},     {kEffectRetrigger, 10, "RT  10", false},
        {12, 7, "??   7", false},                   {15, 0, "??   0", false},
    };
    for (const Case& c : cases) {
        for (const int channel : {0, kNoiseChannel}) {
            SCOPED_TRACE(testing::Message() << "command " << int(c.command) << " channel " << channel);
            PatternLine line = EmptyLine();
            line.channelCommand[channel] = c.command;
            line.channelParam[channel] = c.param;
            const RowText row = PatternRowText(line, 0);
            const int at = kChannelBlockChars * channel + kChannelCommandField;
            ASSERT_EQ(row.text.substr(at, 6), c.field);
            const bool dimmed = channel == kNoiseChannel && c.dimmedOnNoise;
            for (int i = 0; i < kRowTextLength; ++i) {
                const bool inField = i >= at && i < at + 6;
                EXPECT_EQ(row.colours[i] == kRowDimmed, inField && dimmed) << i;
            }
        }
    }
}

TEST(PatternRowTextTest, CursorColumnsTileTheRowWithoutOverlap) {
    // Each column starts where the one before ends, except across the
    // double gap between channels, and covers its own fields' glyphs.
    for (int column = 0; column < kGridColumns; ++column) {
        const PixelSpan span = CursorColumnSpan(column);
        EXPECT_GT(span.w, 0) << column;
        if (column > 0) {
            const PixelSpan before = CursorColumnSpan(column - 1);
            const int gap = column % 3 == 0 ? 2 * kRowGapWidth - kRowGapWidth : 0;
            EXPECT_EQ(before.x + before.w + gap, span.x) << column;
        }
    }
    EXPECT_EQ(CursorColumnSpan(0).x, RowPixelX(kNoteField) - 2);
    EXPECT_EQ(CursorColumnSpan(12).x + CursorColumnSpan(12).w, RowPixelX(kRowTextLength) + 2);
    EXPECT_EQ(RowPixelX(kChannelBlockChars + 3) - RowPixelX(3), 168);
}

uint16_t PixelAt(Gorb_Surface& surface, int x, int y) {
    const Gorb_Pixels pixels = surface.Lock();
    const uint16_t value = pixels.Row(y)[x];
    surface.Unlock();
    return value;
}

int CountPixels(Gorb_Surface& surface, const Gorb_Rect& area, uint16_t value) {
    int count = 0;
    for (int y = area.y; y < area.y + area.h; ++y)
        for (int x = area.x; x < area.x + area.w; ++x) count += PixelAt(surface, x, y) == value;
    return count;
}

// Pattern 0 has 64 lines with the main tact every 16 and the secondary every
// 8; pattern 1 has 20 lines. The grid, both lists and the preview are real
// widgets; the hooks record what they were asked.
struct DrawFixture {
    std::unique_ptr<Module> module = std::make_unique<Module>();
    std::unique_ptr<PatternView> view;
    PatternFont font{test::SourceDir() / "data" / PatternFont::kFileName};
    Image grid{1, {0, 0, kGridWidth, kGridHeight}};
    ListBox patterns{2, {0, 0, 200, 110}};
    ListBox instruments{3, {0, 0, 200, 110}};
    Image preview{4, {0, 0, 96, 32}};
    std::array<CheckButton, 4> toggles{CheckButton{5, {}, "0"}, CheckButton{5, {}, "1"}, CheckButton{5, {}, "2"},
                                       CheckButton{5, {}, "3"}};
    std::vector<std::string> calls;
    bool modified = false;
    std::unique_ptr<PatternViewDrawer> drawer;

    DrawFixture() {
        module->NewModule({});
        Pattern& first = module->patterns[0];
        first.tactEnabled = {1, 1};
        first.tactInterval = {16, 8};
        module->CreatePattern(1);
        module->patterns[1].length = 20;
        module->patternListLength = 2;
        module->patternList[1] = 1;
        view = std::make_unique<PatternView>(*module);
        PatternViewWidgets widgets;
        widgets.grid = &grid;
        widgets.patternList = &patterns;
        widgets.instrumentList = &instruments;
        widgets.instrumentPreview = &preview;
        for (size_t c = 0; c < toggles.size(); ++c) {
            toggles[c].SetOn(true);
            widgets.channels[c] = &toggles[c];
        }
        PatternViewHooks hooks;
        hooks.setTitle = [this](const std::string& title) { calls.push_back("title " + title); };
        hooks.modified = [this] { return modified; };
        hooks.refreshMenus = [this] { calls.push_back("menus"); };
        hooks.playerSettings = [this] {
            calls.push_back("settings");
            return PlayerSettingsShown{};
        };
        drawer = std::make_unique<PatternViewDrawer>(*view, widgets, font, hooks);
    }
    void Update(uint32_t bits) {
        view->Invalidate(bits);
        drawer->Update();
    }
    Gorb_Surface& Surface() { return grid.Surface(); }
    static int RowY(int row) { return kGridHeaderHeight + kGridRowHeight * row; }
};

// A channel switched off with its toggle is dimmed on screen, its title
// more than its cells, which stay readable; the grid's own pixels keep
// what was drawn.
TEST(PatternViewDrawTest, ChannelsSwitchedOffAreDimmedOverTheGrid) {
    DrawFixture f;
    f.module->patterns[0].lines[1].note = {48, 48, 48, 255};  // below the cursor on line 0
    f.Update(kRedrawAll);
    const std::vector<uint16_t> drawn = [&] {
        std::vector<uint16_t> out;
        const Gorb_Pixels p = f.Surface().Lock();
        for (int y = 0; y < f.Surface().Height(); ++y) out.insert(out.end(), p.Row(y), p.Row(y) + kGridWidth);
        f.Surface().Unlock();
        return out;
    }();
    f.toggles[1].SetOn(false);
    f.drawer->Update();
    auto screen = Gorb_CreateSurface(kGridWidth, kGridHeight);
    {
        Painter painter(*screen);
        f.grid.Draw(painter, DrawStyle{});
    }
    const auto brightness = [](uint16_t pixel) { return (pixel >> 11) + ((pixel >> 5) & 0x3F) / 2 + (pixel & 0x1F); };
    // The same spot of the header band and of the note "C 2" in channels 0 and 1.
    const int headerX = 40, noteX = kGridTextX + RowPixelX(kNoteField);
    const int bandY = 1, noteY = DrawFixture::RowY(1) + 2;
    int brightestNoteColumn = 0;
    for (int x = 0; x < 8; ++x)
        if (PixelAt(*screen, noteX + x, noteY + 3) > PixelAt(*screen, noteX + brightestNoteColumn, noteY + 3))
            brightestNoteColumn = x;
    const int inkX = noteX + brightestNoteColumn, inkY = noteY + 3;
    ASSERT_EQ(PixelAt(*screen, inkX, inkY), kNormalInk);
    const double band = brightness(PixelAt(*screen, headerX, bandY));
    const double mutedBand = brightness(PixelAt(*screen, headerX + 168, bandY));
    const double ink = brightness(PixelAt(*screen, inkX, inkY));
    const double mutedInk = brightness(PixelAt(*screen, inkX + 168, inkY));
    EXPECT_LT(mutedBand, band * 0.6);
    EXPECT_LT(mutedInk, ink * 0.85);
    EXPECT_GT(mutedInk, ink * 0.55);  // still clearly lighter than the black around it
    EXPECT_EQ(PixelAt(*screen, inkX + 2 * 168, inkY), kNormalInk);  // channel 2 sounds
    // Only the view is dimmed, not the surface the grid rows are drawn into.
    const Gorb_Pixels p = f.Surface().Lock();
    for (int y = 0; y < kGridHeight; ++y)
        ASSERT_TRUE(std::equal(p.Row(y), p.Row(y) + kGridWidth, drawn.begin() + y * kGridWidth)) << y;
    f.Surface().Unlock();

    f.toggles[1].SetOn(true);
    f.drawer->Update();
    EXPECT_TRUE(f.grid.Shades().empty());
}

TEST(PatternViewDrawTest, ShortPatternEndsWithAWhiteLineAndBlankRows) {
    DrawFixture f;
    f.view->SetListPosition(1);
    f.Update(kRedrawAll);
    Gorb_Surface& s = f.Surface();
    EXPECT_EQ(f.view->State().topLine, 0);
    EXPECT_EQ(PixelAt(s, 31, DrawFixture::RowY(19) + 5), 0xFFFF);  // last line: white separators
    EXPECT_EQ(PixelAt(s, 144, DrawFixture::RowY(19) + 5), 0x0412);
    EXPECT_EQ(PixelAt(s, 400, DrawFixture::RowY(20)), 0xFFFF);     // the end of the pattern
    EXPECT_EQ(PixelAt(s, 31, DrawFixture::RowY(20)), 0xFFFF);      // its line crosses the separator
    EXPECT_EQ(PixelAt(s, 31, DrawFixture::RowY(20) + 1), 0);       // which is black below it
    EXPECT_EQ(PixelAt(s, 400, DrawFixture::RowY(21)), 0);
    // Rows past the end are black from the top of row 21 to the bottom.
    const Gorb_Rect beyond{0, DrawFixture::RowY(21), kGridWidth, kGridHeight - DrawFixture::RowY(21)};
    EXPECT_EQ(CountPixels(s, beyond, 0), beyond.w * beyond.h);
    // Line 19's number is drawn in the normal colour; nothing is dimmed.
    EXPECT_GT(CountPixels(s, {4, DrawFixture::RowY(19) + 2, 24, 9}, kNormalInk), 0);
    EXPECT_EQ(CountPixels(s, {0, 0, kGridWidth, kGridHeight}, kDimmedInk), 0);
}

TEST(PatternViewDrawTest, TactLinesAndDimmedNotes) {
    DrawFixture f;
    Pattern& pattern = f.module->patterns[0];
    pattern.lines[1].note[0] = 44;
    pattern.lines[2].note[0] = 45;
    pattern.lines[3].note[0] = 247;
    pattern.lines[4].note[3] = 60;
    f.Update(kRedrawAll);
    Gorb_Surface& s = f.Surface();
    EXPECT_EQ(PixelAt(s, 400, DrawFixture::RowY(0)), 0x321F);   // main and secondary: main wins
    EXPECT_EQ(PixelAt(s, 400, DrawFixture::RowY(8)), 0x0018);   // secondary only
    EXPECT_EQ(PixelAt(s, 400, DrawFixture::RowY(16)), 0x321F);
    EXPECT_EQ(PixelAt(s, 400, DrawFixture::RowY(9)), 0);

    // The note field of channel c starts at 4 + 28 + 168c + 8.
    auto noteField = [](int channel, int row) {
        return Gorb_Rect{kGridTextX + RowPixelX(kChannelBlockChars * channel + kNoteField), DrawFixture::RowY(row) + 2,
                         24, 9};
    };
    const struct {
        int channel, row;
        bool dimmed;
    } cells[] = {{0, 1, true}, {0, 2, false}, {0, 3, true}, {3, 4, true}, {3, 3, false}};
    for (const auto& c : cells) {
        const Gorb_Rect area = noteField(c.channel, c.row);
        EXPECT_EQ(CountPixels(s, area, kDimmedInk) > 0, c.dimmed) << c.row;
        EXPECT_EQ(CountPixels(s, area, kNormalInk) > 0, !c.dimmed) << c.row;
    }
    // The drawn grid, to look at, in the temporary folder.
    s.SavePng((std::filesystem::temp_directory_path() / "sondrel_pattern_view_grid.png").string());
}

TEST(PatternViewDrawTest, HeaderIsRepaintedOnlyOnAFullRequest) {
    DrawFixture f;
    Gorb_Surface& s = f.Surface();
    s.Fill(0x1234);
    f.Update(kRedrawGridRows | kRedrawGridState);
    EXPECT_EQ(f.view->DirtyFlags(), 0u);
    EXPECT_EQ(PixelAt(s, 600, 1), 0x1234);                       // header band untouched
    EXPECT_EQ(PixelAt(s, 600, 13), 0x1234);
    EXPECT_EQ(PixelAt(s, 400, DrawFixture::RowY(5)), 0);          // rows drawn
    f.Update(kRedrawAll & ~kRedrawTitle);                         // most bits, but not all
    EXPECT_EQ(PixelAt(s, 600, 1), 0x1234);
    f.Update(kRedrawAll);
    EXPECT_EQ(PixelAt(s, 600, 1), s.FindPixel(0xFF202040));
    EXPECT_EQ(PixelAt(s, 600, 13), 0xFFFF);
    EXPECT_EQ(PixelAt(s, 32, 6), 0xFFFF);                         // header separator
    EXPECT_GT(CountPixels(s, {48, 2, 72, 9}, kNormalInk), 0);     // "Channel 0"
}

TEST(PatternViewDrawTest, UpdateRunsTheAskedPartsInOrderAndClearsTheBits) {
    DrawFixture f;
    f.Update(kRedrawAll);
    EXPECT_EQ(f.calls, (std::vector<std::string>{"settings", "title Sondrel  ", "menus"}));
    f.calls.clear();
    f.modified = true;
    f.Update(kRedrawTitle);
    EXPECT_EQ(f.calls, (std::vector<std::string>{"title Sondrel *"}));
    EXPECT_EQ(f.view->DirtyFlags(), 0u);

    // The lists follow the view: one entry per list position, the current one
    // selected, and the sixteen instruments.
    EXPECT_EQ(f.patterns.LineCount(), 2);
    EXPECT_EQ(f.instruments.LineCount(), kInstruments);
    f.view->SetListPosition(1);
    f.view->Settings().currentInstrument = 5;
    f.Update(kRedrawPatternList | kRedrawInstruments);
    EXPECT_EQ(f.patterns.Current(), 1);
    EXPECT_EQ(f.instruments.Current(), 5);
}

TEST(PatternViewDrawTest, SelectionAndPlayMarkerCoverTheCellsOnView) {
    DrawFixture f;
    const PixelSpan note = CursorColumnSpan(0);
    const PixelSpan command = CursorColumnSpan(kGridLastColumn);
    const Gorb_Rect whole = f.drawer->CellArea(0, 0, kGridColumns, 64);  // cut to the 32 rows on view
    EXPECT_EQ(whole.x, kGridTextX + note.x);
    EXPECT_EQ(whole.w, command.x + command.w - note.x);
    EXPECT_EQ(whole.h, kGridVisibleLines * kGridRowHeight);
    f.view->ScrollTo(20);
    EXPECT_EQ(f.drawer->CellArea(0, 10, 1, 15).y, DrawFixture::RowY(0));  // starts above the view
    EXPECT_EQ(f.drawer->CellArea(0, 10, 1, 15).h, 5 * kGridRowHeight);
    EXPECT_EQ(f.drawer->CellArea(0, 10, 1, 10).h, 0);                      // wholly above
    EXPECT_EQ(f.drawer->CellArea(0, 52, 1, 1).h, 0);                       // below
}

}  // namespace
}  // namespace sondrel
