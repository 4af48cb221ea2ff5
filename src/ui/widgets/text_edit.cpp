#include "ui/widgets/text_edit.h"

#include <cstdlib>
#include <string>

#include "ui/painter.h"

namespace sondrel {
namespace {

constexpr int kPlainCharWidth = 8;

bool Printable(uint16_t character) { return character >= 32 && character != 127 && character <= 255; }

}  // namespace

void TextEdit::SetText(std::string text) {
    if (text.size() > maxLength_) text.resize(maxLength_);
    text_ = std::move(text);
    cursor_ = anchor_ = text_.size();
}

void TextEdit::MoveTo(std::size_t position, bool extend) {
    cursor_ = std::min(position, text_.size());
    if (!extend) anchor_ = cursor_;
}

void TextEdit::SelectAll() {
    anchor_ = 0;
    cursor_ = text_.size();
}

void TextEdit::Insert(const std::string& text, const Filter& accept) {
    std::string kept;
    for (char c : text) {
        if (multiline_ && c == '\n') {
            kept.push_back(c);
            continue;
        }
        if (!Printable(static_cast<unsigned char>(c))) continue;
        if (filter_) c = filter_(c);
        if (c != 0 && accept) c = accept(c);
        if (c != 0) kept.push_back(c);
    }
    EraseSelection();
    const std::size_t room = maxLength_ - std::min(maxLength_, text_.size());
    if (kept.size() > room) kept.resize(room);
    text_.insert(cursor_, kept);
    cursor_ += kept.size();
    anchor_ = cursor_;
}

void TextEdit::EraseSelection() {
    const std::size_t start = SelectionStart();
    text_.erase(start, SelectionEnd() - start);
    cursor_ = anchor_ = start;
}

bool TextEdit::CommonKey(uint16_t key, uint16_t character, uint32_t modifiers, Clipboard* clipboard, bool readOnly,
                         const Filter& accept) {
    using K = TextKeys;
    const bool shift = (modifiers & kGorbShift) != 0;
    switch (key) {
        case K::kKeyLeft: MoveTo(cursor_ > 0 ? cursor_ - 1 : 0, shift); return true;
        case K::kKeyRight: MoveTo(std::min(cursor_ + 1, text_.size()), shift); return true;
        case K::kKeyBackspace:
        case K::kKeyDelete:
            if (readOnly) return true;
            if (anchor_ == cursor_) {
                if (key == K::kKeyBackspace && cursor_ > 0) anchor_ = cursor_ - 1;
                if (key == K::kKeyDelete && cursor_ < text_.size()) anchor_ = cursor_ + 1;
            }
            EraseSelection();
            return true;
        default: break;
    }
    if ((modifiers & kGorbCtrl) != 0) {
        const std::string selected = text_.substr(SelectionStart(), SelectionEnd() - SelectionStart());
        if (key == K::kKeyA) {
            SelectAll();
        } else if ((key == K::kKeyC || key == K::kKeyX) && clipboard != nullptr && !selected.empty()) {
            clipboard->SetText(selected);
            if (key == K::kKeyX && !readOnly) EraseSelection();
        } else if (key == K::kKeyV && clipboard != nullptr && !readOnly) {
            Insert(clipboard->Text(), accept);
        } else {
            return false;
        }
        return true;
    }
    if (!Printable(character)) return false;
    if (!readOnly) Insert(std::string(1, static_cast<char>(character)), accept);
    return true;
}

int PrefixWidth(const Gorb_Font* font, std::string_view text, std::size_t length) {
    length = std::min(length, text.size());
    return font != nullptr ? Painter::TextWidth(*font, std::string(text.substr(0, length)))
                           : static_cast<int>(length) * kPlainCharWidth;
}

std::size_t NearestBoundary(const Gorb_Font* font, std::string_view text, int x) {
    std::size_t best = 0;
    int bestDistance = std::abs(x);
    for (std::size_t i = 1; i <= text.size(); ++i) {
        const int distance = std::abs(PrefixWidth(font, text, i) - x);
        if (distance < bestDistance) {
            best = i;
            bestDistance = distance;
        }
    }
    return best;
}

void DrawEntryBody(Painter& painter, const DrawStyle& style, WidgetKind kind, bool enabled, bool focused,
                   const Gorb_Rect& rect) {
    const std::string state = !enabled ? "_D" : focused ? "_F" : "";
    if (style.DrawItem(painter, "B" + std::string(SkinTypeName(kind)) + state, rect)) return;
    painter.Fill(rect, style.Colour(focused ? ThemeColour::Background : ThemeColour::WindowBody));
    painter.Bevel(rect, style.Colour(ThemeColour::BevelLight), style.Colour(ThemeColour::BevelDark),
                  BevelStyle::Sunken);
}

void DrawEntrySelection(Painter& painter, const DrawStyle& style, WidgetKind kind, const Gorb_Rect& rect) {
    if (!style.DrawItem(painter, "B" + std::string(SkinTypeName(kind)) + "_SEL", rect))
        painter.Fill(rect, style.Colour(ThemeColour::Selection));
}

void DrawEntryCursor(Painter& painter, const DrawStyle& style, WidgetKind kind, const Gorb_Rect& rect) {
    if (!style.DrawItem(painter, "S" + std::string(SkinTypeName(kind)) + "_CUR", rect))
        painter.Fill(rect, style.Colour(ThemeColour::Text));
}

}  // namespace sondrel
