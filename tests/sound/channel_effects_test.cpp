#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "model/notes.h"
#include "sound/song_player.h"

namespace sondrel {
namespace {

constexpr int kTicksPerLine = 6;  // a new module's speed

// A module played from its start, with what the chip holds after each tick.
struct Song {
    std::unique_ptr<Module> module = std::make_unique<Module>();
    std::unique_ptr<SongPlayer> player = std::make_unique<SongPlayer>();

    Song() { module->NewModule({}); }
    PatternLine& Line(int line) { return module->patterns[0].lines[line]; }
    void Note(int line, int channel, uint8_t note, uint8_t volume = 15) {
        Line(line).note[channel] = note;
        Line(line).volume[channel] = volume;
        Line(line).instrument[channel] = 0;
    }
    void Effect(int line, int channel, uint8_t command, uint8_t param) {
        Line(line).channelCommand[channel] = command;
        Line(line).channelParam[channel] = param;
    }
    // Calls look() after each of the first `lines` lines' ticks.
    template <typename Look>
    void Play(int lines, Look look) {
        player->Attach(*module);
        player->Start(0, 0, false);
        for (int tick = 0; tick < lines * kTicksPerLine; ++tick) {
            player->Tick();
            look(tick);
        }
    }
    std::vector<int> Periods(int lines, int channel = 0) {
        std::vector<int> periods;
        Play(lines, [&](int) { periods.push_back(player->Chip().TonePeriod(channel)); });
        return periods;
    }
    std::vector<int> Attenuations(int lines, int channel = 0) {
        std::vector<int> values;
        Play(lines, [&](int) { values.push_back(player->Chip().Attenuation(channel)); });
        return values;
    }
};

// The periods of notes, tick after tick.
std::vector<int> Tones(std::initializer_list<int> notes) {
    std::vector<int> periods;
    for (int note : notes) periods.push_back(TonePeriod(static_cast<uint8_t>(note)));
    return periods;
}

std::vector<int> Repeat(std::vector<int> part, int times) {
    std::vector<int> all;
    for (int i = 0; i < times; ++i) all.insert(all.end(), part.begin(), part.end());
    return all;
}

std::vector<int> Join(std::initializer_list<std::vector<int>> parts) {
    std::vector<int> all;
    for (const auto& part : parts) all.insert(all.end(), part.begin(), part.end());
    return all;
}

TEST(ChannelEffectsTest, ArpeggioStepsThroughTheChordATickEachWhileItsLinePlays) {
    Song song;
    song.Note(0, 0, 57);
    song.Effect(0, 0, kEffectArpeggio, 0x47);
    song.Effect(1, 0, kEffectArpeggio, 0x00);  // the same chord goes on
    song.Effect(3, 0, kEffectArpeggio, 0x30);  // x alone: two notes
    song.Effect(4, 0, kEffectArpeggio, 0x05);  // y alone: two notes
    EXPECT_EQ(song.Periods(5), Join({Repeat(Tones({57, 61, 64}), 4), Tones({57, 57, 57, 57, 57, 57}),
                                     Repeat(Tones({57, 60}), 3), Repeat(Tones({57, 62}), 3)}));

    Song high;  // a chord past the highest playable note stops there
    high.Note(0, 0, 110);
    high.Effect(0, 0, kEffectArpeggio, 0x5F);
    EXPECT_EQ(high.Periods(1), Repeat(Tones({110, 115, kLastPlayableTone}), 2));
}

TEST(ChannelEffectsTest, SlidesKeepTheirPitchUntilTheNextNoteAndStayInRange) {
    Song song;
    const int a = TonePeriod(69);
    song.Note(0, 0, 69);
    song.Effect(0, 0, kEffectSlideUp, 2);
    song.Effect(2, 0, kEffectSlideDown, 3);
    song.Effect(3, 0, kEffectSlideDown, 0);  // goes on at 3
    song.Note(4, 0, 69);
    std::vector<int> expected;
    for (int t = 1; t <= 6; ++t) expected.push_back(a - 2 * t);
    for (int t = 0; t < 6; ++t) expected.push_back(a - 12);
    for (int t = 1; t <= 12; ++t) expected.push_back(a - 12 + 3 * t);
    for (int t = 0; t < 6; ++t) expected.push_back(a);
    EXPECT_EQ(song.Periods(5), expected);

    Song deep;
    deep.Note(0, 0, 45);
    for (int line = 0; line < 4; ++line) deep.Effect(line, 0, kEffectSlideDown, 99);
    EXPECT_EQ(deep.Periods(4).back(), 1023);
    deep.Note(0, 0, 119);
    for (int line = 0; line < 4; ++line) deep.Effect(line, 0, kEffectSlideUp, 99);
    EXPECT_EQ(deep.Periods(4).back(), TonePeriod(119));
}

TEST(ChannelEffectsTest, GlideMovesToTheNoteWithoutStartingItAgain) {
    Song song;
    const int from = TonePeriod(76), to = TonePeriod(72);  // the period rises as the pitch falls
    song.Note(0, 0, 76);
    song.Note(1, 0, 72, 9);
    song.Effect(1, 0, kEffectGlide, 4);
    for (int line = 2; line < 5; ++line) song.Effect(line, 0, kEffectGlide, 0);
    song.Note(5, 0, 76, 9);  // and back up, faster
    song.Effect(5, 0, kEffectGlide, 8);
    song.Effect(6, 0, kEffectGlide, 0);
    std::vector<int> periods, started;
    song.Play(7, [&](int tick) {
        periods.push_back(song.player->Chip().TonePeriod(0));
        if (song.player->GetVoice(0).started) started.push_back(tick);
    });
    EXPECT_EQ(started, std::vector<int>{0});
    for (int t = 0; t < 6; ++t) EXPECT_EQ(periods[t], from);
    for (int t = 6; t < 30; ++t) EXPECT_EQ(periods[t], std::min(to, from + 4 * (t - 5))) << "tick " << t;
    for (int t = 30; t < 42; ++t) EXPECT_EQ(periods[t], std::max(from, to - 8 * (t - 29))) << "tick " << t;
    EXPECT_EQ(song.player->Chip().Attenuation(0), 15 - 9);  // the line's volume is taken

    // With nothing sounding the note simply starts.
    Song alone;
    alone.Note(0, 0, 72);
    alone.Effect(0, 0, kEffectGlide, 4);
    EXPECT_EQ(alone.Periods(1), Repeat(Tones({72}), 6));
}

TEST(ChannelEffectsTest, VibratoTakesThePlaceOfTheInstrumentsOwnForItsLine) {
    Song song;
    Instrument& shaky = song.module->instruments[0];
    shaky.vibratoSpeed.fill(3);
    shaky.vibratoStrength.fill(15);
    song.Note(0, 0, 69);
    song.Effect(0, 0, kEffectVibrato, 0x2A);
    song.Effect(1, 0, kEffectVibrato, 0x00);  // goes on where it was
    const std::vector<int> periods = song.Periods(3);
    const VibratoTable& table = VibratoTable::Get();
    for (int t = 0; t < 12; ++t) {
        const auto offset = static_cast<int8_t>(static_cast<uint8_t>(table.At(0, 10, 2 * t)));
        EXPECT_EQ(periods[t], TonePeriod(69) + offset) << "tick " << t;
    }
    for (int t = 12; t < 18; ++t) {
        const auto offset = static_cast<int8_t>(static_cast<uint8_t>(table.At(3, 15, t)));
        EXPECT_EQ(periods[t], TonePeriod(69) + offset) << "tick " << t;
    }
}

TEST(ChannelEffectsTest, VolumeSlideCutDelayAndRetriggerCountTheLinesTicks) {
    Song song;
    song.Note(0, 0, 69, 15);
    song.Effect(0, 0, kEffectVolumeSlide, 0x03);  // down 3 a tick, not below silence
    song.Effect(1, 0, kEffectVolumeSlide, 0x20);  // up 2 a tick, not above 15
    song.Note(2, 0, 69);
    song.Effect(2, 0, kEffectNoteCut, 2);
    song.Note(3, 0, 69);
    song.Effect(3, 0, kEffectNoteDelay, 4);
    song.Note(4, 0, 69);
    song.Effect(4, 0, kEffectNoteCut, 0);  // at once
    EXPECT_EQ(song.Attenuations(5), (std::vector<int>{3, 6, 9, 12, 15, 15, 13, 11, 9, 7, 5, 3,  //
                                                      0, 0, 15, 15, 15, 15,                       //
                                                      15, 15, 15, 15, 0, 0,                       //
                                                      15, 15, 15, 15, 15, 15}));

    Song again;
    again.Note(0, 0, 69);
    again.Effect(0, 0, kEffectRetrigger, 2);
    again.Effect(1, 0, kEffectRetrigger, 0);  // every 2 ticks still
    std::vector<int> starts;
    again.Play(2, [&](int tick) {
        if (again.player->GetVoice(0).started) starts.push_back(tick);
    });
    EXPECT_EQ(starts, (std::vector<int>{0, 2, 4, 8, 10}));
}

TEST(ChannelEffectsTest, TheNoiseChannelTakesTheVolumeAndTimingEffectsOnly) {
    Song song;
    song.Note(0, kNoiseChannel, kFirstNoiseNote + 4);
    song.Effect(0, kNoiseChannel, kEffectRetrigger, 3);
    song.Note(1, kNoiseChannel, kFirstNoiseNote + 4);
    song.Effect(1, kNoiseChannel, kEffectArpeggio, 0x47);
    std::vector<int> noiseWrites;
    song.Play(2, [&](int tick) {
        if (song.player->Chip().NoiseWritten()) noiseWrites.push_back(tick);
        EXPECT_EQ(song.player->Chip().NoiseRate(), 0) << "tick " << tick;
    });
    // The retrigger starts the noise again (a drum roll); the arpeggio does nothing.
    EXPECT_EQ(noiseWrites, (std::vector<int>{0, 3, 6}));
}

// The editor's preview plays a note as its line would, for the preview's
// length only: no effect outlives it or a stop.
TEST(ChannelEffectsTest, ThePreviewPlaysTheLinesEffectForItsOwnLengthOnly) {
    auto notes = std::make_unique<NotePlayer>();
    notes->Init({});
    const Instrument plain;
    const auto run = [&](int ticks) {
        std::vector<int> periods, attenuations;
        for (int t = 0; t < ticks; ++t) {
            notes->Tick();
            periods.push_back(notes->Chip().TonePeriod(0));
            attenuations.push_back(notes->Chip().Attenuation(0));
        }
        return std::pair(periods, attenuations);
    };
    notes->StartVoice(0, plain, 15, 57, 0, 4, kEffectArpeggio, 0x47);
    auto [periods, attenuations] = run(6);
    EXPECT_EQ(std::vector<int>(periods.begin(), periods.begin() + 4), Tones({57, 61, 64, 57}));
    EXPECT_EQ(attenuations, (std::vector<int>{0, 0, 0, 0, 15, 15}));

    notes->StartVoice(0, plain, 15, 57, 0, 4, kEffectRetrigger, 1);  // restarts, but only while it lasts
    EXPECT_EQ(run(6).second, (std::vector<int>{0, 0, 0, 0, 15, 15}));

    notes->StartVoice(0, plain, 15, 57, 0, 60, kEffectNoteDelay, 2);
    notes->StopVoice(0);  // the held note never comes
    EXPECT_EQ(run(4).second, (std::vector<int>{15, 15, 15, 15}));
}

}  // namespace
}  // namespace sondrel
