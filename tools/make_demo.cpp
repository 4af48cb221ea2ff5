// make-demo: builds the demo song through the module's own operations and
// saves it. The result is committed as data/demo.sdrltk, the song the program
// opens on first start.
//
// usage: make-demo OUT.sdrltk

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "files/module_file.h"
#include "model/exception.h"
#include "model/module.h"
#include "model/notes.h"

namespace sondrel {
namespace {

enum Instruments : uint8_t { kLead = 0, kBass = 1, kPad = 2, kPluck = 3 };
enum Channels { kLeadChannel = 0, kBassChannel = 1, kArpChannel = 2, kDrumChannel = 3 };

constexpr uint8_t kHat = 251;    // "WHi"
constexpr uint8_t kSnare = 252;  // "WMd"
constexpr uint8_t kKick = 249;   // "PLo"

void SetUpInstruments(Module& module) {
    Instrument& lead = module.instruments[kLead];
    lead.name = "Lead";
    lead.startVolume = 255;
    lead.delay = {4, 8, 16, 8};
    lead.volumeAdd = {0, -2, -1, 0, 0};
    lead.vibratoSpeed = {0, 0, 1, 1, 1};
    lead.vibratoStrength = {0, 0, 3, 4, 4};

    Instrument& bass = module.instruments[kBass];
    bass.name = "Bass";
    bass.startVolume = 255;
    bass.delay = {2, 6, 20, 8};
    bass.volumeAdd = {0, -4, -2, 0, 0};

    Instrument& pad = module.instruments[kPad];
    pad.name = "Soft arp";
    pad.startVolume = 160;
    pad.delay = {4, 8, 16, 8};
    pad.volumeAdd = {12, 0, -1, 0, 0};
    pad.vibratoSpeed = {0, 0, 0, 0, 0};
    pad.vibratoStrength = {0, 0, 2, 2, 2};

    Instrument& pluck = module.instruments[kPluck];
    pluck.name = "Drum pluck";
    pluck.startVolume = 255;
    pluck.delay = {1, 3, 6, 8};
    pluck.volumeAdd = {-16, -8, -4, -2, 0};
}

void Note(Pattern& pattern, int line, int channel, uint8_t note, uint8_t volume, uint8_t instrument) {
    PatternLine& cell = pattern.lines[line];
    cell.note[channel] = note;
    cell.volume[channel] = volume;
    cell.instrument[channel] = instrument;
    cell.detune[channel] = 0;
}

// The chords of every pattern: A minor, F, C, G, sixteen lines each.
constexpr uint8_t kRoots[4] = {45, 53, 48, 55};
constexpr uint8_t kChords[4][3] = {{69, 72, 76}, {65, 69, 72}, {67, 72, 76}, {67, 71, 74}};

void Bass(Pattern& pattern, bool walking) {
    for (int line = 0; line < 64; line += 2) {
        const uint8_t root = kRoots[line / 16];
        const int step = (line % 16) / 2;
        uint8_t note = (step % 2 == 1) ? static_cast<uint8_t>(root + 12) : root;
        if (walking && step == 7) note = static_cast<uint8_t>(root + 7);
        Note(pattern, line, kBassChannel, note, 14, kBass);
    }
}

void Drums(Pattern& pattern, bool busy) {
    for (int line = 0; line < 64; ++line) {
        if (line % 8 == 0) Note(pattern, line, kDrumChannel, kKick, 15, kPluck);
        else if (line % 8 == 4) Note(pattern, line, kDrumChannel, kSnare, 13, kPluck);
        else if (line % 2 == 0 || (busy && line % 8 == 7)) Note(pattern, line, kDrumChannel, kHat, 8, kPluck);
    }
}

void Arpeggio(Pattern& pattern, uint8_t volume) {
    for (int line = 0; line < 64; line += 2) {
        const uint8_t* chord = kChords[line / 16];
        Note(pattern, line, kArpChannel, chord[(line / 2) % 3], volume, kPad);
    }
}

// A melody line: one entry per line, 0 where the previous note goes on.
void Melody(Pattern& pattern, const std::vector<uint8_t>& notes) {
    for (int line = 0; line < static_cast<int>(notes.size()); ++line)
        if (notes[line]) Note(pattern, line, kLeadChannel, notes[line], 13, kLead);
}

void Effect(Pattern& pattern, int line, int channel, uint8_t command, uint8_t param) {
    pattern.lines[line].channelCommand[channel] = command;
    pattern.lines[line].channelParam[channel] = param;
}

// Every effect once: chords by arpeggio on the arpeggio channel; on the
// lead vibrato, a glide, a bend up and down, a late note, a fade and
// staccato cuts; a snare roll by retriggering.
void Effects(Pattern& pattern) {
    Bass(pattern, true);
    Drums(pattern, false);
    constexpr uint8_t kChordShapes[4] = {0x37, 0x47, 0x47, 0x47};  // A minor, F, C, G
    for (int line = 0; line < 64; line += 2) {
        Note(pattern, line, kArpChannel, static_cast<uint8_t>(kRoots[line / 16] + 12), 9, kPad);
        Effect(pattern, line, kArpChannel, kEffectArpeggio, kChordShapes[line / 16]);
        Effect(pattern, line + 1, kArpChannel, kEffectArpeggio, 0);  // the same chord goes on
    }
    Melody(pattern, {76, 0, 0, 0, 0, 0, 0, 0, 72, 0, 0, 0, 0, 0, 0, 0,
                     72, 0, 0, 0, 0, 0, 0, 0, 69, 0, 0, 0, 72, 0, 0, 0,
                     76, 0, 0, 0, 0, 0, 0, 0, 79, 0, 79, 0, 76, 0, 0, 0,
                     74, 0, 0, 0, 0, 0, 0, 0, 71, 0, 0, 0, 0, 0, 0, 0});
    for (int line = 0; line < 8; ++line) Effect(pattern, line, kLeadChannel, kEffectVibrato, line ? 0 : 0x46);
    for (int line = 8; line < 12; ++line) Effect(pattern, line, kLeadChannel, kEffectGlide, line == 8 ? 4 : 0);
    for (int line = 20; line < 24; ++line) Effect(pattern, line, kLeadChannel, kEffectSlideUp, line == 20 ? 2 : 0);
    Effect(pattern, 24, kLeadChannel, kEffectNoteDelay, 3);
    for (int line = 32; line < 40; ++line) Effect(pattern, line, kLeadChannel, kEffectVolumeSlide, line == 32 ? 0x01 : 0);
    for (int line : {40, 42, 44}) Effect(pattern, line, kLeadChannel, kEffectNoteCut, 2);
    for (int line = 52; line < 56; ++line) Effect(pattern, line, kLeadChannel, kEffectSlideDown, line == 52 ? 1 : 0);
    for (int line = 60; line < 64; ++line) {
        Note(pattern, line, kDrumChannel, kSnare, 12, kPluck);
        Effect(pattern, line, kDrumChannel, kEffectRetrigger, 2);
    }
}

Pattern& NewPattern(Module& module, int number, const char* name) {
    module.CreatePattern(number);
    Pattern& pattern = module.patterns[number];
    pattern.name = name;
    pattern.tactEnabled = {1, 1};
    pattern.tactInterval = {16, 4};
    return pattern;
}

std::unique_ptr<Module> BuildDemo() {
    auto module = std::make_unique<Module>();
    module->NewModule({kDivider1x, kChipNtsc});
    module->title = "Four Corners";
    module->author = "Sondrel developers";
    module->notes = "The demo song: three tone channels and noise drums.\n"
                    "Built by tools/make-demo from the module's own operations.";
    SetUpInstruments(*module);

    // Intro: bass and drums, the arpeggio swelling in through volume commands.
    Pattern& intro = NewPattern(*module, 0, "Intro");
    Bass(intro, false);
    Drums(intro, false);
    Arpeggio(intro, 4);
    for (int line = 16; line < 64; line += 16) {
        intro.lines[line].channelCommand[kArpChannel] = kChannelCommandVO;
        intro.lines[line].channelParam[kArpChannel] = static_cast<uint8_t>(4 + line / 8);
    }
    intro.lines[0].command = kCommandST;
    intro.lines[0].commandParam = 0xFF;

    // Verse A: the tune, at speed 6.0 again after the shuffle.
    Pattern& verseA = NewPattern(*module, 1, "Verse A");
    Bass(verseA, false);
    Drums(verseA, false);
    Arpeggio(verseA, 9);
    Melody(verseA, {76, 0, 0, 0, 74, 0, 72, 0, 71, 0, 72, 0, 0, 0, 69, 0,
                    72, 0, 0, 0, 74, 0, 76, 0, 77, 0, 76, 0, 74, 0, 72, 0,
                    76, 0, 0, 0, 79, 0, 0, 0, 76, 0, 74, 0, 72, 0, 0, 0,
                    74, 0, 0, 0, 71, 0, 72, 0, 74, 0, 0, 0, 0, 0, 0, 0});
    verseA.lines[0].command = kCommandSP;
    verseA.lines[0].commandParam = 48;

    // Verse B: higher, with trills by pitch variation and the arpeggio panned right.
    Pattern& verseB = NewPattern(*module, 2, "Verse B");
    Bass(verseB, true);
    Drums(verseB, true);
    Arpeggio(verseB, 9);
    Melody(verseB, {81, 0, 0, 0, 0, 0, 79, 0, 76, 0, 0, 0, 74, 0, 76, 0,
                    77, 0, 0, 0, 76, 0, 74, 0, 72, 0, 0, 0, 69, 0, 72, 0,
                    76, 0, 79, 0, 84, 0, 0, 0, 83, 0, 79, 0, 76, 0, 0, 0,
                    74, 0, 77, 0, 79, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0});
    verseB.lines[0].command = kCommandST;
    verseB.lines[0].commandParam = 0xBF;  // tone 2 on the right only
    verseB.lines[52].channelCommand[kLeadChannel] = kChannelCommandPV;
    verseB.lines[52].channelParam[kLeadChannel] = 12;
    verseB.lines[60].channelCommand[kLeadChannel] = kChannelCommandPV;
    verseB.lines[60].channelParam[kLeadChannel] = 0;
    verseB.lines[56].channelCommand[kLeadChannel] = kChannelCommandVO;
    verseB.lines[56].channelParam[kLeadChannel] = 9;

    // Shuffle: lines of six and five ticks, plucked arpeggio, centred again.
    Pattern& shuffle = NewPattern(*module, 3, "Shuffle");
    Bass(shuffle, true);
    Drums(shuffle, true);
    Arpeggio(shuffle, 11);
    Melody(shuffle, {69, 0, 72, 0, 76, 0, 72, 0, 69, 0, 0, 0, 71, 0, 72, 0,
                     69, 0, 65, 0, 69, 0, 72, 0, 77, 0, 0, 0, 76, 0, 74, 0,
                     72, 0, 76, 0, 79, 0, 76, 0, 72, 0, 0, 0, 74, 0, 76, 0,
                     74, 0, 71, 0, 67, 0, 71, 0, 74, 0, 0, 0, 71, 0, 0, 0});
    shuffle.lines[0].command = kCommandSP;
    shuffle.lines[0].commandParam = 44;
    shuffle.lines[1].command = kCommandST;
    shuffle.lines[1].commandParam = 0xFF;
    for (int line = 0; line < 64; line += 2) shuffle.lines[line].instrument[kArpChannel] = kPluck;

    Effects(NewPattern(*module, 4, "Effects"));

    const uint8_t order[] = {0, 1, 2, 1, 3, 2, 4};
    for (size_t i = 0; i < sizeof order; ++i) module->patternList[i] = order[i];
    module->patternListLength = sizeof order;
    module->repeatPosition = 1;
    return module;
}

}  // namespace
}  // namespace sondrel

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: make-demo OUT.sdrltk\n");
        return 2;
    }
    try {
        auto module = sondrel::BuildDemo();
        sondrel::SaveModule(*module, argv[1]);
    } catch (const sondrel::Exception& e) {
        std::fprintf(stderr, "make-demo: Couldn't save module.\n  %s\n", e.what());
        return 1;
    }
    std::printf("Wrote %s\n", argv[1]);
    return 0;
}
