#include "screens/dialogs/import_dialogs.h"

#include <cstdio>
#include <functional>

#include "screens/dialogs/dialog_form.h"
#include "screens/dialogs/sound_chip_fields.h"
#include "ui/requesters/message_text.h"
#include "ui/requesters/requesters.h"
#include "ui/widgets/check_box.h"
#include "ui/widgets/list_box.h"
#include "ui/widgets/text_line.h"
#include "ui/window.h"

namespace sondrel {
namespace {

constexpr int kSampleNameRows = 10;
constexpr int kListLineHeight = 14;
constexpr uint32_t kClockFlags = 0xC0000000;  // a log's dual-chip and variant bits above the clock

// The MIDI channels stand in two halves of eight rows side by side; these
// are a half's columns, from its left edge.
constexpr int kMidiRowsPerHalf = kMidiChannels / 2;
constexpr int kEnableColumn = 104;
constexpr int kChannelColumn = 166;
constexpr int kInstrumentColumn = 246;
constexpr int kNumberWidth = 60;
constexpr int kMidiHalfWidth = 336;  // room for the "Instrument #:" title
constexpr int kMidiHalfGap = 24;

std::string Printed(const char* format, uint32_t value) {
    char text[32];
    std::snprintf(text, sizeof text, format, static_cast<unsigned>(value));
    return text;
}

// Runs an importer's form with its two buttons; true when confirmed. take
// reads the controls when "Okay" is accepted, before they close.
bool Confirmed(DialogForm& form, Requesters& requesters, const SoundChipFields& chip,
               const std::function<void(ChipSettings)>& take) {
    return form.Run({"Okay", "Cancel"}, [&](int button) {
        if (button != 0) return true;
        if (!chip.Complete()) {
            requesters.ShowMessage(kChipSettingsMissing);
            return false;
        }
        take(chip.Chosen());
        return true;
    }) == 0;
}

void Label(Window& window, DialogForm& form, const Gorb_Rect& at, const std::string& text) {
    window.Emplace<MessageText>(form.NextId(), Gorb_Rect{at.x, at.y + 3, at.w, DialogForm::kRowHeight - 3},
                                std::vector<std::string>{text});
}

TextLine& NumberAt(Window& window, DialogForm& form, const Gorb_Rect& at, int value, int maximum) {
    TextLine& line = window.Emplace<TextLine>(form.NextId(), at, 6);
    line.SetNumeric(0, maximum);
    line.SetNumber(value);
    return line;
}

// The controls of one MIDI channel's row.
struct MidiRowFields {
    CheckBox* enable = nullptr;
    TextLine* chipChannel = nullptr;
    TextLine* instrument = nullptr;
};

MidiRowFields AddMidiRow(Window& window, DialogForm& form, int channel, const MidiChannelRow& row, Gorb_Rect at) {
    const int left = at.x;
    const auto column = [&](int offset, int width) { return Gorb_Rect{left + offset, at.y, width, at.h}; };
    Label(window, form, column(0, kEnableColumn - 4), FormatListCell("MIDI channel %2D", ListCell{channel + 1}));
    MidiRowFields fields;
    fields.enable = &window.Emplace<CheckBox>(form.NextId(), Gorb_Rect{left + kEnableColumn, at.y + 2, 20, at.h - 4},
                                              std::string{});
    fields.enable->SetOn(row.enable);
    fields.chipChannel = &NumberAt(window, form, column(kChannelColumn, kNumberWidth), row.chipChannel, kChannels - 1);
    fields.instrument =
        &NumberAt(window, form, column(kInstrumentColumn, kNumberWidth), row.instrument, kInstruments - 1);
    for (Widget* widget : {static_cast<Widget*>(fields.enable), static_cast<Widget*>(fields.chipChannel),
                           static_cast<Widget*>(fields.instrument)})
        widget->SetEnabled(row.hasNotes);
    return fields;
}

// The dialogs that only ask for the chip.
template <typename Values>
std::optional<Values> AskChip(DialogForm& form, Requesters& requesters, const Values& proposal,
                              bool askVariant = false) {
    Values chosen = proposal;
    const bool confirmed = Confirmed(form, requesters, SoundChipFields(form, proposal.chip, askVariant),
                                     [&](ChipSettings chip) { chosen.chip = chip; });
    return confirmed ? std::optional(chosen) : std::nullopt;
}

}  // namespace

std::optional<BasicImportValues> AskBasicImport(Requesters& requesters, const BasicImportValues& proposal) {
    DialogForm form(requesters, "Load BAS file");
    if (!form.Opened()) return std::nullopt;
    static constexpr const char* kLabels[] = {"PLAY: Normal:", "PLAY: Staccato:", "PLAY: Legato:",
                                              "SOUND:",        "BEEP:",           "Pause:"};
    std::array<TextLine*, 6> instruments{};
    form.BeginGroup("Instruments");
    for (size_t i = 0; i < instruments.size(); ++i)
        instruments[i] = &form.Number(kLabels[i], proposal.instruments[i], 0, kInstruments - 1);
    form.EndGroup();
    BasicImportValues chosen = proposal;
    const bool confirmed = Confirmed(form, requesters, SoundChipFields(form, proposal.chip), [&](ChipSettings chip) {
        for (size_t i = 0; i < instruments.size(); ++i)
            chosen.instruments[i] = static_cast<uint8_t>(instruments[i]->Value());
        chosen.chip = chip;
    });
    return confirmed ? std::optional(chosen) : std::nullopt;
}

std::optional<MidiImportValues> AskMidiImport(Requesters& requesters, const MidiImportValues& proposal) {
    const int halves = 2 * kMidiHalfWidth + kMidiHalfGap;
    DialogForm form(requesters, "Load MIDI file", halves + 2 * (DialogForm::kMargin + 8));
    if (!form.Opened()) return std::nullopt;
    Window& window = *form.GetWindow();
    std::array<MidiRowFields, kMidiChannels> rows{};
    form.BeginGroup("MIDI channels");
    const Gorb_Rect header = form.Row({});
    for (int half = 0; half < 2; ++half) {
        const int left = header.x + half * (kMidiHalfWidth + kMidiHalfGap);
        Label(window, form, {left + kEnableColumn - 4, header.y, kChannelColumn - kEnableColumn, header.h}, "Enable:");
        Label(window, form, {left + kChannelColumn, header.y, kInstrumentColumn - kChannelColumn, header.h},
              "Channel #:");
        Label(window, form, {left + kInstrumentColumn, header.y, kMidiHalfWidth - kInstrumentColumn, header.h},
              "Instrument #:");
    }
    for (int line = 0; line < kMidiRowsPerHalf; ++line) {
        Gorb_Rect at = form.Row({});
        for (int half = 0; half < 2; ++half) {
            const int channel = half * kMidiRowsPerHalf + line;
            rows[channel] = AddMidiRow(window, form, channel, proposal.channels[channel], at);
            at.x += kMidiHalfWidth + kMidiHalfGap;
        }
    }
    form.EndGroup();
    MidiImportValues chosen = proposal;
    const bool confirmed = Confirmed(form, requesters, SoundChipFields(form, proposal.chip), [&](ChipSettings chip) {
        for (int channel = 0; channel < kMidiChannels; ++channel) {
            MidiChannelRow& row = chosen.channels[channel];
            row.enable = rows[channel].enable->On();
            row.chipChannel = static_cast<uint8_t>(rows[channel].chipChannel->Value());
            row.instrument = static_cast<uint8_t>(rows[channel].instrument->Value());
        }
        chosen.chip = chip;
    });
    return confirmed ? std::optional(chosen) : std::nullopt;
}

std::optional<ModImportValues> AskModImport(Requesters& requesters, const ModImportValues& proposal) {
    DialogForm form(requesters, "Load MOD file");
    if (!form.Opened()) return std::nullopt;
    form.BeginGroup("MOD file info");
    form.Show("Name:", proposal.name);
    ListBox& samples = form.Add<ListBox>("Sample names:", kSampleNameRows * kListLineHeight + 2 * ListBox::kBorder);
    samples.SetLineHeight(kListLineHeight);
    samples.SetColumns({{samples.Rect().w, "%20S", ""}});
    std::vector<ListLine> lines;
    for (const std::string& name : proposal.sampleNames) lines.push_back({name});
    samples.SetLines(std::move(lines));
    form.EndGroup();
    return AskChip(form, requesters, proposal);
}

std::optional<VgmImportValues> AskVgmImport(Requesters& requesters, const VgmImportValues& proposal) {
    DialogForm form(requesters, "Load VGM file", 440);  // room for the chip names
    if (!form.Opened()) return std::nullopt;
    const uint32_t clock = proposal.chipClock & ~kClockFlags;
    form.BeginGroup("VGM file info");
    form.Show("Rate:", proposal.rate == 0 ? "Unknown" : Printed("%u Hz", proposal.rate));
    form.Show("Chip clock:", clock == 0 ? "Unused" : Printed("%u Hz", clock));
    form.Show("Noise channel pattern:", Printed("$%04X", proposal.noisePattern));
    form.Show("Noise channel width:", Printed("$%04X", proposal.noiseWidth));
    form.EndGroup();
    return AskChip(form, requesters, proposal, true);
}

}  // namespace sondrel
