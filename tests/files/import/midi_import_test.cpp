#include <gtest/gtest.h>

#include <cmath>
#include <tuple>

#include "files/module_test_support.h"
#include "model/exception.h"
#include "model/notes.h"

namespace sondrel {
namespace {

using test::Bytes;
using Chooser = test::Chooser<MidiImportOptions>;

// One track's bytes, event by event; every event starts with its delta time.
struct TrackBytes {
    TrackBytes& Raw(uint32_t delta, std::initializer_list<int> bytes) {
        Bytes groups = {static_cast<unsigned char>(delta & 0x7F)};
        while (delta >>= 7) groups.insert(groups.begin(), static_cast<unsigned char>(0x80 | (delta & 0x7F)));
        data.insert(data.end(), groups.begin(), groups.end());
        data.insert(data.end(), bytes.begin(), bytes.end());
        return *this;
    }
    TrackBytes& On(uint32_t delta, int ch, int key, int vel = 127) { return Raw(delta, {0x90 | ch, key, vel}); }
    TrackBytes& Off(uint32_t delta, int ch, int key) { return Raw(delta, {0x80 | ch, key, 64}); }
    TrackBytes& Tempo(uint32_t delta, int us) { return Raw(delta, {0xFF, 0x51, 3, us >> 16, us >> 8 & 255, us & 255}); }
    TrackBytes& Meta(uint32_t delta, int type, const std::string& text) {
        Raw(delta, {0xFF, type, int(text.size())});
        data.insert(data.end(), text.begin(), text.end());
        return *this;
    }
    Bytes data;
};

Bytes MidiBytes(int format, int division, const std::vector<TrackBytes>& tracks) {
    Bytes out = {'M', 'T', 'h', 'd', 0, 0, 0, 6, 0, Bytes::value_type(format), 0, Bytes::value_type(tracks.size()),
                 Bytes::value_type(division >> 8), Bytes::value_type(division & 255)};
    for (const TrackBytes& t : tracks) {
        const size_t size = t.data.size() + 4;
        out.insert(out.end(), {'M', 'T', 'r', 'k', 0, 0, Bytes::value_type(size >> 8), Bytes::value_type(size & 255)});
        out.insert(out.end(), t.data.begin(), t.data.end());
        out.insert(out.end(), {0x00, 0xFF, 0x2F, 0x00});
    }
    return out;
}

std::unique_ptr<Module> Import(const Bytes& bytes, Chooser& chooser, const std::string& name = "song.mid") {
    return test::ImportFresh(FileKind::Midi, bytes, chooser, name);
}

std::unique_ptr<Module> Import(const Bytes& bytes, std::function<void(MidiImportOptions&)> change = {}) {
    Chooser chooser;
    chooser.change = std::move(change);
    return Import(bytes, chooser);
}

// One chip channel's cells, line by line: "line:note/volume" or "line:VOparam".
std::string Lane(const Module& m, int channel) {
    std::string out;
    test::ForEachSongLine(m, [&](long n, const PatternLine& line) {
        const std::string at = std::to_string(n) + ":";
        if (line.note[channel] != kNoteEmpty)
            out += at + std::to_string(line.note[channel]) + "/" + std::to_string(line.volume[channel]) + " ";
        if (line.channelCommand[channel] == kChannelCommandVO)
            out += at + "VO" + std::to_string(line.channelParam[channel]) + " ";
    });
    return out;
}

TEST(MidiImportTest, RunningStatusCarriesOnAcrossMetaEventsAndTheLastReleaseEndsTheSong) {
    // Note-offs as note-ons of velocity 0, all under one status byte, a text event mid-scale.
    TrackBytes t;
    t.Raw(0, {0x90, 60, 127}).Raw(96, {60, 0}).Raw(0, {62, 127}).Raw(96, {62, 0}).Raw(0, {64, 127});
    t.Raw(96, {64, 0}).Meta(0, 0x01, "break").Raw(0, {65, 127}).Raw(96, {65, 0}).Meta(960, 0x01, "late");
    auto m = Import(MidiBytes(0, 96, {t}));
    EXPECT_EQ(Lane(*m, 0), "0:60/13 30:62/13 60:64/13 90:65/13 120:VO0 ");
    EXPECT_EQ(m->patterns[0].length, 121);
}

TEST(MidiImportTest, OnsetsFollowTheTempoMapWithoutDrift) {
    // 96 ticks per quarter at 120 bpm: 10 ticks are 3.125 lines, so note k sits on round(3.125 k).
    TrackBytes even;
    for (int k = 0; k < 100; ++k) even.On(k ? 9 : 0, 0, 60).Off(1, 0, 60);
    auto m = Import(MidiBytes(0, 96, {even}));
    for (int k = 0; k < 100; ++k) {
        int line = static_cast<int>(std::floor(k * 3.125 + 0.5));
        EXPECT_EQ(m->patterns[line / 256].lines[line % 256].note[0], 60) << "note " << k;
    }
    // Format 1: beats are half as long after the first; PAL has 50 ticks a second.
    TrackBytes conductor, notes;
    conductor.Tempo(0, 500000).Tempo(480, 250000);
    notes.On(0, 0, 60).Off(480, 0, 60).On(0, 0, 62).Off(480, 0, 62).On(480, 0, 64).Off(240, 0, 64);
    m = Import(MidiBytes(1, 480, {conductor, notes}), [](MidiImportOptions& o) { o.chip.chipType = kChipPal; });
    EXPECT_EQ(Lane(*m, 0), "0:60/13 25:62/13 38:VO0 50:64/13 56:VO0 ");
    // SMPTE: 25 frames of 40 ticks are 1000 ticks a second, whatever the tempo.
    TrackBytes smpte;
    smpte.Tempo(0, 250000).On(500, 0, 60).Off(1000, 0, 60);
    EXPECT_EQ(Lane(*Import(MidiBytes(0, 0xE728, {smpte})), 0), "30:60/13 90:VO0 ");
}

TEST(MidiImportTest, QuantisedScoreTakesItsSpeedFromTheTempo) {
    // 4 lines a beat: 500000 us a beat is 7.5 ticks a line (speed 60); 1000000 doubles it.
    TrackBytes t;
    t.On(0, 0, 60).Off(110, 0, 60).On(10, 0, 62).Tempo(360, 1000000).Off(480, 0, 62).Tempo(480, 500000);
    auto m = Import(MidiBytes(0, 480, {t}), [](MidiImportOptions& o) { o.linesPerBeat = 4; });
    EXPECT_EQ(Lane(*m, 0), "0:60/13 1:62/13 8:VO0 ");
    EXPECT_EQ(m->initialSpeed, 60);
    EXPECT_EQ(std::tie(m->patterns[0].lines[4].command, m->patterns[0].lines[4].commandParam),
              std::make_tuple(kCommandSP, 120));
    EXPECT_EQ(m->patterns[0].length, 9);  // the tempo change after the last note adds nothing
}

TEST(MidiImportTest, NewestNoteWinsAndTheChannelFallsSilentWhenNothingIsHeld) {
    TrackBytes t;
    t.On(0, 0, 60).On(96, 1, 64).Off(96, 1, 64).Off(96, 0, 60);  // MIDI channels 1 and 2 share chip channel 0
    t.On(0, 0, 67, 40).Off(0, 0, 67);                            // released as it starts: still one line
    auto m = Import(MidiBytes(0, 96, {t}), [](MidiImportOptions& o) { o.channels[1].chipChannel = 0; });
    EXPECT_EQ(Lane(*m, 0), "0:60/13 30:64/13 60:60/13 90:67/3 91:VO0 ");
}

TEST(MidiImportTest, NotesFoldIntoTheToneRangeDrumsBecomeNoiseAndVolumesFollowControllers) {
    TrackBytes t;
    for (int key : {20, 127, 60}) t.On(0, 0, key).Off(96, 0, key);
    for (int key : {36, 38, 42, 45, 49, 56}) t.On(0, 9, key).Off(96, 9, key);
    for (int key : {40, 60, 80}) t.On(0, 2, key).Off(96, 2, key);  // not drums, though on the noise channel
    auto m = Import(MidiBytes(0, 96, {t}), [](MidiImportOptions& o) { o.channels[2].chipChannel = 3; });
    EXPECT_EQ(Lane(*m, 0), "0:56/13 30:115/13 60:60/13 90:VO0 ");
    EXPECT_EQ(Lane(*m, 3), "90:249/13 120:252/13 150:251/13 180:253/13 210:251/13 240:247/13 "
                           "270:253/13 300:252/13 330:251/13 360:VO0 ");
    m = Import(MidiBytes(0, 96, {t}), [](MidiImportOptions& o) { o.chip.frequencyDivider = kDivider2x; });
    EXPECT_EQ(Lane(*m, 0).substr(0, 24), "0:56/13 30:115/13 60:72/");

    TrackBytes loud;  // channel volume is 100 until controller 7 says otherwise
    loud.On(0, 0, 60, 1).Off(96, 0, 60).Raw(0, {0xB0, 7, 127}).On(0, 0, 60).Raw(96, {0xB0, 11, 64}).Off(96, 0, 60);
    EXPECT_EQ(Lane(*Import(MidiBytes(0, 96, {loud})), 0), "0:60/1 30:60/15 60:VO9 90:VO0 ");
}

TEST(MidiImportTest, ProposesChannelsByFirstNoteAndFollowsTheChoice) {
    TrackBytes t;
    for (int ch : {4, 9, 2, 0, 7, 4}) t.On(10, ch, 60).Off(1, ch, 60);
    Chooser chooser;
    chooser.change = [](MidiImportOptions& o) {
        o.channels[7].enable = false;
        o.channels[0] = {.enable = true, .chipChannel = 2, .instrument = 12};
    };
    auto m = Import(MidiBytes(0, 96, {t}), chooser);
    std::string proposed;  // MIDI channel:chip channel/instrument for the enabled ones
    for (int ch = 0; ch < 16; ++ch) {
        const MidiChannelChoice& c = chooser.proposal->channels[ch];
        EXPECT_EQ(c.hasNotes, c.enable);
        if (c.enable) proposed += std::to_string(ch + 1) + ":" + std::to_string(c.chipChannel) + "/" +
                                  std::to_string(c.instrument) + " ";
    }
    EXPECT_EQ(proposed, "1:2/0 3:1/1 5:0/2 8:0/3 10:3/4 ");
    EXPECT_EQ(chooser.proposal->chip, (ChipSettings{kDivider1x, kChipNtsc}));
    EXPECT_EQ(Lane(*m, 0), "3:60/13 4:VO0 20:60/13 21:VO0 ");  // MIDI channel 8 is switched off
    EXPECT_EQ(m->patterns[0].lines[13].instrument[2], 12);

    chooser.decline = true;
    EXPECT_EQ(Import(MidiBytes(0, 96, {t}), chooser), nullptr);
}

TEST(MidiImportTest, TextsNameTheModuleAndItsInstruments) {
    TrackBytes t;
    t.Meta(0, 0x03, "Tune 1\x01").Meta(0, 0x02, "(c) 1990").Meta(0, 0x01, "Played live");
    t.Raw(0, {0xC0, 40}).On(0, 0, 60).Raw(0, {0xC1, 0}).On(0, 1, 64).On(0, 9, 36);
    Chooser chooser;
    chooser.change = [](MidiImportOptions& o) { o.channels[1].instrument = 0; };
    auto m = Import(MidiBytes(0, 96, {t}), chooser);
    EXPECT_EQ(m->title, "Tune 1");
    EXPECT_EQ(m->notes, "(c) 1990\nPlayed live");
    EXPECT_EQ(m->instruments[0].name + "|" + m->instruments[1].name + "|" + m->instruments[2].name, "Violin||Drum kit");
    TrackBytes untitled;
    untitled.On(0, 0, 60);
    EXPECT_EQ(Import(MidiBytes(0, 96, {untitled}), chooser, "My Tune.mid")->title, "My Tune");
}

TEST(MidiImportTest, LongSongsFillPatternsInOrderUpToTheLastPattern) {
    TrackBytes t;
    t.On(0, 0, 60).On(96 * 2 * 300, 0, 62).On(96 * 2 * 2000, 0, 64);  // lines 0, 18000 and 138000
    auto m = Import(MidiBytes(0, 96, {t}));
    ASSERT_EQ(m->patternListLength, 256);
    EXPECT_EQ(std::tie(m->patternList[255], m->patterns[255].length), std::make_tuple(255, 256));
    EXPECT_EQ(m->patterns[18000 / 256].lines[18000 % 256].note[0], 62);
}

TEST(MidiImportTest, MalformedFilesAreRefused) {
    TrackBytes t;
    t.On(0, 0, 60).Off(96, 0, 60);
    const Bytes good = MidiBytes(0, 96, {t});
    Bytes junkFirst = good;  // an unknown chunk before the track is skipped
    junkFirst.insert(junkFirst.begin() + 14, {'J', 'u', 'n', 'k', 0, 0, 0, 2, 1, 2});
    EXPECT_EQ(Lane(*Import(junkFirst), 0), "0:60/13 30:VO0 ");

    auto with = [&](std::function<void(Bytes&)> change) {
        Bytes b = good;
        return change(b), b;
    };
    const std::vector<std::pair<std::string, Bytes>> bad = {
        {"format 2", MidiBytes(2, 96, {t, t})},
        {"format 0 with two tracks", MidiBytes(0, 96, {t, t})},
        {"truncated track", with([](Bytes& b) { b.pop_back(); })},
        {"track missing", with([](Bytes& b) { b[9] = 1, b[11] = 2; })},
        {"unknown SMPTE rate", with([](Bytes& b) { b[12] = 0xE0; })},
        {"data byte without status", with([](Bytes& b) { b[23] = 0x40; })},
        {"five-byte delta", with([](Bytes& b) { b.insert(b.begin() + 22, {0x81, 0x81, 0x81, 0x81}), b[21] += 4; })},
        {"no header", Bytes{'M', 'T', 'h', 'd', 0, 0, 0, 6}},
    };
    for (const auto& [name, bytes] : bad) EXPECT_THROW(Import(bytes), ParseException) << name;
}

}  // namespace
}  // namespace sondrel
