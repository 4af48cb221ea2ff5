#include <gtest/gtest.h>

#include <chrono>
#include <cmath>

#include "files/basic/basic_listing.h"
#include "files/module_test_support.h"
#include "model/exception.h"
#include "model/notes.h"

namespace sondrel {
namespace {

using test::Bytes;
using test::Text;
using Options = test::Chooser<BasicImportOptions>;

std::unique_ptr<Module> Import(const Bytes& bytes, Options& options) {
    auto module = test::ImportFresh(FileKind::Basic, bytes, options, "TUNE.BAS");
    EXPECT_TRUE(module);
    return module;
}

std::unique_ptr<Module> Import(const std::string& listing) {
    Options options;
    return Import(Text(listing), options);
}

// Options that import with these chip settings or instrument slots.
Options With(ChipSettings chip) {
    Options options;
    options.change = [chip](BasicImportOptions& o) { o.chip = chip; };
    return options;
}
Options With(std::array<uint8_t, 6> instruments) {
    Options options;
    options.change = [instruments](BasicImportOptions& o) { o.instruments = instruments; };
    return options;
}

struct Cell {
    long tick;
    uint8_t note;
    uint8_t instrument;
    uint8_t volume;
    bool operator==(const Cell&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Cell& c) {
    return out << "{" << c.tick << ", " << NoteName(c.note) << ", i" << int(c.instrument) << ", v" << int(c.volume) << "}";
}

// The filled cells of one channel through the whole song, one line per tick.
std::vector<Cell> Cells(const Module& m, int channel) {
    std::vector<Cell> cells;
    test::ForEachSongLine(m, [&](long tick, const PatternLine& line) {
        if (line.note[channel] != kNoteEmpty)
            cells.push_back({tick, line.note[channel], line.instrument[channel], line.volume[channel]});
    });
    return cells;
}

// Start ticks and notes of the sounding cells only.
using Played = std::vector<std::pair<long, int>>;
Played Notes(const Module& m, int channel = 0) {
    Played notes;
    for (const Cell& c : Cells(m, channel))
        if (c.note != kNoteNull) notes.push_back({c.tick, c.note});
    return notes;
}

constexpr uint8_t kPause = 5;  // the default instrument slots are 0..5 in the dialog's order
Cell Silent(long tick) { return {tick, kNoteNull, kPause, 0}; }

TEST(BasicImport, TempoLengthAndDotsSetTheTicksWithoutDrift) {
    // A quarter at T120 is half a second: 30 ticks, sounding 7/8 of them.
    EXPECT_EQ(Cells(*Import("PLAY \"T120 L4 C D\""), 0),
              (std::vector<Cell>{{0, 72, 0, 15}, Silent(26), {30, 74, 0, 15}, Silent(56)}));
    // A dotted eighth at T60 lasts 3/4 s; two dots make 9/8 of a quarter note.
    EXPECT_EQ(Notes(*Import("PLAY \"T60 C8. D16 E4.. F\"")), (Played{{0, 72}, {45, 74}, {60, 76}, {195, 77}}));
    // L sets the length of what follows; a length after a note is for that note alone.
    EXPECT_EQ(Notes(*Import("PLAY \"L8 C D2 E\"")), (Played{{0, 72}, {15, 74}, {75, 76}}));

    // Sixteenths at T120 are 7.5 ticks: each start is rounded on its own, so the bar
    // still ends on tick 120, and a hundred quarters at T130 end where they should.
    auto sixteenths = Notes(*Import("PLAY \"T120 L16 CCCCCCCCCCCCCCCC C\""));
    ASSERT_EQ(sixteenths.size(), 17u);
    for (long k = 0; k < 17; ++k) EXPECT_EQ(sixteenths[k].first, (k * 15 + 1) / 2) << k;
    EXPECT_EQ(sixteenths[16].first, 120);
    std::string hundred = "PLAY \"T130 L4\": FOR I = 1 TO 100: PLAY \"C\": NEXT";
    auto quarters = Notes(*Import(hundred));
    ASSERT_EQ(quarters.size(), 100u);
    EXPECT_EQ(quarters[99].first, std::lround(99 * 3600.0 / 130.0));

    // Rests: P with its own length and dots, and N0; PAL modules count fifty ticks a second.
    EXPECT_EQ(Notes(*Import("PLAY \"T120 C P4. D N0 E\"")), (Played{{0, 72}, {75, 74}, {135, 76}}));
    Options pal = With(ChipSettings{kDivider1x, kChipPal});
    EXPECT_EQ(Notes(*Import(Text("PLAY \"T120 C D\""), pal)), (Played{{0, 72}, {25, 74}}));
}

TEST(BasicImport, ArticulationDecidesWhereTheSilentCellGoes) {
    Options options = With(std::array<uint8_t, 6>{7, 8, 9, 10, 11, 12});
    auto m = Import(Text("PLAY \"T120 MS C MN D ML E F P4 MB G\""), options);
    EXPECT_EQ(Cells(*m, 0), (std::vector<Cell>{{0, 72, 8, 15},
                                               {23, kNoteNull, 12, 0},  // staccato sounds 3/4 (22.5 rounds up)
                                               {30, 74, 7, 15},
                                               {56, kNoteNull, 12, 0},  // normal 7/8
                                               {60, 76, 9, 15},         // legato runs into the next note
                                               {90, 77, 9, 15},
                                               {120, kNoteNull, 12, 0},  // and into the pause
                                               {150, 79, 9, 15},
                                               {180, kNoteNull, 12, 0}}));
    EXPECT_EQ(m->instruments[8].name + "|" + m->instruments[12].name + "|" + m->instruments[0].name,
              "PLAY staccato|Pause|");
    EXPECT_EQ(m->title, "TUNE");  // from the file name
}

TEST(BasicImport, PitchesOfNotesOctavesAndNumberedNotes) {
    // Octave 3 begins with middle C; N37 is the same note; sharps and flats meet.
    EXPECT_EQ(Notes(*Import("PLAY \"O3 C N37 C# D- > C < < B O6 B\"")),
              (Played{{0, 60}, {30, 60}, {60, 61}, {90, 61}, {120, 72}, {150, 59},
                                                 {180, 107}}));
    // Octaves stop at 0 and 6; notes below the chip's lowest tone move up by octaves.
    auto low = Notes(*Import("PLAY \"O0 C <<< C O1 A >>>>>>>> B\""));
    EXPECT_EQ(low, (Played{{0, 48}, {30, 48}, {60, 45}, {90, 107}}));
    // With the divider at 2x the chip reaches an octave lower, so the low A stays put.
    Options halved = With(ChipSettings{kDivider2x, kChipNtsc});
    EXPECT_EQ(Notes(*Import(Text("PLAY \"O1 A O3 C\""), halved)), (Played{{0, 57}, {30, 72}}));

    // BASIC refuses E#, B#, C- and F-: the notes before the fault play, the rest does not.
    EXPECT_EQ(Notes(*Import("PLAY \"C D E# F\": PLAY \"G\"")), (Played{{0, 72}, {30, 74}, {60, 79}}));
    EXPECT_EQ(Notes(*Import("PLAY \"C A.4 D\"")).size(), 2u);  // the dotted A plays, then "4" is refused
    EXPECT_EQ(Notes(*Import("PLAY \"C L128 D\"")).size(), 1u);
}

TEST(BasicImport, SubstringsAndVariableArguments) {
    // X plays a string variable; =name; takes a number from a variable.
    EXPECT_EQ(Notes(*Import("10 A$ = \"CD\" + \"E\"\n20 PLAY \"XA$;G\"")),
              (Played{{0, 72}, {30, 74}, {60, 76}, {90, 79}}));
    EXPECT_EQ(Notes(*Import("10 FOR I = 2 TO 4\n20 PLAY \"O=I; C\"\n30 NEXT I\n40 N = 61: PLAY \"N=N;\"")),
              (Played{{0, 48}, {30, 60}, {60, 72}, {90, 84}}));
    // Operators bind as in BASIC: ^, then * and /, \, MOD, + and -.
    EXPECT_EQ(Notes(*Import("N = 30 + 3 * 4 ^ 2 \\ 5 MOD 7 - -1: PLAY \"N=N;\"")), (Played{{0, 23 + 33}}));
    // A substring that plays itself stops at the nesting limit instead of running on.
    EXPECT_TRUE(Notes(*Import("10 A$ = \"CXA$;\"\n20 PLAY A$")).size() <= 20u);
    // Unknown variables and numbers in X stop the string.
    EXPECT_EQ(Notes(*Import("PLAY \"C XA; D\"")).size(), 1u);
    EXPECT_EQ(Notes(*Import("INPUT N: PLAY \"C N=N; D\"")).size(), 1u);
    // MID$ as a statement changes the string before it plays.
    EXPECT_EQ(Notes(*Import("10 A$ = \"CDE\": MID$(A$, 2, 1) = \"G\": PLAY A$")),
              (Played{{0, 72}, {30, 79}, {60, 76}}));
}

TEST(BasicImport, LoopsSubroutinesAndEndlessPrograms) {
    const Played threeCs{{0, 72}, {30, 72}, {60, 72}};
    EXPECT_EQ(Notes(*Import("FOR I = 1 TO 3: PLAY \"C\": NEXT I")), threeCs);
    EXPECT_EQ(Notes(*Import("FOR I = 10 TO 1 STEP -4: PLAY \"C\": NEXT")), threeCs);
    EXPECT_EQ(Notes(*Import("FOR I = 1 TO 0: PLAY \"D\": NEXT: PLAY \"C\"")).size(), 1u);
    EXPECT_EQ(Notes(*Import("10 GOSUB 100: GOSUB 100: GOSUB 100: END\n100 PLAY \"C\": RETURN")), threeCs);
    EXPECT_EQ(Notes(*Import("10 ON 2 GOSUB 100, 200: END\n100 PLAY \"D\": RETURN\n200 PLAY \"C\": RETURN")).size(), 1u);
    // A counted loop made of IF and GOTO runs its course.
    EXPECT_EQ(Notes(*Import("10 I = I + 1: PLAY \"C\": IF I < 3 THEN 10")), threeCs);
    // A program that replays its song for ever plays it once, by GOTO or by a
    // condition that never changes; a delay loop costs no time.
    EXPECT_EQ(Notes(*Import("10 PLAY \"C\"\n20 FOR D = 1 TO 30000: NEXT\n30 GOTO 10")).size(), 1u);
    EXPECT_EQ(Notes(*Import("10 X = 1\n20 PLAY \"C\"\n30 IF X = 1 THEN 20")).size(), 1u);
    // A jump over lines not yet run is no loop.
    EXPECT_EQ(Notes(*Import("10 GOTO 30\n20 PLAY \"D\": END\n30 PLAY \"C\": GOTO 20")).size(), 2u);

    // Hostile programs end in bounded time, keeping what they played.
    auto started = std::chrono::steady_clock::now();
    auto busy = Import("10 PLAY \"C\": FOR I = 1 TO 1E9: A = A + 1: NEXT: PLAY \"D\"");
    EXPECT_GE(Notes(*busy).size(), 1u);
    EXPECT_NE(busy->notes.find("cut short"), std::string::npos);
    // Whole notes at T32 last 7.5 s: the module fills up (256 patterns of 256 lines) first.
    auto endless = Import("10 I = I + 1: PLAY \"T32 L1 C\": IF I > 0 THEN 10");
    EXPECT_GT(test::ForEachSongLine(*endless), 65536 - 450);
    EXPECT_LE(test::ForEachSongLine(*endless), 65536);
    Import("10 GOSUB 10");
    EXPECT_EQ(Notes(*Import("A = " + std::string(100000, '(') + "1" + std::string(100000, ')') + ": PLAY \"C\"")).size(),
              1u);
    Import("10 A$ = A$ + \"CCCCCCCCCCCCCCCC\": IF LEN(A$) < 100000 THEN 10\n20 PLAY A$");
    EXPECT_LT(std::chrono::steady_clock::now() - started, std::chrono::seconds(20));
}

TEST(BasicImport, IfRunsKnownBranchesAndPlaysUnknownOnes) {
    EXPECT_EQ(Notes(*Import("10 C = 2\n20 IF C = 1 THEN PLAY \"D\" ELSE PLAY \"C\"")), (Played{{0, 72}}));
    // A condition on input cannot be known: its music plays, its jumps are not taken.
    EXPECT_EQ(Notes(*Import("10 INPUT E\n20 IF E = 1 THEN PLAY \"C\" ELSE GOTO 10\n30 IF INKEY$ = \"\" THEN 30\n"
                            "40 PLAY \"D\"")),
              (Played{{0, 72}, {30, 74}}));
    // Block IF of structured listings: the branch the value chooses, and on after END IF.
    for (const auto& [x, note] : std::vector<std::pair<int, int>>{{1, 72}, {2, 74}, {3, 76}}) {
        std::string listing = "X = " + std::to_string(x) +
                              "\nIF X = 1 THEN\n PLAY \"C\"\nELSEIF X = 2 THEN\n IF X THEN\n PLAY \"D\"\n END IF\n"
                              "ELSE\n PLAY \"E\"\nEND IF\nPLAY \"F\"";
        EXPECT_EQ(Notes(*Import(listing)), (Played{{0, note}, {30, 77}})) << x;
    }
    // Keywords run together with names, as GW-BASIC lets them be typed.
    EXPECT_EQ(Notes(*Import("10 FORI=1TO2:PLAYA$+\"C\":NEXTI")).size(), 2u);
}

TEST(BasicImport, ThreeVoicesSoundAndNoise) {
    auto m = Import("10 PLAY \"V8 C\", \"E4 E\", \"G2\"\n20 PLAY \"D\", \"F\", \"A\"");
    EXPECT_EQ(Cells(*m, 0).front(), (Cell{0, 72, 0, 8}));
    EXPECT_EQ(Notes(*m, 1), (Played{{0, 76}, {30, 76}, {60, 77}}));
    // In the foreground each PLAY waits for all voices: the second starts after the half note.
    EXPECT_EQ(Notes(*m, 0), (Played{{0, 72}, {60, 74}}));
    EXPECT_EQ(Notes(*m, 2), (Played{{0, 79}, {60, 81}}));
    // In the background the voices queue on their own.
    auto queued = Import("10 PLAY \"MB C\", \"E2\"\n20 PLAY \"D\", \"F\"");
    EXPECT_EQ(Notes(*queued, 0), (Played{{0, 72}, {30, 74}}));

    // SOUND: duration in 18.2 Hz clock ticks, 32767 is silence; the Tandy form has volume and voice.
    auto sound = Import("SOUND 440, 18.2: SOUND 32767, 9.1: SOUND 880, 9.1, 7, 2: BEEP: NOISE 5, 12, 18.2");
    EXPECT_EQ(Cells(*sound, 0), (std::vector<Cell>{{0, 69, 3, 15}, Silent(60), {120, 79, 4, 15}, Silent(135)}));
    EXPECT_EQ(Cells(*sound, 2), (std::vector<Cell>{{90, 81, 3, 7}, Silent(120)}));
    EXPECT_EQ(Cells(*sound, 3), (std::vector<Cell>{{135, 252, 3, 12}, Silent(195)}));
    EXPECT_EQ(sound->instruments[4].name, "BEEP");
    // Arguments BASIC refuses skip the statement only.
    EXPECT_EQ(Notes(*Import("SOUND 20, 5: SOUND 440, 70000: SOUND 440, 1, 1, 3: SOUND 440, 5")).size(), 1u);
    // The same slot for two kinds carries both names.
    Options shared = With(std::array<uint8_t, 6>{0, 0, 0, 1, 1, 2});
    EXPECT_EQ(Import(Text("BEEP"), shared)->instruments[1].name, "SOUND/BEEP");
}

// Tokenized GW-BASIC lines: link, line number, tokens, zero.
void AddLine(Bytes& file, int number, const Bytes& tokens) {
    file.insert(file.end(), {0x34, 0x12, static_cast<unsigned char>(number & 255), static_cast<unsigned char>(number >> 8)});
    file.insert(file.end(), tokens.begin(), tokens.end());
    file.push_back(0);
}
TEST(BasicImport, ReadsTokenizedPrograms) {
    Bytes file{0xFF};
    AddLine(file, 10, test::Concat({Text("A$"), {0xE7}, Text("\"CDE\""), {':', 0x8F, 0xD9}, Text("comment")}));  // A$="CDE"'
    AddLine(file, 20, test::Concat({{0x82}, Text(" I"), {0xE7, 0x12, 0xCC, 0x0F, 200}, {0xCF, 0x1C, 0x63, 0x00}}));  // FOR I=1 TO 200 STEP 99
    AddLine(file, 30, test::Concat({{0xFE, 0x93}, Text(" A$"), {0x3A, 0x83}, Text(" I")}));  // PLAY A$:NEXT I
    AddLine(file, 40, test::Concat({{0xC4}, {0x1D, 0x00, 0x00, 0x5C, 0x88}, Text(","), {0x1B}}));  // SOUND 220!,10
    AddLine(file, 50, test::Concat({{0x89, 0x0E, 0x0A, 0x00}}));  // GOTO 10
    file.insert(file.end(), {0, 0, 0x1A, 0x1A, 0x55});     // end mark, then leftovers of the last record
    Options options;
    auto m = Import(file, options);
    auto notes = Notes(*m);
    ASSERT_EQ(notes.size(), 10u);
    EXPECT_EQ(notes[3], (std::pair<long, int>{90, 72}));
    EXPECT_EQ(notes[9], (std::pair<long, int>{270, 57}));  // 220 Hz for 10 clock ticks
    EXPECT_EQ(test::ForEachSongLine(*m), 270 + std::lround(10 / 18.2 * 60) + 1);
}

TEST(BasicImport, RefusesWhatIsNoListing) {
    Options options;
    auto kept = test::NewModule({}, "kept");
    for (const Bytes& bytes : std::vector<Bytes>{
             {0xFE, 0x12, 0x34, 0x56, 0x78},                                // protected
             {},                                                            // empty
             {'1', '0', ' ', 'P', 'L', 'A', 'Y', 0x00, 0x01, 0xF3, 0x80},  // binary junk
             {0xFF, 0x34, 0x12, 0x0A, 0x00, 0xC5},                          // tokenized, cut short
             {0xFF, 0x34, 0x12, 0x14, 0x00, 0xC5, 0, 0x34, 0x12, 0x0A, 0x00, 0xC5, 0, 0, 0}}) {  // 20 before 10
        EXPECT_THROW(test::ImportBytes(FileKind::Basic, *kept, bytes, options), ParseException);
        EXPECT_EQ(kept->title, "kept");
    }
    EXPECT_FALSE(options.proposal);

    // Declining the options leaves the module as it was.
    options.decline = true;
    EXPECT_EQ(test::ImportFresh(FileKind::Basic, Text("PLAY \"C\""), options), nullptr);
    EXPECT_TRUE(options.proposal);
}

TEST(BasicImport, AsciiListingsSortNumberedLinesAndKeepUnnumberedOnes) {
    auto lines = ReadBasicProgram(Text("20 PLAY B$\r\n10 B$=\"C\"\r\n\r\n20 PLAY \"D\"\r\n\x1A" "30 junk"));
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0].number, 10);
    EXPECT_EQ(lines[1].text, "PLAY \"D\"");
    auto mixed = ReadBasicProgram(Text("CLS\n20 PLAY \"C\"\n10 PLAY \"D\"\n"));
    ASSERT_EQ(mixed.size(), 3u);
    EXPECT_EQ(mixed[0].number, -1);
    EXPECT_EQ(mixed[2].number, 10);  // file order, as a structured listing runs
}

}  // namespace
}  // namespace sondrel
