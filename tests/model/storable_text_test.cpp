#include "model/storable_text.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace sondrel {
namespace {

TEST(StorableText, TextsAreCutToTheLimitAndZerosBecomeTheLetterO) {
    const std::string a255(255, 'a');
    const std::string line100 = std::string(99, 'l') + "\n";
    struct Case {
        std::string text;
        TextShape shape;
        std::string expected;
        bool cut, zeros;
    };
    const Case cases[] = {
        {"", TextShape::OneLine, "", false, false},
        {a255, TextShape::OneLine, a255, false, false},
        {a255 + "0", TextShape::OneLine, a255, true, false},  // the zero is cut away, not replaced
        {"Track 10\n0", TextShape::Lines, "Track 1O\nO", false, true},
        {a255 + "b", TextShape::Lines, a255, true, false},    // no line end: cut at the limit
        {line100 + line100 + line100, TextShape::Lines, line100 + line100, true, false},
        {"0" + line100 + line100 + line100, TextShape::OneLine, "O" + (line100 + line100 + line100).substr(0, 254), true, true},
        {line100 + std::string(155, 'x') + "\nmore", TextShape::Lines, line100 + std::string(155, 'x'), true, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text);
        std::string text = c.text;
        const TextRepair repair = MakeTextStorable(text, c.shape);
        EXPECT_EQ(text, c.expected);
        EXPECT_EQ(repair.cut, c.cut);
        EXPECT_EQ(repair.zerosReplaced, c.zeros);
    }
}

TEST(StorableText, EveryStoredFieldIsRepairedAndNamedForTheUser) {
    auto module = std::make_unique<Module>();
    module->NewModule({});
    module->title = "Song 2";
    module->author = std::string(300, 'a');
    module->notes = std::string(200, 'n') + "\n" + std::string(100, '0');
    module->instruments[3].name = "Bass 0";
    module->CreatePattern(5);
    module->patterns[5].name = "Verse 10";
    module->patterns[6].name = "unused 0";  // not in use, so not stored

    const std::vector<TextChange> changes = MakeModuleTextsStorable(*module);
    const std::vector<TextChange> expected = {
        {"author", TextRule::Cut, 255},
        {"notes", TextRule::Cut, 201},
        {"instrument 3 name", TextRule::ZeroReplaced, 6},
        {"pattern 5 name", TextRule::ZeroReplaced, 8},
    };
    EXPECT_EQ(changes, expected);
    EXPECT_EQ(module->notes, std::string(200, 'n') + "\n");
    EXPECT_EQ(module->patterns[5].name, "Verse 1O");
    EXPECT_EQ(module->patterns[6].name, "unused 0");
    EXPECT_EQ(Describe(changes[1]), "notes cut to 201 characters (a module file holds at most 255)");
    EXPECT_EQ(Describe(changes[2]), "instrument 3 name: digit 0 written as the letter O (a module file can't hold it)");
    EXPECT_TRUE(MakeModuleTextsStorable(*module).empty());
}

}  // namespace
}  // namespace sondrel
