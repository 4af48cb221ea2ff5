#include "screens/dialogs/tool_dialog_windows.h"

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "model/storable_text.h"
#include "screens/dialogs/dialog_form.h"
#include "screens/dialogs/sound_chip_fields.h"
#include "screens/dialogs/value_formats.h"
#include "ui/entry_kinds.h"
#include "ui/requesters/requesters.h"
#include "ui/widgets/check_box.h"
#include "ui/widgets/list_box.h"
#include "ui/widgets/menu_button.h"
#include "ui/widgets/push_button.h"
#include "ui/widgets/text_field.h"
#include "ui/widgets/text_line.h"

namespace sondrel {
namespace {

const std::vector<std::string> kOkayCancel{"Okay", "Cancel"};
const std::vector<std::string> kApplyCancel{"Apply", "Cancel"};
constexpr char kLineRanges[] = "Change all lines\nUse line range";
constexpr int kWideDialog = 420;

TextLine& StorableText(DialogForm& form, const std::string& label, const std::string& value,
                       std::size_t maxLength = kLongestStorableText) {
    TextLine& line = form.Text(label, value, maxLength);
    TakeStorableText(line);
    return line;
}

uint8_t Byte(const TextLine& line) { return static_cast<uint8_t>(line.Value()); }

// The tact rows of the pattern settings: on or off, first line, lines apart.
struct TactFields {
    CheckBox* enabled;
    TextLine* start;
    TextLine* interval;
};

TactFields AddTact(DialogForm& form, const char* label, const PatternSettings& current, int tact) {
    TactFields fields{};
    fields.enabled = &form.Check(label, current.tactEnabled[tact] != 0);
    fields.start = &form.Number("Start line:", current.tactStart[tact], 0, kMaxLines - 1);
    fields.interval = &form.Number("Number of lines:", std::max<int>(1, current.tactInterval[tact]), 1, 255);
    return fields;
}

// What both sweeping tools share: "Select all" and the line range at the top
// of the left column, and the list of patterns to the right of everything.
class PatternSweep {
public:
    static constexpr int kRowsWidth = 400;
    static constexpr int kDialogWidth = 640;

    PatternSweep(DialogForm& form, const Module& module) : form_(form), top_(form.NextRowTop()) {
        for (int p = 0; p < kPatterns; ++p)
            if (module.patterns[p].used) patterns_.push_back(p);
        form.NarrowRows(kRowsWidth);
        selectAll_ = &form.Add<PushButton>({}, DialogForm::kRowHeight, "Select all");
        selectAll_->SetRect({selectAll_->Rect().x, selectAll_->Rect().y, DialogForm::kButtonWidth, DialogForm::kRowHeight});
        start_ = &form.Number("Start line:", 0, 0, kMaxLines - 1);
        end_ = &form.Number("End line:", kMaxLines - 1, 0, kMaxLines - 1);
        range_ = &form.Choice({}, kLineRanges, 0);
    }

    // The list of patterns, every one chosen, after the tool's own fields.
    void AddList(const Module& module) {
        list_ = &form_.ListBeside(top_);
        list_->SetColumns({{32, "%3d", ""}, {list_->Rect().w - 32 - 16, "%24s", ""}});
        std::vector<ListLine> lines;
        for (int p : patterns_) lines.push_back({static_cast<long long>(p), module.patterns[p].name});
        list_->SetLines(std::move(lines));
        list_->SetExtended(true);
        SelectAll();
    }

    // "Select all" chooses every pattern listed.
    bool Handle(const QueueEntry& entry) {
        if (entry.kind != kEntryValue || entry.a != selectAll_->Id()) return false;
        SelectAll();
        return true;
    }

    // The chosen lines and patterns.
    template <typename Request>
    void Fill(Request& request) const {
        if (range_->Choice() == 1) {
            request.startLine = std::min(start_->Value(), end_->Value());
            request.endLine = std::max(start_->Value(), end_->Value());
        } else {
            request.startLine = 0;
            request.endLine = kMaxLines - 1;
        }
        for (int line = 0; line < list_->LineCount(); ++line)
            if (list_->Selected(line)) request.patterns.set(static_cast<size_t>(patterns_[line]));
    }

private:
    void SelectAll() {
        for (int line = 0; line < list_->LineCount(); ++line) list_->SetSelected(line, true);
    }

    DialogForm& form_;
    int top_;
    std::vector<int> patterns_;
    ListBox* list_ = nullptr;
    PushButton* selectAll_;
    MenuButton* range_;
    TextLine* start_;
    TextLine* end_;
};

}  // namespace

std::optional<PatternSettings> RunPatternSettings(Requesters& requesters, const PatternSettings& current,
                                                  bool newPattern) {
    DialogForm form(requesters, newPattern ? "New pattern settings" : "Pattern settings");
    if (!form.Opened()) return std::nullopt;
    TextLine& name = StorableText(form, "Name:", current.name, kLongestPatternName);
    // Only a new pattern takes its length here; an existing one is resized on its own.
    TextLine* length = nullptr;
    if (newPattern)
        length = &form.Number("Length:", current.length, 1, kMaxLines);
    else
        form.Show("Length:", std::to_string(current.length));
    const TactFields main = AddTact(form, "Main tact:", current, 0);
    const TactFields secondary = AddTact(form, "Secondary tact:", current, 1);
    PatternSettings chosen = current;
    const auto read = [&](int button) {
        if (button != 0) return true;
        chosen.name = name.Text();
        MakeTextStorable(chosen.name);
        // A longer name from a loaded file shows cut in the field; left as it
        // was, it stays whole (only an existing pattern keeps its name).
        if (!newPattern && chosen.name == current.name.substr(0, kLongestPatternName)) chosen.name = current.name;
        if (length != nullptr) chosen.length = static_cast<uint16_t>(length->Value());
        const TactFields tacts[] = {main, secondary};
        for (int t = 0; t < 2; ++t) {
            chosen.tactEnabled[t] = tacts[t].enabled->On() ? 1 : 0;
            chosen.tactStart[t] = Byte(*tacts[t].start);
            chosen.tactInterval[t] = Byte(*tacts[t].interval);
        }
        return true;
    };
    if (form.Run(kOkayCancel, read) != 0) return std::nullopt;
    return chosen;
}

std::optional<int> RunPatternResize(Requesters& requesters, int oldLength) {
    DialogForm form(requesters, "Pattern resize", 300, 120);
    if (!form.Opened()) return std::nullopt;
    form.Show("Old length:", std::to_string(oldLength));
    TextLine& length = form.Number("New length:", oldLength, 1, kMaxLines);
    int chosen = oldLength;
    if (form.Run(kOkayCancel, [&](int) { return chosen = length.Value(), true; }) != 0) return std::nullopt;
    return chosen;
}

std::optional<ModuleSettings> RunModuleSettings(Requesters& requesters, const ModuleSettings& current,
                                                int listLength, bool newModule) {
    DialogForm form(requesters, newModule ? "New module settings" : "Module settings", kWideDialog, 130);
    if (!form.Opened()) return std::nullopt;
    form.BeginGroup("Information");
    TextLine& title = StorableText(form, "Title:", current.title);
    TextLine& author = StorableText(form, "Author:", current.author);
    TextField& notes = form.Add<TextField>("Notes:", 4 * 14 + 8, kLongestStorableText);
    notes.SetText(current.notes);
    notes.SetFilter([](char c) { return c == '0' ? kZeroStandIn : c; });
    form.EndGroup();
    const SoundChipFields chip(form, {current.frequencyDivider, current.chipType, current.chipVariant}, true);
    TextLine& repeat = form.Number("Repeat position:", current.repeatPosition, 0, std::max(0, listLength - 1));
    TextLine& speed = form.Number("Initial speed:", current.initialSpeed, 1, 255);
    ShowAsSpeed(speed);
    ModuleSettings chosen = current;
    const auto read = [&](int) {
        chosen.title = title.Text();
        chosen.author = author.Text();
        chosen.notes = notes.Text();
        MakeTextStorable(chosen.title);
        MakeTextStorable(chosen.author);
        MakeTextStorable(chosen.notes, TextShape::Lines);
        const ChipSettings settings = chip.Chosen();
        chosen.chipType = settings.chipType;
        chosen.frequencyDivider = settings.frequencyDivider;
        chosen.chipVariant = settings.variant;
        chosen.repeatPosition = Byte(repeat);
        chosen.initialSpeed = Byte(speed);
        return true;
    };
    if (form.Run(kOkayCancel, read) != 0) return std::nullopt;
    return chosen;
}

std::optional<ChangeInstrumentsRequest> RunChangeInstruments(Requesters& requesters, const Module& module) {
    DialogForm form(requesters, "Change instruments", PatternSweep::kDialogWidth, 130);
    if (!form.Opened()) return std::nullopt;
    PatternSweep sweep(form, module);
    form.BeginGroup("Channel mask");
    std::array<CheckBox*, kChannels> channels{};
    for (int c = 0; c < kChannels; ++c) channels[c] = &form.Check("Channel " + std::to_string(c), true);
    PushButton& toggleAll = form.Add<PushButton>({}, DialogForm::kRowHeight, "Toggle all");
    toggleAll.SetRect({toggleAll.Rect().x, toggleAll.Rect().y, DialogForm::kButtonWidth, DialogForm::kRowHeight});
    form.EndGroup();
    TextLine& first = form.Number("Instrument #1:", 0, 0, kInstruments - 1);
    TextLine& second = form.Number("Instrument #2:", 0, 0, kInstruments - 1);
    MenuButton& mode = form.Choice({}, "Change #1 to #2\nExchange #1 and #2\nChange all to #2", 0);
    sweep.AddList(module);
    ChangeInstrumentsRequest request;
    const auto read = [&](int) {
        sweep.Fill(request);
        request.change.mode = static_cast<uint8_t>(mode.Choice());
        request.change.first = Byte(first);
        request.change.second = Byte(second);
        request.change.channelMask = 0;
        for (int c = 0; c < kChannels; ++c)
            if (channels[c]->On()) request.change.channelMask |= static_cast<uint8_t>(1u << c);
        return true;
    };
    const int pressed = form.Run(kApplyCancel, read, [&](const QueueEntry& entry) {
        if (sweep.Handle(entry) || entry.kind != kEntryValue || entry.a != toggleAll.Id()) return;
        for (CheckBox* channel : channels) channel->SetOn(!channel->On());
    });
    if (pressed != 0) return std::nullopt;
    return request;
}

std::optional<CopyChannelsRequest> RunCopyChannels(Requesters& requesters, const Module& module) {
    DialogForm form(requesters, "Copy channels", PatternSweep::kDialogWidth, 130);
    if (!form.Opened()) return std::nullopt;
    PatternSweep sweep(form, module);
    // The command column counts as channel 4.
    TextLine& first = form.Number("Channel #1:", 0, 0, kCommandChannel);
    TextLine& second = form.Number("Channel #2:", 1, 0, kCommandChannel);
    MenuButton& mode = form.Choice({}, "Copy #1 to #2\nExchange #1 and #2", 0);
    sweep.AddList(module);
    CopyChannelsRequest request;
    const auto read = [&](int) {
        sweep.Fill(request);
        request.copy.first = Byte(first);
        request.copy.second = Byte(second);
        request.copy.mode = static_cast<uint8_t>(mode.Choice());
        return true;
    };
    const int pressed = form.Run(kApplyCancel, read, [&](const QueueEntry& entry) { sweep.Handle(entry); });
    if (pressed != 0) return std::nullopt;
    return request;
}

}  // namespace sondrel
