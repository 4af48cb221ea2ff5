#include "screens/pattern_view/pattern_view_drawer.h"

#include <algorithm>
#include <cstdio>

#include "screens/envelope_picture.h"
#include "screens/pattern_view/pattern_rows.h"
#include "ui/widgets/check_button.h"
#include "ui/widgets/image.h"
#include "ui/widgets/list_box.h"
#include "ui/widgets/slider.h"
#include "ui/widgets/text_line.h"

namespace sondrel {

namespace {

// Grid colours as RGB565 pixels.
constexpr uint16_t kBlack = 0x0000;
constexpr uint16_t kWhite = 0xFFFF;
constexpr uint16_t kSecondaryTact = 0x0018;
constexpr uint16_t kMainTact = 0x321F;
constexpr uint16_t kFieldSeparator = 0x0412;
constexpr uint32_t kHeaderBand = 0xFF202040;  // ARGB

constexpr int kHeaderBandHeight = 13;
// Two-pixel lines after the line numbers and after each channel; one-pixel
// lines between each channel's volume and channel command.
constexpr int kChannelSeparators[] = {31, 199, 367, 535, 703};
constexpr int kFieldSeparators[] = {144, 312, 480, 648};
// A channel switched off: its title dimmed hard, its cells a little, so
// they stay readable.
constexpr uint8_t kMutedTitleShade = 150;
constexpr uint8_t kMutedCellShade = 72;
constexpr const char* kHeaderText =
    "  &#&&Channel 0            Channel 1            Channel 2            Channel 3            Cmd.";

// Pattern names are shown as format texts with nothing to fill in: "%%" is a
// percent sign and any other directive prints nothing.
std::string NameAsFormat(const std::string& name) {
    std::string shown;
    for (size_t i = 0; i < name.size(); ++i) {
        if (name[i] != '%') {
            shown += name[i];
            continue;
        }
        if (i + 1 < name.size() && name[i + 1] == '%') {
            shown += '%';
            ++i;
            continue;
        }
        // Skip flags, width, precision and length up to the conversion letter.
        while (i + 1 < name.size() && std::string_view("-+ #0123456789.*hlLqjzt").find(name[i + 1]) != std::string_view::npos) ++i;
        if (i + 1 < name.size()) ++i;
    }
    return shown;
}

}  // namespace

PatternViewDrawer::PatternViewDrawer(PatternView& view, const PatternViewWidgets& widgets, const PatternFont& font,
                                     PatternViewHooks hooks)
    : view_(view), widgets_(widgets), font_(font), hooks_(std::move(hooks)) {
    if (ListBox* list = widgets_.patternList) {
        list->SetColumns({{8 * 9, "%s", ""}, {std::max(0, list->Rect().w - 8 * 9), "%s", ""}});
        view_.SetPatternListVisible(std::max(1, list->VisibleLines()));
    }
    if (ListBox* list = widgets_.instrumentList) {
        list->SetColumns({{8 * 3, "%2d", ""}, {std::max(0, list->Rect().w - 8 * 3), "%s", ""}});
    }
}

void PatternViewDrawer::Update() {
    const uint32_t flags = view_.DirtyFlags();
    if (flags & kRedrawPatternList) FillPatternList();
    if (flags & kRedrawSettings) PushSettings();
    if (flags & kRedrawGridRows) DrawGrid(flags == kRedrawAll);
    if (flags & kRedrawGridState) PushGridState();
    if (flags & kRedrawInstruments) FillInstruments();
    if (flags & kRedrawTitle) SetTitle();
    if ((flags & kRedrawMenus) && hooks_.refreshMenus) hooks_.refreshMenus();
    view_.ClearDirtyFlags();
    ShadeMutedChannels();
}

// The toggles show at once what the player is about to do, so the grid
// follows them rather than a redraw bit.
void PatternViewDrawer::ShadeMutedChannels() {
    if (!widgets_.grid) return;
    std::vector<Image::Shade> shades;
    for (std::size_t c = 0; c < widgets_.channels.size(); ++c) {
        if (!widgets_.channels[c] || widgets_.channels[c]->On()) continue;
        const int left = kChannelSeparators[c] + 2;
        const int width = kChannelSeparators[c + 1] - left;
        shades.push_back({{left, 0, width, kHeaderBandHeight}, kMutedTitleShade});
        shades.push_back({{left, kGridHeaderHeight, width, kGridHeight - kGridHeaderHeight}, kMutedCellShade});
    }
    widgets_.grid->SetShades(std::move(shades));
}

void PatternViewDrawer::FillPatternList() {
    ListBox* list = widgets_.patternList;
    if (!list) return;
    const Module& module = view_.GetModule();
    std::vector<ListLine> lines;
    for (int position = 0; position < module.patternListLength; ++position) {
        const int pattern = module.patternList[position];
        char entry[16];
        std::snprintf(entry, sizeof entry, " %3d-%3d", position, pattern);
        if (position == module.repeatPosition) entry[0] = '>';
        lines.push_back({std::string(entry), NameAsFormat(module.patterns[pattern].name)});
    }
    list->SetLines(std::move(lines));
    // Selecting scrolls the box to the entry; the view's own scroll wins.
    list->Select(view_.State().listPosition);
    list->SetTop(view_.State().patternListTop);
}

void PatternViewDrawer::PushSettings() {
    const EditSettings& settings = view_.Settings();
    if (widgets_.lineStep) widgets_.lineStep->SetNumber(settings.lineStep);
    if (widgets_.octave) widgets_.octave->SetValue(settings.octave - 2);
    if (widgets_.volume) widgets_.volume->SetNumber(settings.defaultVolume);
    if (widgets_.testMode) widgets_.testMode->SetOn(settings.testMode);
    if (hooks_.playerSettings) {
        const PlayerSettingsShown player = hooks_.playerSettings();
        if (widgets_.speed) widgets_.speed->SetNumber(player.speed);
        for (std::size_t c = 0; c < widgets_.channels.size(); ++c)
            if (widgets_.channels[c]) widgets_.channels[c]->SetOn((player.channelMask >> c) & 1);
    }
}

void PatternViewDrawer::DrawGrid(bool withHeader) {
    if (!widgets_.grid) return;
    Gorb_Surface& surface = widgets_.grid->Surface();
    if (withHeader) DrawHeader(surface);
    for (int row = 0; row < kGridVisibleLines; ++row) DrawRow(surface, row);
}

void PatternViewDrawer::DrawHeader(Gorb_Surface& surface) {
    const int width = surface.Width();
    surface.FillRect({0, 0, width, kHeaderBandHeight}, surface.FindPixel(kHeaderBand));
    surface.FillRect({0, kHeaderBandHeight, width, surface.Height() - kHeaderBandHeight}, kBlack);
    font_.DrawTransparent(surface, 0, 2, kHeaderText);
    surface.FillRect({0, kHeaderBandHeight, width, 1}, kWhite);
    for (int x : kChannelSeparators) surface.FillRect({x, 0, 2, kHeaderBandHeight}, kWhite);
}

void PatternViewDrawer::DrawRow(Gorb_Surface& surface, int row) {
    const Pattern& pattern = view_.CurrentPattern();
    const int line = view_.State().topLine + row;
    const int y = kGridHeaderHeight + kGridRowHeight * row;
    const bool inside = line < pattern.length;

    const RowText text = inside ? PatternRowText(pattern.lines[line], line) : BlankRowText();
    font_.DrawOpaque(surface, kGridTextX, y + 2, text.text, text.colours.data());

    uint16_t tact = kBlack;
    if (line == pattern.length) {
        tact = kWhite;  // the end of the pattern
    } else if (inside) {
        // TactOf answers the main tact when both fall on the line.
        const int which = pattern.TactOf(line);
        if (which == 0) tact = kMainTact;
        if (which == 1) tact = kSecondaryTact;
    }
    surface.FillRect({0, y, surface.Width(), 1}, tact);

    const int top = line == pattern.length ? y + 1 : y;
    const int height = line == pattern.length ? kGridRowHeight - 1 : kGridRowHeight;
    for (int x : kChannelSeparators) surface.FillRect({x, top, 2, height}, inside ? kWhite : kBlack);
    for (int x : kFieldSeparators) surface.FillRect({x, top, 1, height}, inside ? kFieldSeparator : kBlack);
}

GridCell GridCellAt(int x, int y) {
    GridCell cell;
    const int below = y - kGridHeaderHeight;
    cell.row = below < 0 ? -1 : below / kGridRowHeight;
    const int textX = x - kGridTextX;
    while (cell.column < kGridLastColumn) {
        const PixelSpan span = CursorColumnSpan(cell.column);
        if (textX < span.x + span.w) break;
        ++cell.column;
    }
    return cell;
}

Gorb_Rect PatternViewDrawer::CellArea(int column, int line, int columns, int lines) const {
    const int top = view_.State().topLine;
    const int first = std::max(line, top);
    const int end = std::min(line + lines, top + kGridVisibleLines);
    if (columns <= 0 || end <= first) return {0, 0, 0, 0};
    const PixelSpan left = CursorColumnSpan(column);
    const PixelSpan right = CursorColumnSpan(column + columns - 1);
    return {kGridTextX + left.x, kGridHeaderHeight + kGridRowHeight * (first - top), right.x + right.w - left.x,
            kGridRowHeight * (end - first)};
}

void PatternViewDrawer::PushGridState() {
    Image* grid = widgets_.grid;
    if (!grid) return;
    const PatternViewState& state = view_.State();
    const SelectionFrame frame = view_.GetSelection();
    const Gorb_Rect selection = CellArea(frame.x, frame.y, frame.w, frame.h);
    const Gorb_Rect marker = CellArea(0, state.playLine, kGridColumns, 1);
    if (selection.h == 0) {
        grid->ClearSelection();
    } else {
        grid->SetSelection(selection, state.followPlay ? kFollowSelectionAlpha : kSelectionAlpha);
    }
    if (state.followPlay && marker.h != 0) {
        grid->SetMarker(marker, MarkerStyle::Solid);
    } else {
        grid->ClearMarker();
    }
}

void PatternViewDrawer::FillInstruments() {
    const Module& module = view_.GetModule();
    const EditSettings& settings = view_.Settings();
    if (ListBox* list = widgets_.instrumentList) {
        std::vector<ListLine> lines;
        for (int i = 0; i < kInstruments; ++i) lines.push_back({static_cast<long long>(i), module.instruments[i].name});
        list->SetLines(std::move(lines));
        list->Select(settings.currentInstrument);
        list->SetTop(settings.instrumentListTop);
    }
    DrawInstrumentPreview();
}

void PatternViewDrawer::DrawInstrumentPreview() {
    Image* preview = widgets_.instrumentPreview;
    if (!preview) return;
    Gorb_Surface& surface = preview->Surface();
    DrawEnvelopePicture(surface, {0, 0, surface.Width(), surface.Height()},
                        view_.GetModule().instruments[view_.Settings().currentInstrument % kInstruments]);
}

void PatternViewDrawer::SetTitle() {
    if (!hooks_.setTitle) return;
    const bool modified = hooks_.modified && hooks_.modified();
    char title[32];
    std::snprintf(title, sizeof title, "%s %c", "Sondrel", modified ? '*' : ' ');
    hooks_.setTitle(title);
}

}  // namespace sondrel
