// What the demo song becomes in every file the program writes, pinned by
// digests: a change to a writer or to how files reach the disk must leave
// these bytes as they are.

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "files/export/midi_export.h"
#include "files/export/song_render.h"
#include "files/export/vgm_export.h"
#include "files/module_file.h"
#include "files/module_test_support.h"
#include "test_support.h"

namespace sondrel {
namespace {

// FNV-1a, 64 bits.
uint64_t Digest(const std::vector<unsigned char>& bytes) {
    uint64_t hash = 0xcbf29ce484222325ull;
    for (unsigned char byte : bytes) hash = (hash ^ byte) * 0x100000001b3ull;
    return hash;
}

TEST(StoredOutputTest, TheDemoSongSavesExportsAndRendersToTheSameBytes) {
    auto demo = test::LoadDemo();
    ASSERT_TRUE(demo);
    test::ScratchDir dir;
    SaveModule(*demo, (dir / "demo.sdrltk").string());
    EXPECT_EQ(test::ReadBytes(dir / "demo.sdrltk"), test::ReadBytes(test::SourceDir() / "data" / "demo.sdrltk"));
    // Without its pattern of channel effects the demo is the song it was
    // before they existed, and every file made from it keeps its bytes.
    auto plain = test::LoadDemoWithoutEffects();
    ASSERT_TRUE(plain);
    SaveModule(*plain, (dir / "plain.sdrltk").string());
    ExportVgm(*plain, (dir / "demo.vgm").string());
    WriteMidiFile(MidiExportOptions{}, *plain, (dir / "demo.mid").string());
    RenderSongToWav(*plain, (dir / "demo.wav").string(), {1, 0.0, 50});
    EXPECT_EQ(Digest(test::ReadBytes(dir / "plain.sdrltk")), 0x3842c097e5545391ull);
    EXPECT_EQ(Digest(test::ReadBytes(dir / "demo.vgm")), 0x4339f897121acb81ull);
    EXPECT_EQ(Digest(test::ReadBytes(dir / "demo.mid")), 0x62f7dc2ed85b471cull);
    EXPECT_EQ(Digest(test::ReadBytes(dir / "demo.wav")), 0x6df90ac0c0431d43ull);
}


}  // namespace
}  // namespace sondrel
