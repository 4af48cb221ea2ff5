#pragma once
// The read-only text of a message or question: lines wrapped to a width and
// drawn one under the other, each cut to the width as its fit says. It
// takes neither clicks nor the focus.

#include <string>
#include <vector>

#include "ui/painter.h"
#include "ui/widgets/decoration.h"

namespace sondrel {

class Gorb_Font;

// The text broken into lines no wider than width: at its line breaks, then
// between words, and inside a word only when the word alone is too wide.
// Without a font every character counts kPlainCharWidth pixels.
std::vector<std::string> WrapText(const std::string& text, int width, const Gorb_Font* font);
int MeasureText(const std::string& text, const Gorb_Font* font);
int TextLineHeight(const Gorb_Font* font);

class MessageText : public Decoration {
public:
    static constexpr int kPlainCharWidth = 8;
    static constexpr int kPlainLineHeight = 14;

    MessageText(uint16_t id, const Gorb_Rect& rect, std::vector<std::string> lines, TextAlign align = TextAlign::Centre,
                TextFit fit = TextFit::Clip)
        : Decoration(WidgetKind::TextField, id, rect), lines_(std::move(lines)), align_(align), fit_(fit) {}

    const std::vector<std::string>& Lines() const { return lines_; }
    void SetLines(std::vector<std::string> lines) { lines_ = std::move(lines); }
    void Draw(Painter& painter, const DrawStyle& style) const override;

private:
    std::vector<std::string> lines_;
    TextAlign align_;
    TextFit fit_;
};

}  // namespace sondrel
