#include <gtest/gtest.h>

#include <memory>
#include <tuple>
#include <utility>
#include <vector>

#include "model/notes.h"
#include "sound/song_player.h"
#include "sound/song_time.h"
#include "sound/tick_mixer.h"

namespace sondrel {
namespace {

struct Fixture {
    std::unique_ptr<Module> module = std::make_unique<Module>();
    std::unique_ptr<SongPlayer> player = std::make_unique<SongPlayer>();

    Fixture() {
        module->NewModule({});
        player->Attach(*module);
    }
    PatternLine& Line(int pattern, int line) { return module->patterns[pattern].lines[line]; }
    void Note(int pattern, int line, int channel, uint8_t note, uint8_t volume = 15, uint8_t instrument = 0) {
        Line(pattern, line).note[channel] = note;
        Line(pattern, line).volume[channel] = volume;
        Line(pattern, line).instrument[channel] = instrument;
    }
    // Ticks until a new line is reached; returns how many ticks that took.
    int TicksOfLine() {
        for (int ticks = 1; ticks < 10000; ++ticks) {
            player->lineAdvanced = 0;
            player->Tick();
            if (player->lineAdvanced) return ticks;
        }
        return -1;
    }
    std::vector<int> LineLengths(int lines) {
        std::vector<int> lengths;
        for (int i = 0; i < lines; ++i) lengths.push_back(TicksOfLine());
        return lengths;
    }
    void Command(int line, uint8_t command, uint8_t param) {
        Line(0, line).command = command;
        Line(0, line).commandParam = param;
    }
    void ChannelCommand(int line, int channel, uint8_t command, uint8_t param) {
        Line(0, line).channelCommand[channel] = command;
        Line(0, line).channelParam[channel] = param;
    }
};

TEST(SongPlayerTest, SpeedIsCountedInEighthsOfATick) {
    Fixture f;
    f.player->SetSpeed(44);
    f.player->Start(0, 0, false);
    EXPECT_EQ(f.LineLengths(6), (std::vector<int>{6, 5, 6, 5, 6, 5}));
    f.player->SetSpeed(12);  // a tick and a half
    f.player->Start(0, 0, false);
    EXPECT_EQ(f.LineLengths(4), (std::vector<int>{2, 1, 2, 1}));
}

TEST(SongPlayerTest, SetSpeedActsOnItsOwnLineAndOutlivesPlayback) {
    Fixture f;
    f.Command(1, kCommandSP, 16);
    f.player->Start(0, 0, false);
    EXPECT_EQ(f.LineLengths(3), (std::vector<int>{6, 2, 2}));  // the "SP" line is already at the new speed
    f.player->Stop();
    f.player->Start(0, 0, false);
    EXPECT_EQ(f.TicksOfLine(), 2);  // playing again keeps the last speed
    f.player->ReloadSettings();
    f.player->Start(0, 0, false);
    EXPECT_EQ(f.TicksOfLine(), 6);
}

TEST(SongPlayerTest, VerySlowSpeedsWrapTheAccumulator) {
    Fixture f;
    f.player->SetSpeed(0);
    f.player->Start(0, 0, false);
    int linesPlayed = 0;
    for (int tick = 0; tick < 4097; ++tick) {
        f.player->linePlayed = 0;
        f.player->Tick();
        linesPlayed += f.player->linePlayed;
    }
    EXPECT_EQ(linesPlayed, 4097);  // a line every tick until -32768 - 8 wraps round
    EXPECT_EQ(f.player->TickAccumulator(), 32760);
    f.player->linePlayed = 0;
    f.player->Tick();
    EXPECT_EQ(f.player->linePlayed, 0);
}

TEST(SongPlayerTest, PatternListWrapsToTheRepeatPosition) {
    Fixture f;
    f.module->CreatePattern(1);
    f.module->patterns[0].length = 2;
    f.module->patterns[1].length = 3;
    f.module->patternList[1] = 1;
    f.module->patternListLength = 2;
    f.module->repeatPosition = 1;
    f.player->SetSpeed(8);
    f.player->Start(0, 0, false);
    std::vector<int> order;
    int wraps = 0;
    for (int tick = 0; tick < 2 + 3 * 3; ++tick) {
        if (f.player->Line() == 0) order.push_back(f.player->PatternNumber());
        f.player->Tick();
        wraps += f.player->wrapped;
        if (f.player->wrapped) {
            EXPECT_EQ(f.player->ListPosition(), 1);
        }
    }
    EXPECT_EQ(order, (std::vector<int>{0, 1, 1, 1}));
    EXPECT_EQ(wraps, 3);
}

TEST(SongPlayerTest, OnePatternStopsAtItsEnd) {
    Fixture f;
    f.module->patterns[0].length = 2;
    f.Note(0, 0, 0, 60);
    f.player->SetSpeed(8);
    f.player->Start(0, 0, true);
    f.player->Tick();
    EXPECT_TRUE(f.player->Playing());
    f.player->Tick();
    EXPECT_FALSE(f.player->Playing());
    EXPECT_EQ(f.player->lineAdvanced, 1);
    EXPECT_EQ(f.player->Chip().Attenuation(0), 15);
}

TEST(SongPlayerTest, NotesReachTheChipAndNotesAChannelCannotPlayFallSilent) {
    Fixture f;
    f.Note(0, 0, 0, 57, 12);
    f.Line(0, 0).detune[0] = 5;
    f.Note(0, 0, 1, kNoteNull, 9);
    f.Note(0, 0, 3, 250, 7);
    f.Note(0, 0, 2, 60, 15);
    // Channel 1 can't play a noise note, channel 3 no low tone, channel 0 nothing below 45.
    f.Note(0, 1, 1, 248);
    f.Note(0, 1, 3, 100);
    f.Note(0, 1, 0, 44);
    f.player->SetSpeed(8);
    f.player->Start(0, 0, false);
    f.player->Tick();
    const SoundChip& chip = f.player->Chip();
    EXPECT_EQ(chip.TonePeriod(0), TonePeriod(57) + 5);
    EXPECT_EQ(chip.Attenuation(0), 3);
    EXPECT_EQ(chip.TonePeriod(1), 0);
    EXPECT_EQ(chip.Attenuation(1), 6);
    EXPECT_EQ(chip.NoiseRate(), 3);  // "PC2": periodic noise following tone channel 2
    EXPECT_EQ(chip.NoiseWhite(), 0);
    EXPECT_EQ(chip.Attenuation(3), 8);
    EXPECT_TRUE(f.player->GetVoice(0).started && f.player->GetVoice(0).active);
    f.player->Tick();
    for (int c : {0, 1, 3}) {
        EXPECT_FALSE(f.player->GetVoice(c).active) << c;
        EXPECT_TRUE(f.player->GetVoice(c).started) << c;
        EXPECT_EQ(chip.Attenuation(c), 15) << c;
    }
    EXPECT_FALSE(f.player->GetVoice(2).started);  // still sounding from the line before
    EXPECT_EQ(chip.Attenuation(2), 0);
}

TEST(SongPlayerTest, EnvelopeSetsTheEffectiveVolumeAndWrapsOnOverflow) {
    Fixture f;
    f.module->instruments[1].startVolume = 128;
    f.Note(0, 0, 0, 60, 15, 1);
    f.Note(0, 0, 1, 60, 6, 1);
    f.Note(0, 0, 2, 60, 6, 0);
    f.player->Start(0, 0, false);
    f.player->Tick();
    EXPECT_EQ(f.player->GetVoice(0).outputVolume, 8);
    EXPECT_EQ(f.player->GetVoice(1).outputVolume, 0);
    EXPECT_EQ(f.player->GetVoice(2).outputVolume, 6);
    for (int i = 0; i < 100; ++i) f.player->Tick();
    EXPECT_EQ(f.player->GetVoice(2).outputVolume, 6);  // all adds 0: unchanged

    // The envelope wraps on overflow.
    Fixture g;
    g.module->instruments[0].volumeAdd[0] = 16;
    g.Note(0, 0, 0, 60, 15);
    g.player->Start(0, 0, false);
    g.player->Tick();
    EXPECT_EQ(g.player->GetVoice(0).outputVolume, 15);
    EXPECT_EQ(g.player->GetVoice(0).envelope, 15);  // 255 + 16 wrapped
    g.player->Tick();
    EXPECT_EQ(g.player->GetVoice(0).outputVolume, 0);
}

TEST(SongPlayerTest, EnvelopePhasesAndTheHeldLastPhase) {
    Module module;
    module.NewModule({});
    Instrument& inst = module.instruments[0];
    inst.startVolume = 0;
    inst.delay = {2, 3, 0, 1};
    inst.volumeAdd = {1, 2, 3, 4, 5};
    SoundChip chip;
    Voice voice;
    voice.Start(inst, 0, 15, 60, 0, kPlayForever);
    std::vector<int> phases;
    for (int tick = 0; tick < 2 + 3 + 256 + 1; ++tick) {
        voice.Update(chip, 0, 0);
        phases.push_back(voice.phase);
    }
    // A delay of 0 lasts 256 ticks; entering phase 4 holds as 3 with phase 4's adds.
    EXPECT_EQ((std::vector<int>{phases[0], phases[1], phases[4], phases[4 + 255], phases[4 + 256], phases[4 + 257]}),
              (std::vector<int>{0, 1, 2, 2, 3, 3}));
    EXPECT_EQ(voice.volumeAdd, 5);
    EXPECT_EQ(voice.delayCount, 0);
}

TEST(SongPlayerTest, VibratoPlusPitchVariationWrapsAsASignedByte) {
    Module module;
    module.NewModule({});
    Instrument& inst = module.instruments[0];
    inst.vibratoSpeed[0] = 3;      // eight periods: 0, 28, 0, -28 ...
    inst.vibratoStrength[0] = 15;  // strength 35
    SoundChip chip;
    Voice voice;
    voice.Start(inst, 0, 15, 60, 0, kPlayForever);
    voice.Update(chip, 0, 99);
    EXPECT_EQ(voice.vibratoOffset, 99);
    voice.Update(chip, 0, 99);  // 35 + 99 = 134: -122
    EXPECT_EQ(voice.vibratoOffset, -122);
    EXPECT_EQ(chip.TonePeriod(0), (TonePeriod(60) - 122) & 0x3FF);
}

TEST(SongPlayerTest, LineCommandsActFromTheirOwnLine) {
    Fixture f;
    f.Note(0, 0, 0, 60);
    f.ChannelCommand(0, 0, kChannelCommandPV, 10);  // pitch variation alternates lines
    f.ChannelCommand(2, 0, kChannelCommandPV, 0);
    f.Note(0, 0, 1, 60, 15);
    f.ChannelCommand(1, 1, kChannelCommandVO, 4);
    f.Command(1, kCommandST, 0x5A);
    f.player->SetSpeed(8);
    f.player->Start(0, 0, false);
    // {period offset on channel 0, attenuation of channel 1, stereo} after each line
    const std::tuple<int, int, int> expected[] = {{0, 0, 255}, {10, 11, 0x5A}, {0, 11, 0x5A}, {0, 11, 0x5A}};
    for (const auto& want : expected) {
        f.player->Tick();
        const SoundChip& chip = f.player->Chip();
        EXPECT_EQ(std::tuple(chip.TonePeriod(0) - TonePeriod(60), chip.Attenuation(1), chip.Stereo()), want);
    }
}

TEST(SongPlayerTest, NotePlayerPreviewEndsAfterItsTicks) {
    Module module;
    module.NewModule({});
    NotePlayer notes;
    notes.Init(module.Settings());
    notes.StartVoice(2, module.instruments[0], 15, 69, 0, 60);
    for (int i = 0; i < 59; ++i) notes.Tick();
    EXPECT_TRUE(notes.GetVoice(2).active);
    EXPECT_EQ(notes.Chip().TonePeriod(2), 254);
    notes.Tick();
    EXPECT_FALSE(notes.GetVoice(2).active);
    notes.Tick();
    EXPECT_EQ(notes.Chip().Attenuation(2), 15);
}

TEST(SongTimeTest, TimeUntilTheListWrapsAndTimeAtAPosition) {
    Fixture f;
    f.module->CreatePattern(1);
    f.module->patternList[1] = 1;
    f.module->patternListLength = 2;
    f.module->repeatPosition = 1;
    f.player->SetSpeed(16);  // the calculation starts from the module's own speed
    SongTime time = CalculateSongTime(*f.module, 0, 1);
    EXPECT_EQ(time.totalTicks, 128u * 6);
    EXPECT_DOUBLE_EQ(time.totalSeconds, 12.8);
    EXPECT_TRUE(time.targetReached);
    EXPECT_DOUBLE_EQ(time.targetSeconds, 6.4);
    EXPECT_EQ(FormatSongTime(time.totalSeconds), "12.80 sec. (0:12 min.)");
    EXPECT_EQ(FormatSongTime(125.456), "125.46 sec. (2:05 min.)");

    f.module->chipType = kChipPal;
    EXPECT_DOUBLE_EQ(CalculateSongTime(*f.module, 0, 1).totalSeconds, 768 / 50.0);
    EXPECT_FALSE(CalculateSongTime(*f.module, 70, 1).targetReached);
}

TEST(TickMixerTest, NotePreviewsMixOntoTheSong) {
    Fixture f;
    f.Note(0, 0, 0, kNoteNull, 15);  // constant level on the noise stereo bits: both sides
    NotePlayer notes;
    notes.Init(f.module->Settings());
    notes.StartVoice(1, f.module->instruments[0], 15, kNoteNull, 0, kPlayForever);
    f.player->Start(0, 0, false);
    TickMixer mixer(*f.player, notes);
    uint32_t bytes = mixer.RenderTick(MasterFromVolume(50));
    EXPECT_EQ(bytes, 735u * 4);
    std::vector<int16_t> out(bytes / 2);
    mixer.Take(out.data(), bytes);
    EXPECT_EQ(out[100], 2 * 2846);
    EXPECT_EQ(f.player->Chip().Fill(), 0u);
    EXPECT_EQ(notes.Chip().Fill(), 0u);

    f.player->SetChannelMask(0x0E);  // channel 0 muted in the song only
    mixer.RenderTick(MasterFromVolume(50));
    mixer.Take(out.data(), bytes);
    EXPECT_EQ(out[100], 2846);
    EXPECT_EQ(MasterFromVolume(100), 120);
    EXPECT_EQ(MasterFromVolume(0), 0);
}

}  // namespace
}  // namespace sondrel
