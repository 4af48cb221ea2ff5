#include "ui/menu_bar.h"

#include <algorithm>
#include <utility>

#include "ui/entry_kinds.h"
#include "ui/painter.h"

namespace sondrel {

namespace {

constexpr uint16_t kKeyEscape = 0x01;
constexpr uint16_t kKeyReturn = 0x1C;
constexpr uint16_t kKeyPadEnter = 0x9C;
constexpr uint16_t kKeyUp = 0xC8;
constexpr uint16_t kKeyLeft = 0xCB;
constexpr uint16_t kKeyRight = 0xCD;
constexpr uint16_t kKeyDown = 0xD0;
constexpr int kMenuBorder = 2;
constexpr int kFallbackCharWidth = 7;

int EntryHeight(const MenuEntry& entry) {
    return entry.separator ? DropDownMenuBar::kSeparatorHeight : DropDownMenuBar::kEntryHeight;
}

bool Choosable(const MenuEntry& entry) { return !entry.separator && entry.enabled && entry.submenu.empty(); }

// An entry the keyboard highlight may rest on: a submenu parent too.
bool Reachable(const MenuEntry& entry) { return !entry.separator && entry.enabled; }

bool HasSubmenu(const MenuEntry& entry) { return entry.enabled && !entry.submenu.empty(); }

}  // namespace

MenuEntry MenuSeparator() {
    MenuEntry entry;
    entry.separator = true;
    entry.enabled = false;
    return entry;
}

DropDownMenuBar::DropDownMenuBar(std::vector<MenuTitle> titles, int screenWidth, const Gorb_Font* font)
    : titles_(std::move(titles)), screenWidth_(screenWidth), font_(font) {}

int DropDownMenuBar::TextWidth(const std::string& text) const {
    return font_ != nullptr ? font_->TextWidth(text) : static_cast<int>(text.size()) * kFallbackCharWidth;
}

Gorb_Rect DropDownMenuBar::TitleRect(int title) const {
    int x = kTitleTextX / 2;
    for (int i = 0; i < title; ++i) x += TextWidth(titles_[static_cast<size_t>(i)].text) + kTitleSpacing;
    return {x, 0, TextWidth(titles_[static_cast<size_t>(title)].text) + kTitleSpacing, kBarHeight};
}

const std::vector<MenuEntry>& DropDownMenuBar::EntriesOf(int level) const {
    static const std::vector<MenuEntry> kNone;
    if (openTitle_ < 0 || openTitle_ >= static_cast<int>(titles_.size()) || level < 0 ||
        level >= static_cast<int>(open_.size()))
        return kNone;
    const std::vector<MenuEntry>* entries = &titles_[static_cast<size_t>(openTitle_)].entries;
    for (int l = 1; l <= level; ++l) {
        const int parent = open_[static_cast<size_t>(l)].parentEntry;
        if (parent < 0 || parent >= static_cast<int>(entries->size())) return kNone;
        entries = &(*entries)[static_cast<size_t>(parent)].submenu;
    }
    return *entries;
}

const MenuEntry* DropDownMenuBar::EntryOf(int level, int entry) const {
    const std::vector<MenuEntry>& entries = EntriesOf(level);
    if (entry < 0 || entry >= static_cast<int>(entries.size())) return nullptr;
    return &entries[static_cast<size_t>(entry)];
}

Gorb_Rect DropDownMenuBar::EntryRect(int level, int entry) const {
    const OpenMenu& menu = open_[static_cast<size_t>(level)];
    const std::vector<MenuEntry>& entries = EntriesOf(level);
    const int count = std::min(entry, static_cast<int>(entries.size()));
    int y = menu.rect.y + kMenuBorder;
    for (int i = 0; i < count; ++i) y += EntryHeight(entries[static_cast<size_t>(i)]);
    const MenuEntry* item = EntryOf(level, entry);
    return {menu.rect.x + kMenuBorder, y, menu.rect.w - 2 * kMenuBorder, item ? EntryHeight(*item) : 0};
}

int DropDownMenuBar::TitleAt(Point screen) const {
    for (int i = 0; i < static_cast<int>(titles_.size()); ++i) {
        if (sondrel::Contains(TitleRect(i), screen)) return i;
    }
    return -1;
}

bool DropDownMenuBar::EntryAt(Point screen, int& level, int& entry) const {
    for (int l = static_cast<int>(open_.size()) - 1; l >= 0; --l) {
        if (!sondrel::Contains(open_[static_cast<size_t>(l)].rect, screen)) continue;
        level = l;
        entry = -1;
        for (int e = 0; e < static_cast<int>(EntriesOf(l).size()); ++e) {
            if (sondrel::Contains(EntryRect(l, e), screen)) entry = e;
        }
        return true;
    }
    return false;
}

bool DropDownMenuBar::Contains(Point screen) const {
    if (sondrel::Contains(BarRect(), screen)) return true;
    return std::any_of(open_.begin(), open_.end(),
                       [screen](const OpenMenu& menu) { return sondrel::Contains(menu.rect, screen); });
}

void DropDownMenuBar::OpenLevel(int parentEntry, int x, int y, int flipX) {
    open_.push_back({parentEntry, {}, -1});
    const std::vector<MenuEntry>& entries = EntriesOf(static_cast<int>(open_.size()) - 1);
    int textWidth = 0;
    int shortcutWidth = 0;
    int height = 2 * kMenuBorder;
    for (const MenuEntry& entry : entries) {
        height += EntryHeight(entry);
        if (entry.separator) continue;
        textWidth = std::max(textWidth, TextWidth(entry.text));
        if (!entry.shortcut.empty()) shortcutWidth = std::max(shortcutWidth, TextWidth(entry.shortcut));
    }
    const int width = std::max(kMinMenuWidth, 2 * kMenuBorder + 2 * kMarkColumn + textWidth +
                                                  (shortcutWidth > 0 ? kShortcutGap + shortcutWidth : 0));
    // A menu that would run off the right edge opens towards the left instead.
    if (x + width > screenWidth_) x = std::max(0, flipX - width);
    open_.back().rect = {x, y, width, height};
}

void DropDownMenuBar::OpenTitleMenu(int title) {
    open_.clear();
    openTitle_ = title;
    const Gorb_Rect titleRect = TitleRect(title);
    OpenLevel(-1, titleRect.x, kBarHeight, titleRect.x + titleRect.w);
}

void DropDownMenuBar::SetTitles(std::vector<MenuTitle> titles) {
    titles_ = std::move(titles);
    if (openTitle_ < 0) return;
    if (openTitle_ >= static_cast<int>(titles_.size())) {
        Close();
        return;
    }
    // Open the same path again, measured on the new entries, as far as it still exists.
    const std::vector<OpenMenu> before = open_;
    OpenTitleMenu(openTitle_);
    for (size_t level = 0; level < before.size(); ++level) {
        const int hovered = before[level].hovered;
        if (!EntryOf(static_cast<int>(level), hovered)) break;
        open_.back().hovered = hovered;
        if (level + 1 >= before.size()) break;
        OpenSubmenu(static_cast<int>(level));
        if (open_.size() != level + 2) break;
    }
}

void DropDownMenuBar::Press(Point screen) {
    const int title = TitleAt(screen);
    if (title >= 0) {
        // A second press on the open title folds its menu away.
        if (title == openTitle_) {
            Close();
        } else {
            OpenTitleMenu(title);
        }
        return;
    }
    int level = 0;
    int entry = 0;
    if (EntryAt(screen, level, entry)) {
        Follow(screen);
    } else {
        Close();
    }
}

void DropDownMenuBar::Follow(Point screen) {
    if (openTitle_ < 0) return;
    const int title = TitleAt(screen);
    if (title >= 0) {
        if (title != openTitle_) OpenTitleMenu(title);
        return;
    }
    int level = 0;
    int entry = 0;
    if (!EntryAt(screen, level, entry)) {
        // Off every menu: the deepest one shows nothing under the pointer.
        open_.back().hovered = -1;
        return;
    }
    OpenMenu& menu = open_[static_cast<size_t>(level)];
    const bool sameEntry = menu.hovered == entry;
    menu.hovered = entry;
    if (sameEntry && open_.size() > static_cast<size_t>(level) + 1) {
        open_[static_cast<size_t>(level) + 1].hovered = -1;
        return;
    }
    open_.resize(static_cast<size_t>(level) + 1);
    if (entry >= 0) OpenSubmenu(level);
}

void DropDownMenuBar::OpenSubmenu(int level) {
    const OpenMenu& menu = open_[static_cast<size_t>(level)];
    const MenuEntry* item = EntryOf(level, menu.hovered);
    if (!item || !HasSubmenu(*item)) return;
    const int parentEntry = menu.hovered;
    const Gorb_Rect at = EntryRect(level, parentEntry);
    const Gorb_Rect parent = menu.rect;
    OpenLevel(parentEntry, parent.x + parent.w, at.y - kMenuBorder, parent.x);
}

void DropDownMenuBar::ChooseEntry(int level, int entry, CommandQueue& queue) {
    const MenuEntry* item = EntryOf(level, entry);
    if (!item || !Choosable(*item)) return;
    const int command = item->command;
    Close();
    if (command >= 0) queue.PushEntry(kEntryMenuCommand, static_cast<uint32_t>(command), 0);
}

void DropDownMenuBar::Choose(Point screen, CommandQueue& queue) {
    int level = 0;
    int entry = 0;
    if (EntryAt(screen, level, entry)) {
        ChooseEntry(level, entry, queue);
        return;
    }
    // Let go on the bar: the menu stays open for a click on one of its entries.
    if (sondrel::Contains(BarRect(), screen)) return;
    Close();
}

void DropDownMenuBar::Close() {
    open_.clear();
    openTitle_ = -1;
}

int DropDownMenuBar::KeyLevel() const {
    for (int level = static_cast<int>(open_.size()) - 1; level > 0; --level) {
        if (open_[static_cast<size_t>(level)].hovered >= 0) return level;
    }
    return 0;
}

void DropDownMenuBar::StepHighlight(int level, int step) {
    open_.resize(static_cast<size_t>(level) + 1);
    OpenMenu& menu = open_.back();
    const std::vector<MenuEntry>& entries = EntriesOf(level);
    const int count = static_cast<int>(entries.size());
    // From nothing highlighted, Down starts at the top and Up at the bottom.
    int at = menu.hovered >= 0 ? menu.hovered : (step > 0 ? count - 1 : 0);
    for (int tried = 0; tried < count; ++tried) {
        at = (at + step + count) % count;
        if (Reachable(entries[static_cast<size_t>(at)])) {
            menu.hovered = at;
            return;
        }
    }
}

void DropDownMenuBar::OpenNeighbourTitle(int step) {
    const int count = static_cast<int>(titles_.size());
    if (count == 0) {
        Close();
        return;
    }
    OpenTitleMenu((openTitle_ + step + count) % count);
    StepHighlight(0, 1);
}

bool DropDownMenuBar::KeyPress(uint16_t key, CommandQueue& queue) {
    if (openTitle_ < 0) return false;
    const int level = KeyLevel();
    const int hovered = open_[static_cast<size_t>(level)].hovered;
    const MenuEntry* highlighted = EntryOf(level, hovered);
    const bool onSubmenu = highlighted && HasSubmenu(*highlighted);
    switch (key) {
        case kKeyUp:
        case kKeyDown: StepHighlight(level, key == kKeyDown ? 1 : -1); return true;
        case kKeyRight:
        case kKeyReturn:
        case kKeyPadEnter:
            if (onSubmenu) {
                // The submenu may hang open already from the pointer resting on its entry.
                if (OpenDepth() == level + 1) OpenSubmenu(level);
                StepHighlight(level + 1, 1);
            } else if (key == kKeyRight) {
                OpenNeighbourTitle(1);
            } else {
                ChooseEntry(level, hovered, queue);
            }
            return true;
        case kKeyLeft:
            if (level > 0) {
                open_.resize(static_cast<size_t>(level));
            } else {
                OpenNeighbourTitle(-1);
            }
            return true;
        case kKeyEscape:
            if (OpenDepth() > 1) {
                open_.pop_back();
            } else {
                Close();
            }
            return true;
        default: return false;
    }
}

void DropDownMenuBar::Draw(Painter& painter, const DrawStyle& style) const {
    const Gorb_Rect bar = BarRect();
    if (!style.DrawItem(painter, "HMENU_BAR", bar)) {
        painter.Fill(bar, style.Colour(ThemeColour::WindowBody));
        painter.HLine(0, bar.h - 1, bar.w, style.Colour(ThemeColour::BevelDark));
    }
    for (int i = 0; i < static_cast<int>(titles_.size()); ++i) {
        const Gorb_Rect rect = TitleRect(i);
        const bool open = i == openTitle_;
        if (open && !style.DrawItem(painter, "HMENU_BAR_ENTRY_S", rect)) {
            painter.Fill(rect, style.Colour(ThemeColour::Selection));
        }
        if (style.font != nullptr) {
            painter.TextIn(*style.font, rect, titles_[static_cast<size_t>(i)].text,
                           style.Colour(open ? ThemeColour::TextSelected : ThemeColour::Text), TextAlign::Centre);
        }
    }
    for (const OpenMenu& menu : open_) DrawMenu(painter, style, menu);
}

void DropDownMenuBar::DrawMenu(Painter& painter, const DrawStyle& style, const OpenMenu& menu) const {
    if (!style.DrawItem(painter, "BMENU", menu.rect)) {
        painter.Fill(menu.rect, style.Colour(ThemeColour::WindowBody));
        painter.Bevel(menu.rect, style.Colour(ThemeColour::BevelLight), style.Colour(ThemeColour::BevelDark));
    }
    const int level = static_cast<int>(&menu - open_.data());
    const std::vector<MenuEntry>& entries = EntriesOf(level);
    for (int e = 0; e < static_cast<int>(entries.size()); ++e) {
        DrawEntry(painter, style, entries[static_cast<size_t>(e)], EntryRect(level, e), e == menu.hovered);
    }
}

void DropDownMenuBar::DrawEntry(Painter& painter, const DrawStyle& style, const MenuEntry& entry,
                                const Gorb_Rect& rect, bool hovered) const {
    if (entry.separator) {
        if (!style.DrawItem(painter, "HMENU_SEPARATOR", rect)) {
            const int y = rect.y + rect.h / 2 - 1;
            painter.HLine(rect.x + 2, y, rect.w - 4, style.Colour(ThemeColour::BevelDark));
            painter.HLine(rect.x + 2, y + 1, rect.w - 4, style.Colour(ThemeColour::BevelLight));
        }
        return;
    }
    const bool selected = hovered && entry.enabled;
    if (selected && !style.DrawItem(painter, "HMENU_ENTRY_S", rect)) {
        painter.Fill(rect, style.Colour(ThemeColour::Selection));
    }
    const ThemeColour text = !entry.enabled ? ThemeColour::TextDisabled
                             : selected     ? ThemeColour::TextSelected
                                            : ThemeColour::Text;
    if (entry.checked) {
        const Gorb_Rect mark{rect.x + (kMarkColumn - 10) / 2, rect.y + (rect.h - 10) / 2, 10, 10};
        if (!style.DrawItem(painter, entry.enabled ? "SMENU_CHECK" : "SMENU_CHECK_D", mark)) {
            painter.Fill({mark.x + 2, mark.y + 2, 6, 6}, style.Colour(text));
        }
    }
    if (!entry.submenu.empty()) {
        const Gorb_Rect arrow{rect.x + rect.w - kMarkColumn + (kMarkColumn - 6) / 2, rect.y + (rect.h - 10) / 2, 6,
                              10};
        if (!style.DrawItem(painter, selected ? "SMENU_ARROW_S" : "SMENU_ARROW", arrow)) {
            // A small triangle pointing right.
            for (int i = 0; i < 5; ++i) painter.VLine(arrow.x + i, arrow.y + i, 10 - 2 * i, style.Colour(text));
        }
    }
    if (style.font == nullptr) return;
    const Gorb_Rect textArea{rect.x + kMarkColumn, rect.y, rect.w - 2 * kMarkColumn, rect.h};
    painter.TextIn(*style.font, textArea, entry.text, style.Colour(text), TextAlign::Left, TextFit::Ellipsis);
    if (!entry.shortcut.empty()) {
        painter.TextIn(*style.font, textArea, entry.shortcut, style.Colour(text), TextAlign::Right);
    }
}

}  // namespace sondrel
