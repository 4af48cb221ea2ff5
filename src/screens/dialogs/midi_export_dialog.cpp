#include "screens/dialogs/midi_export_dialog.h"

#include "screens/dialogs/dialog_form.h"
#include "ui/entry_kinds.h"
#include "ui/widgets/list_box.h"
#include "ui/window.h"

namespace sondrel {
namespace {

constexpr int kFormWidth = 760;
constexpr int kVisibleRows = 28;
constexpr int kLineHeight = 14;
constexpr int kTableWidth = 430;
constexpr int kListGap = 12;

std::vector<ListLine> TableLines(const MidiExportTable& table, const std::array<uint8_t, kMidiExportRows>& programs) {
    std::vector<ListLine> lines;
    for (int row = 0; row < kMidiExportRows; ++row) {
        const int instrument = row % kInstruments;
        const int kind = row / kInstruments;
        const uint8_t program = programs[row];
        const std::string name = program < table.programNames.size() ? table.programNames[program] : std::string{};
        lines.push_back({instrument, kind == 0 ? table.instrumentNames[instrument] : kind == 1 ? "PE" : "WN",
                         program, name});
    }
    return lines;
}

ListBox& AddList(Window& window, DialogForm& form, const Gorb_Rect& rect, std::vector<ListColumn> columns) {
    ListBox& list = window.Emplace<ListBox>(form.NextId(), rect);
    list.SetLineHeight(kLineHeight);
    list.SetColumns(std::move(columns));
    return list;
}

}  // namespace

std::optional<std::array<uint8_t, kMidiExportRows>> EditMidiExportTable(Requesters& requesters,
                                                                       const MidiExportTable& table) {
    DialogForm form(requesters, "Export MIDI", kFormWidth);
    if (!form.Opened()) return std::nullopt;
    Window& window = *form.GetWindow();
    std::array<uint8_t, kMidiExportRows> programs = table.programs;

    // One more line for the column titles.
    const Gorb_Rect area = form.Row({}, (kVisibleRows + 1) * kLineHeight + 2 * ListBox::kBorder);
    ListBox& rows = AddList(window, form, {area.x, area.y, kTableWidth, area.h},
                            {{24, "%2d ", ""}, {170, "%s", "Instrument"}, {34, "%3d", ""}, {200, "%s", "Program"}});
    const int namesX = area.x + kTableWidth + kListGap;
    ListBox& names = AddList(window, form, {namesX, area.y, area.x + area.w - namesX, area.h},
                             {{34, "%3d", ""}, {230, "%s", "General MIDI program"}});
    std::vector<ListLine> nameLines;
    for (size_t program = 0; program < table.programNames.size(); ++program)
        nameLines.push_back({static_cast<long long>(program), table.programNames[program]});
    names.SetLines(std::move(nameLines));
    rows.SetLines(TableLines(table, programs));
    rows.Select(0);
    // The selected row's program in the middle of the names.
    const auto showProgram = [&names](int program) {
        names.Select(program);
        names.SetTop(program - names.VisibleLines() / 2);
    };
    showProgram(programs[0]);

    const int answer = form.Run({"Okay", "Cancel"}, {}, [&](const QueueEntry& entry) {
        if (entry.kind != kEntryListLine) return;
        const int row = rows.Current();
        if (entry.a == rows.Id() && entry.b < programs.size()) {
            showProgram(programs[entry.b]);
        } else if (entry.a == names.Id() && row >= 0 && entry.b < table.programNames.size()) {
            programs[row] = static_cast<uint8_t>(entry.b);
            const int top = rows.Top();
            rows.SetLines(TableLines(table, programs));
            rows.SetTop(top);
            rows.Select(row);
        }
    });
    if (answer != 0) return std::nullopt;
    return programs;
}

}  // namespace sondrel
