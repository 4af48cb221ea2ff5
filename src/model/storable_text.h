#pragma once
// The texts a module file can hold. Its string reader ends a text at the digit
// "0" and misreads some lengths above 255, so every text that enters a module
// (an import, the command line, an editor field) is made storable first: at
// most 255 characters, each "0" written as the letter "O".

#include <cstddef>
#include <string>
#include <vector>

#include "model/module.h"

namespace sondrel {

inline constexpr size_t kLongestStorableText = 255;
inline constexpr char kZeroStandIn = 'O';

enum class TextShape {
    OneLine,
    Lines,  // a cut keeps whole lines when at least one fits
};

// What making one text storable did to it.
struct TextRepair {
    bool cut = false;
    bool zerosReplaced = false;
    bool Changed() const { return cut || zerosReplaced; }
};

TextRepair MakeTextStorable(std::string& text, TextShape shape = TextShape::OneLine);

enum class TextRule { Cut, ZeroReplaced };

// One change made to one of a module's texts.
struct TextChange {
    std::string field;  // "title", "notes", "instrument 3 name", "pattern 5 name"
    TextRule rule = TextRule::Cut;
    size_t length = 0;  // the text's length afterwards
    bool operator==(const TextChange&) const = default;
};

// For the user: "notes cut to 253 characters (a module file holds at most 255)".
std::string Describe(const TextChange& change);

// Calls visit(field, text) for every text a module file stores: title, author,
// notes, the 16 instrument names and the names of the patterns in use. Works
// on a Module and on a const Module alike.
template <typename AnyModule, typename Visit>
void ForEachText(AnyModule& module, Visit visit) {
    visit(std::string("title"), module.title);
    visit(std::string("author"), module.author);
    visit(std::string("notes"), module.notes);
    for (int i = 0; i < kInstruments; ++i) visit("instrument " + std::to_string(i) + " name", module.instruments[i].name);
    for (int p = 0; p < kPatterns; ++p) {
        if (module.patterns[p].used) visit("pattern " + std::to_string(p) + " name", module.patterns[p].name);
    }
}

// Makes every text of the module storable (the notes keep whole lines) and
// lists what changed, in the order ForEachText visits the fields.
std::vector<TextChange> MakeModuleTextsStorable(Module& module);

}  // namespace sondrel
