#include "edit/keys/pattern_editing.h"

#include <gtest/gtest.h>

#include <array>
#include <optional>
#include <vector>

#include "edit/keys/note_keys.h"
#include "edit/edit_test_support.h"

namespace sondrel {
namespace {

constexpr uint16_t kShift = 1;
constexpr uint16_t kCtrl = 4;

class PatternEditingTest : public test::EditTest {
protected:
    PatternEditingTest() { notes.Init(module->Settings()); }

    bool Key(uint16_t scanCode, uint16_t modifiers = 0, bool wrapVolume = false) {
        return HandlePatternKey(ctx, {scanCode, 0, modifiers, false}, {wrapVolume});
    }
    const auto& State() const { return view.State(); }
};

// A key at the cursor on one channel, from a chosen octave: the note it enters,
// or nothing (the cell, the cursor and the history all stay as they were).
struct NoteCase {
    uint8_t octave;
    int column;
    uint16_t scanCode;
    uint16_t modifiers;
    std::optional<uint8_t> note;
};

TEST_F(PatternEditingTest, PianoAndNoiseKeysEnterNotesOverEveryOctave) {
    const std::vector<NoteCase> cases = {
        {3, 0, kScanZ, 0, 36},           {3, 0, kScanS, 0, 37},          {4, 3, kScanComma, 0, 60},
        {4, 3, kScanQ, 0, 60},           {5, 6, kScanSlash, 0, 76},      {5, 6, kScan5, 0, 78},
        {5, 6, kScanBackslash, 0, 78},   {6, 0, kScanN, 0, 81},          {6, 0, kScanN, kShift, kNullNote},
        {7, 0, kScanM, kShift, 95},      {8, 3, kScanEquals, 0, 126},    {9, 0, kScan9, 0, 133},
        {10, 0, kScanRightBracket, 0, 151}, {12, 0, kScanM, 0, 155},     {12, 0, kScanComma, 0, std::nullopt},
        {11, 0, kScanRightBracket, 0, std::nullopt}, {3, 0, kScanA, 0, std::nullopt},
        {3, 9, kScanZ, 0, 251},          {3, 9, kScanV, kShift, 254},    {3, 9, kScanB, 0, 247},
        {3, 9, kScanComma, 0, 250},      {3, 9, kScanS, kShift, kNullNote}, {3, 9, kScanS, 0, std::nullopt},
        {3, 9, kScanQ, 0, std::nullopt},
    };
    view.Settings().lineStep = 2;
    view.Settings().currentInstrument = 7;
    view.Settings().defaultVolume = 9;
    for (const NoteCase& c : cases) {
        SCOPED_TRACE(testing::Message() << "octave " << int(c.octave) << " key " << c.scanCode);
        // The octave keys reach 3..10; beyond that only the octave control goes.
        if (c.octave <= 10) Key(static_cast<uint16_t>(kScanF1 + c.octave - 3));
        else view.Settings().octave = c.octave;
        ASSERT_EQ(view.Settings().octave, c.octave);
        Select(c.column, 10, 1, 1);
        notes.StopAll();
        Line(10).detune[c.column / 3] = 5;
        const auto before = Snapshot();
        const uint32_t head = undo.Head();

        Key(c.scanCode, c.modifiers);
        const int channel = c.column / 3;
        if (!c.note) {
            EXPECT_TRUE(*module == *before);
            EXPECT_EQ(undo.Head(), head);
            EXPECT_EQ(State().cursorLine, 10);
            EXPECT_FALSE(notes.GetVoice(channel).active);
            continue;
        }
        EXPECT_EQ(Line(10).note[channel], *c.note);
        EXPECT_EQ(Line(10).detune[channel], 0);
        EXPECT_EQ(Line(10).instrument[channel], 7);
        EXPECT_EQ(Line(10).volume[channel], 9);
        EXPECT_EQ(State().cursorLine, 12);
        EXPECT_EQ(notes.GetVoice(channel).note, *c.note);
        const auto after = Snapshot();
        ExpectUndoAndRedo(*before, *after);
        ASSERT_TRUE(undo.Undo(undoView));
    }
}

TEST_F(PatternEditingTest, TestModeOnlySoundsAndAPlayingSongTakesNotesAtItsLine) {
    module->patternList[1] = 1;
    module->patternListLength = 2;
    module->CreatePattern(1);
    Select(4, 20, 1, 1);  // channel 1's volume field
    const auto before = Snapshot();

    // A note key on the volume field of a stopped song steps nothing and enters nothing.
    EXPECT_FALSE(Key(kScanZ));
    view.Settings().testMode = true;
    Select(3, 20, 1, 1);
    Key(kScanZ);
    EXPECT_TRUE(*module == *before);
    EXPECT_EQ(undo.Head(), 0u);
    EXPECT_EQ(notes.GetVoice(1).note, 36);

    // Playing: any field of the channel enters at the player's pattern and
    // line, the cursor stays and nothing is previewed; the cursor keys are locked.
    view.Settings().testMode = false;
    Select(5, 20, 1, 1);
    song.Start(7, 1, false);
    notes.StopAll();
    Key(kScanQ);
    EXPECT_EQ(module->patterns[1].lines[7].note[1], 48);
    EXPECT_EQ(module->patterns[0].lines[7].note[1], 255);
    EXPECT_FALSE(notes.GetVoice(1).active);
    Key(kScanDown);
    Key(kScanSpace);
    EXPECT_EQ(State().cursorLine, 20);
    EXPECT_EQ(undo.Head(), 1u);
    EXPECT_FALSE(undo.Undo(undoView));  // locked while playing

    song.Stop();
    ASSERT_TRUE(undo.Undo(undoView));
    EXPECT_TRUE(*module == *before);
}

// A step key on one cell: what the cell held, and what it holds after.
struct StepCase {
    int column;
    uint16_t scanCode;
    uint16_t modifiers;
    bool wrapVolume;
    uint8_t kind;  // channel command or command; the instrument for I
    uint8_t value;
    uint8_t expected;
};

TEST_F(PatternEditingTest, StepKeysOnOneCellLimitOrWrapByKind) {
    const std::vector<StepCase> cases = {
        // Volume and instrument fields (kind: instrument, value: volume).
        {1, kScanV, 0, false, 0, 15, 15}, {1, kScanV, 0, true, 0, 15, 0}, {4, kScanV, kShift, false, 0, 0, 0},
        {4, kScanV, kShift, true, 0, 0, 15}, {7, kScanV, 0, false, 0, 4, 5},
        // PV: limited to 0..15, middle step 10, no large step.
        {2, kScanE, 0, false, kChannelCommandPV, 15, 15}, {2, kScanW, 0, false, kChannelCommandPV, 3, 13},
        {2, kScanW, kShift, false, kChannelCommandPV, 3, 0}, {2, kScanQ, 0, false, kChannelCommandPV, 3, 3},
        // VO wraps within 0..15; other values step by 16 and 256 in 8 bits.
        {5, kScanE, 0, false, kChannelCommandVO, 15, 0}, {5, kScanW, kShift, false, kChannelCommandVO, 5, 11},
        {8, kScanW, 0, false, kChannelCommandNone, 250, 10}, {8, kScanQ, 0, false, kChannelCommandNone, 7, 7},
        {11, kScanE, kShift, false, kChannelCommandNone, 0, 255}, {11, kScanW, 0, false, 12, 250, 10},
        {2, kScanE, kShift, false, 15, 0, 255},
        // AR, VI and VS step their two hex digits apart, as ST does; Q does nothing.
        {2, kScanE, 0, false, kEffectArpeggio, 0x4F, 0x40}, {5, kScanE, kShift, false, kEffectVibrato, 0x40, 0x4F},
        {8, kScanW, 0, false, kEffectVolumeSlide, 0xF1, 0x01}, {11, kScanW, kShift, false, kEffectArpeggio, 0x07, 0xF7},
        {2, kScanQ, 0, false, kEffectVibrato, 0x46, 0x46},
        // The decimal effects step by 1 and 10 within 0..99; Q does nothing.
        {2, kScanE, 0, false, kEffectSlideUp, 98, 99}, {5, kScanE, 0, false, kEffectSlideDown, 99, 99},
        {8, kScanW, 0, false, kEffectGlide, 95, 99}, {11, kScanW, kShift, false, kEffectNoteCut, 4, 0},
        {2, kScanE, kShift, false, kEffectNoteDelay, 0, 0}, {5, kScanQ, 0, false, kEffectRetrigger, 3, 3},
        {8, kScanW, 0, false, kEffectRetrigger, 40, 50}, {11, kScanE, kShift, false, kEffectSlideUp, 200, 99},
        // SP: limited to 8..255 with steps 1, 8 and 80.
        {12, kScanE, kShift, false, kCommandSP, 8, 8}, {12, kScanW, 0, false, kCommandSP, 16, 24},
        {12, kScanQ, 0, false, kCommandSP, 200, 255}, {12, kScanQ, kShift, false, kCommandSP, 50, 8},
        // ST: E and W step the low and high halves apart, Q does nothing.
        {12, kScanE, 0, false, kCommandST, 0x1F, 0x10}, {12, kScanE, kShift, false, kCommandST, 0x20, 0x2F},
        {12, kScanW, 0, false, kCommandST, 0xF3, 0x03}, {12, kScanQ, 0, false, kCommandST, 0x12, 0x12},
        {12, kScanW, kShift, false, kCommandNone, 4, 244},
    };
    for (const StepCase& c : cases) {
        SCOPED_TRACE(testing::Message() << "column " << c.column << " key " << c.scanCode << " value " << int(c.value));
        PatternLine& line = Line(3);
        const int channel = c.column / 3;
        const int field = c.column % 3;
        if (c.column == kGridLastColumn) line.command = c.kind, line.commandParam = c.value;
        else if (field == 2) line.channelCommand[channel] = c.kind, line.channelParam[channel] = c.value;
        else line.volume[channel] = c.value;
        Select(c.column, 3, 1, 1);
        Key(c.scanCode, c.modifiers, c.wrapVolume);
        const uint8_t result = c.column == kGridLastColumn ? line.commandParam
                               : field == 2                ? line.channelParam[channel]
                                                           : line.volume[channel];
        EXPECT_EQ(result, c.expected);
    }

    // Instruments wrap either way; a note cell is never stepped.
    Line(3).instrument[0] = 15;
    Select(1, 3, 1, 1);
    Key(kScanI);
    EXPECT_EQ(Line(3).instrument[0], 0);
    Key(kScanI, kShift);
    EXPECT_EQ(Line(3).instrument[0], 15);
    const uint32_t head = undo.Head();
    Select(1, 3, 1, 1);
    Key(kScanE);
    EXPECT_EQ(undo.Head(), head);
}

TEST_F(PatternEditingTest, CommandKeysAndStepsOverAFrame) {
    view.Settings().defaultVolume = 6;
    struct SetCase {
        int column;
        uint16_t scanCode;
        int kind, param;  // -1: nothing set
    };
    for (const SetCase& c : std::vector<SetCase>{{2, kScanLeftBracket, kChannelCommandPV, 0},
                                                 {5, kScanB, kChannelCommandVO, 6},
                                                 {12, kScanD, kCommandSP, 8},
                                                 {12, kScanY, kCommandST, 255},
                                                 {8, kScanY, -1, -1},
                                                 {12, kScanB, -1, -1}}) {
        Line(0) = PatternLine{};
        const uint32_t head = undo.Head();
        Select(c.column, 0, 1, 1);
        Key(c.scanCode);
        const bool command = c.column == kGridLastColumn;
        const int kind = command ? Line(0).command : Line(0).channelCommand[c.column / 3];
        const int param = command ? Line(0).commandParam : Line(0).channelParam[c.column / 3];
        EXPECT_EQ(kind, std::max(c.kind, 0)) << c.column;
        EXPECT_EQ(param, std::max(c.param, 0)) << c.column;
        EXPECT_EQ(undo.Head(), head + (c.kind >= 0 ? 1 : 0)) << c.column;
    }

    // Over a frame only the step keys act, as one entry for its lines; each
    // cell keeps to its own kind's limits.
    Fill(64);
    Select(1, 4, 12, 2);
    const auto before = Snapshot();
    const uint32_t head = undo.Head();
    Key(kScanZ);
    EXPECT_TRUE(*module == *before);
    Key(kScanV);
    Key(kScanE);
    EXPECT_EQ(Line(4).volume, (std::array<uint8_t, 4>{13, 14, 15, 15}));
    EXPECT_EQ(Line(5).volume, (std::array<uint8_t, 4>{15, 1, 2, 3}));
    EXPECT_EQ(Line(4).channelParam, (std::array<uint8_t, 4>{5, 5, 5, 5}));
    EXPECT_EQ(Line(5).channelParam[0], 6);
    EXPECT_EQ(Line(4).commandParam, 252);  // SP
    EXPECT_EQ(Line(5).commandParam, 0xFB);  // ST: the low half only
    EXPECT_EQ(Line(4).note, before->patterns[0].lines[4].note);
    EXPECT_EQ(Line(6), before->patterns[0].lines[6]);
    EXPECT_EQ(undo.Head(), head + 2);
    ASSERT_TRUE(undo.Undo(undoView));
    ASSERT_TRUE(undo.Undo(undoView));
    EXPECT_TRUE(*module == *before);
}

// The effect letters in a channel-command field with the cursor alone: each
// sets its effect and starting parameter over what the cell held, as one
// undo step. Elsewhere, over a frame or while the song plays they keep
// their other meanings.
TEST_F(PatternEditingTest, EffectLettersSetEffectsInAChannelCommandField) {
    struct EffectKey {
        uint16_t scanCode;
        uint8_t command, param;
    };
    const EffectKey keys[] = {
        {kScanA, kEffectArpeggio, 0x47}, {kScanU, kEffectSlideUp, 2},        {kScanD, kEffectSlideDown, 2},
        {kScanG, kEffectGlide, 4},       {kScanV, kEffectVibrato, 0x46},     {kScanS, kEffectVolumeSlide, 0x01},
        {kScanC, kEffectNoteCut, 3},     {kScanL, kEffectNoteDelay, 3},      {kScanR, kEffectRetrigger, 3},
    };
    Fill(64);
    int channel = 0;
    for (const EffectKey& k : keys) {
        SCOPED_TRACE(testing::Message() << "key " << k.scanCode << " channel " << channel);
        Select(3 * channel + 2, 9, 1, 1);
        const auto before = Snapshot();
        const uint32_t head = undo.Head();
        EXPECT_TRUE(Key(k.scanCode));
        EXPECT_EQ(Line(9).channelCommand[channel], k.command);
        EXPECT_EQ(Line(9).channelParam[channel], k.param);
        EXPECT_EQ(undo.Head(), head + 1);
        EXPECT_EQ(State().cursorLine, 9);
        auto after = Snapshot();
        after->patterns[0].lines[9].channelCommand[channel] = before->patterns[0].lines[9].channelCommand[channel];
        after->patterns[0].lines[9].channelParam[channel] = before->patterns[0].lines[9].channelParam[channel];
        EXPECT_TRUE(*after == *before) << "only the one cell changes";
        ExpectUndoAndRedo(*before, *Snapshot());
        channel = (channel + 1) % kChannels;
    }

    // The volume field and the command column take none of them.
    const auto before = Snapshot();
    const uint32_t head = undo.Head();
    for (const int column : {4, kGridLastColumn}) {
        Select(column, 20, 1, 1);
        for (const uint16_t key : {kScanA, kScanU, kScanG, kScanS, kScanC, kScanL, kScanR}) Key(key);
    }
    EXPECT_TRUE(*module == *before);
    EXPECT_EQ(undo.Head(), head);

    // Over a frame V steps the volumes, and A does nothing.
    Select(4, 20, 2, 2);
    Key(kScanV);
    Key(kScanA);
    EXPECT_EQ(Line(20).volume[1], (before->patterns[0].lines[20].volume[1] + 1) % 16);
    EXPECT_EQ(Line(21).channelCommand, before->patterns[0].lines[21].channelCommand);
    EXPECT_EQ(undo.Head(), head + 1);

    // While the song plays the letters are piano keys on any field.
    Select(5, 30, 1, 1);
    view.Settings().octave = 4;
    song.Start(40, 0, false);
    Key(kScanC);
    EXPECT_EQ(Line(40).note[1], 48 + 4);
    EXPECT_EQ(Line(40).channelCommand[1], before->patterns[0].lines[40].channelCommand[1]);
    EXPECT_EQ(Line(30), before->patterns[0].lines[30]);
    song.Stop();
}

TEST_F(PatternEditingTest, ReturnAndBackspaceMoveWholeChannelsOrOnlyTheFramedCells) {
    Fill(20);
    const Module original = *module;
    auto was = [&](int l) -> const PatternLine& { return original.patterns[0].lines[l]; };

    // Return at line 5 on channel 1's volume field: channel 1 moves down a
    // line within the pattern, its line 5 is cleared, the others stay.
    Select(4, 5, 1, 1);
    Key(kScanReturn);
    EXPECT_EQ(Line(5).note[1], kEmptyNote);
    EXPECT_EQ(Line(5).channelCommand[1], kChannelCommandNone);
    EXPECT_EQ(Line(5).volume[1], was(5).volume[1]);
    EXPECT_EQ(Line(6).note[1], was(5).note[1]);
    EXPECT_EQ(Line(6).volume[1], was(5).volume[1]);
    EXPECT_EQ(Line(19).channelParam[1], was(18).channelParam[1]);
    EXPECT_EQ(Line(20), was(20));
    EXPECT_EQ(Line(6).note[0], was(6).note[0]);
    EXPECT_EQ(Line(6).commandParam, was(6).commandParam);
    ExpectUndoAndRedo(original, *Snapshot());
    ASSERT_TRUE(undo.Undo(undoView));

    // With Shift only the framed cells move: here channel 1's command.
    Select(5, 5, 1, 1);
    Key(kScanReturn, kShift);
    EXPECT_EQ(Line(6).channelParam[1], was(5).channelParam[1]);
    EXPECT_EQ(Line(5).channelCommand[1], kChannelCommandNone);
    EXPECT_EQ(Line(5).note[1], was(5).note[1]);
    EXPECT_EQ(Line(6).note[1], was(6).note[1]);
    ASSERT_TRUE(undo.Undo(undoView));

    // Backspace removes the line above the frame; the last line reads the
    // cleared cell with the bytes of the one before, and the cursor moves up.
    Select(0, 10, 1, 3);
    Key(kScanBackspace);
    EXPECT_EQ(Line(9).note[0], was(10).note[0]);
    EXPECT_EQ(Line(18).channelParam[0], was(19).channelParam[0]);
    EXPECT_EQ(Line(19).note[0], kEmptyNote);
    EXPECT_EQ(Line(19).volume[0], was(19).volume[0]);
    EXPECT_EQ(Line(19).channelCommand[0], kChannelCommandNone);
    EXPECT_EQ(Line(19).channelParam[0], was(19).channelParam[0]);
    EXPECT_EQ(Line(9).note[1], was(9).note[1]);
    EXPECT_EQ(State().cursorLine, 11);
    EXPECT_EQ(State().anchorLine, 11);
    ASSERT_TRUE(undo.Undo(undoView));
    EXPECT_TRUE(*module == original);

    // Nothing above line 0; Return on the last line of a full pattern clears it;
    // neither key asks whether the song plays.
    const uint32_t head = undo.Head();
    Select(0, 0, 13, 4);
    Key(kScanBackspace);
    EXPECT_EQ(undo.Head(), head);
    EXPECT_TRUE(*module == original);
    Fill(256);
    song.Start(0, 0, false);
    Select(12, 255, 1, 1);
    Key(kScanReturn);
    EXPECT_EQ(Line(255).command, kCommandNone);
    EXPECT_EQ(Line(255).note, was(255).note);
    EXPECT_EQ(Line(254).command, was(254).command);
}

TEST_F(PatternEditingTest, CursorKeysSpaceAndCtrlCommands) {
    Shown().length = 100;
    view.Settings().lineStep = 3;
    struct Move {
        uint16_t scanCode, modifiers;
        int anchorColumn, anchorLine, cursorColumn, cursorLine;
    };
    for (const Move& m : std::vector<Move>{{kScanDown, 0, 0, 1, 0, 1},          {kScanRight, kShift, 0, 1, 1, 1},
                                           {kScanPageDown, kShift, 0, 1, 1, 33}, {kScanSpace, 0, 1, 36, 1, 36},
                                           {kScanEnd, 0, 1, 99, 1, 99},          {kScanLeft, 0, 0, 99, 0, 99},
                                           {kScanSpace, kShift, 0, 0, 0, 100},   {kScanHome, 0, 0, 0, 0, 0},
                                           {kScanPageUp, kShift, 0, 0, 0, 0}}) {
        Key(m.scanCode, m.modifiers);
        EXPECT_EQ((std::vector<int>{State().anchorColumn, State().anchorLine, State().cursorColumn, State().cursorLine}),
                  (std::vector<int>{m.anchorColumn, m.anchorLine, m.cursorColumn, m.cursorLine}))
            << m.scanCode;
    }
    Key(kScanEnd);
    EXPECT_EQ(State().topLine, 68);

    // Ctrl with a command key is not a note; with another note key it is.
    EXPECT_FALSE(Key(kScanS, kCtrl));
    EXPECT_EQ(undo.Head(), 0u);
    EXPECT_TRUE(Key(kScanQ, kCtrl));
    EXPECT_EQ(Line(99).note[0], 36 + 12);
}

}  // namespace
}  // namespace sondrel
