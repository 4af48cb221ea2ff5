#include "ui/requesters/message_text.h"

#include <sstream>

#include "ui/painter.h"

namespace sondrel {

int MeasureText(const std::string& text, const Gorb_Font* font) {
    return font != nullptr ? font->TextWidth(text)
                           : static_cast<int>(text.size()) * MessageText::kPlainCharWidth;
}

int TextLineHeight(const Gorb_Font* font) {
    return font != nullptr ? std::max(Painter::TextRowHeight(*font), 1) : MessageText::kPlainLineHeight;
}

namespace {

// Appends word to the lines, breaking it where it alone is wider than width.
void PlaceWord(std::vector<std::string>& lines, std::string& line, std::string word, int width,
               const Gorb_Font* font) {
    const std::string joined = line.empty() ? word : line + " " + word;
    if (MeasureText(joined, font) <= width) {
        line = joined;
        return;
    }
    if (!line.empty()) lines.push_back(line);
    line.clear();
    while (word.size() > 1 && MeasureText(word, font) > width) {
        std::size_t fits = 1;
        while (fits < word.size() && MeasureText(word.substr(0, fits + 1), font) <= width) ++fits;
        lines.push_back(word.substr(0, fits));
        word.erase(0, fits);
    }
    line = word;
}

}  // namespace

std::vector<std::string> WrapText(const std::string& text, int width, const Gorb_Font* font) {
    std::vector<std::string> lines;
    std::istringstream paragraphs(text);
    std::string paragraph;
    while (std::getline(paragraphs, paragraph)) {
        std::istringstream words(paragraph);
        std::string word;
        std::string line;
        while (words >> word) PlaceWord(lines, line, word, width, font);
        lines.push_back(line);
    }
    if (lines.empty()) lines.emplace_back();
    return lines;
}

void MessageText::Draw(Painter& painter, const DrawStyle& style) const {
    if (style.font == nullptr) return;
    const int height = TextLineHeight(style.font);
    for (std::size_t i = 0; i < lines_.size(); ++i) {
        const Gorb_Rect row{0, static_cast<int>(i) * height, Rect().w, height};
        painter.TextIn(*style.font, row, lines_[i], style.Colour(ThemeColour::Text), align_, fit_);
    }
}

}  // namespace sondrel
