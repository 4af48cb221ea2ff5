#include "model/storable_text.h"

#include <algorithm>

namespace sondrel {

namespace {

// How much of a text longer than the limit is kept. A line ending right after
// the limit still counts as a whole line; its newline goes.
size_t CutLength(const std::string& text, TextShape shape) {
    if (shape == TextShape::Lines) {
        size_t lineEnd = text.rfind('\n', kLongestStorableText);
        if (lineEnd != std::string::npos) return std::min(lineEnd + 1, kLongestStorableText);
    }
    return kLongestStorableText;
}

}  // namespace

TextRepair MakeTextStorable(std::string& text, TextShape shape) {
    TextRepair repair;
    if (text.size() > kLongestStorableText) {
        text.resize(CutLength(text, shape));
        repair.cut = true;
    }
    for (char& c : text) {
        if (c != '0') continue;
        c = kZeroStandIn;
        repair.zerosReplaced = true;
    }
    return repair;
}

std::string Describe(const TextChange& change) {
    if (change.rule == TextRule::Cut) {
        return change.field + " cut to " + std::to_string(change.length) + " characters (a module file holds at most " +
               std::to_string(kLongestStorableText) + ")";
    }
    return change.field + ": digit 0 written as the letter " + kZeroStandIn + " (a module file can't hold it)";
}

std::vector<TextChange> MakeModuleTextsStorable(Module& module) {
    std::vector<TextChange> changes;
    ForEachText(module, [&](const std::string& field, std::string& text) {
        const TextRepair repair = MakeTextStorable(text, &text == &module.notes ? TextShape::Lines : TextShape::OneLine);
        if (repair.cut) changes.push_back({field, TextRule::Cut, text.size()});
        if (repair.zerosReplaced) changes.push_back({field, TextRule::ZeroReplaced, text.size()});
    });
    return changes;
}

}  // namespace sondrel
