#include "screens/dialogs/instrument_editor.h"

#include <algorithm>
#include <string>
#include <vector>

#include "model/storable_text.h"
#include "screens/dialogs/dialog_form.h"
#include "screens/dialogs/value_formats.h"
#include "screens/envelope_picture.h"
#include "screens/main_screen.h"
#include "ui/entry_kinds.h"
#include "ui/requesters/requesters.h"
#include "ui/toolkit.h"
#include "ui/widgets/image.h"
#include "ui/widgets/list_box.h"
#include "ui/widgets/push_button.h"
#include "ui/widgets/text_line.h"

namespace sondrel {
namespace {

constexpr int kWidth = 520;
constexpr int kLabelWidth = 96;
constexpr int kListWidth = 200;
constexpr int kListLineHeight = 14;
constexpr int kBandHeight = kInstruments * kListLineHeight + 2 * ListBox::kBorder;  // every instrument on view
constexpr int kBandGap = 8;
constexpr std::size_t kListedName = 24;
constexpr int kFieldWidth = 72;
constexpr int kFieldGap = 10;
constexpr std::size_t kNumberLength = 6;
constexpr int kOctaveShown = 2;  // the octave field shows octave - 2, as the main screen's slider does
constexpr char kResetQuestion[] = "Do you really want to reset this instrument?";
// The keyboard piano is otherwise invisible: say where it is and when it listens.
constexpr const char* kPianoHint[] = {
    "Keys Z to M and Q to P play this instrument, from the octave set in \"Octave:\".",
    "A field with the cursor takes the keys: Return or a click on the list frees them.",
};

template <std::size_t N>
using Numbers = std::array<TextLine*, N>;

// N numeric fields side by side after the label, in columns that line up
// from row to row.
template <std::size_t N>
Numbers<N> NumberRow(DialogForm& form, const std::string& label, int32_t minimum, int32_t maximum) {
    const Gorb_Rect row = form.Row(label);
    Numbers<N> fields{};
    for (std::size_t i = 0; i < N; ++i) {
        const Gorb_Rect rect{row.x + static_cast<int>(i) * (kFieldWidth + kFieldGap), row.y, kFieldWidth, row.h};
        fields[i] = &form.GetWindow()->Emplace<TextLine>(form.NextId(), rect, kNumberLength);
        fields[i]->SetNumeric(minimum, maximum);
    }
    return fields;
}

template <std::size_t N, typename T>
void ShowNumbers(const Numbers<N>& fields, const std::array<T, N>& values) {
    for (std::size_t i = 0; i < N; ++i) fields[i]->SetNumber(values[i]);
}

template <std::size_t N, typename T>
void ReadNumbers(const Numbers<N>& fields, std::array<T, N>& values) {
    for (std::size_t i = 0; i < N; ++i) values[i] = static_cast<T>(fields[i]->Value());
}

// The editor's window while it is open: the list, the picture, the fields
// and the buttons, over the working copy of the set.
class EditorWindow {
public:
    EditorWindow(DialogForm& form, InstrumentSet& set, int shown, int octave, std::optional<Instrument>& copied,
                 Requesters& requesters, const InstrumentPreview& preview)
        : set_(set), shown_(shown), octave_(octave), copied_(copied), requesters_(requesters), preview_(preview) {
        const Gorb_Rect band = form.Row({}, kBandHeight);
        Window& window = *form.GetWindow();
        window_ = &window;
        list_ = &window.Emplace<ListBox>(form.NextId(), Gorb_Rect{band.x, band.y, kListWidth, band.h});
        list_->SetLineHeight(kListLineHeight);
        list_->SetColumns({{22, "%2d", ""}, {kListWidth - 22 - 2 * ListBox::kBorder, "%24s", ""}});
        picture_ = &window.Emplace<Image>(
            form.NextId(), Gorb_Rect{band.x + kListWidth + kBandGap, band.y, band.w - kListWidth - kBandGap, band.h});

        name_ = &form.Text("Name:", {}, InstrumentEditor::kLongestName);
        TakeStorableText(*name_);
        startVolume_ = NumberRow<1>(form, "Start volume:", 0, 255);
        ShowAsSixteenths(*startVolume_[0]);
        delay_ = NumberRow<4>(form, "Delay:", 0, 255);
        volumeAdd_ = NumberRow<kEnvelopePhases>(form, "Volume add:", -128, 127);
        for (TextLine* field : volumeAdd_) ShowAsSixteenths(*field);
        vibratoSpeed_ = NumberRow<kEnvelopePhases>(form, "Vib. spd.:", 0, 3);
        vibratoStrength_ = NumberRow<kEnvelopePhases>(form, "Vib. str.:", 0, 15);
        octaveField_ = NumberRow<1>(form, "Octave:", kOctaveSliderMin, kOctaveSliderMax)[0];
        octaveField_->SetNumber(octave - kOctaveShown);

        const Gorb_Rect buttons = form.Row({});
        int x = buttons.x;
        const auto button = [&](const char* text) {
            PushButton& added = window.Emplace<PushButton>(
                form.NextId(), Gorb_Rect{x, buttons.y, DialogForm::kButtonWidth, DialogForm::kRowHeight}, text);
            x += DialogForm::kButtonWidth + kFieldGap;
            return &added;
        };
        copy_ = button("Copy");
        paste_ = button("Paste");
        reset_ = button("Reset...");
        paste_->SetEnabled(copied_.has_value());
        for (const char* line : kPianoHint) form.Note(line);

        ShowInstrument();
        Refresh();
    }

    // The fields into the shown instrument.
    void ReadFields() {
        Instrument& instrument = set_[shown_];
        // A name longer than the field keeps all of it until it is edited.
        if (name_->Text() != shownName_) {
            instrument.name = shownName_ = name_->Text();
            MakeTextStorable(instrument.name);
        }
        instrument.startVolume = static_cast<uint8_t>(startVolume_[0]->Value());
        ReadNumbers(delay_, instrument.delay);
        ReadNumbers(volumeAdd_, instrument.volumeAdd);
        ReadNumbers(vibratoSpeed_, instrument.vibratoSpeed);
        ReadNumbers(vibratoStrength_, instrument.vibratoStrength);
        octave_ = octaveField_->Value() + kOctaveShown;
    }

    void Handle(const QueueEntry& entry) {
        ReadFields();
        if (entry.kind == kEntryListLine && entry.a == list_->Id() && static_cast<int>(entry.b) < kInstruments) {
            shown_ = static_cast<int>(entry.b);
            ShowInstrument();
        } else if (entry.kind == kEntryValue && entry.a == copy_->Id()) {
            copied_ = set_[shown_];
            paste_->SetEnabled(true);
        } else if (entry.kind == kEntryValue && entry.a == paste_->Id() && copied_) {
            std::string name = std::move(set_[shown_].name);
            set_[shown_] = *copied_;
            set_[shown_].name = std::move(name);
            ShowInstrument();
        } else if (entry.kind == kEntryValue && entry.a == reset_->Id()) {
            ReleaseKeys();  // the question takes the keys' letting go
            if (requesters_.AskQuestion(kResetQuestion, "Yes", "No")) {
                set_[shown_].Reset();
                ShowInstrument();
            }
        } else if (entry.kind == kEntryTextReturn) {
            // Return leaves the field, so the keys play again; a second Return is "Okay".
            requesters_.Kit().Focus(window_, nullptr);
        } else if (entry.kind == kEntryKeyDown && !KeyTaken(entry.b) && !KeyRepeat(entry.b)) {
            PressKey(KeyCode(entry.a));
        } else if (entry.kind == kEntryKeyUp) {
            LetGo(KeyCode(entry.a));
        }
        Refresh();
    }

    // Every key still down comes up; this needs no widget, so it may come
    // after the window has closed.
    void ReleaseKeys() {
        while (!held_.empty()) LetGo(held_.back());
    }

private:
    // The list and the picture after a change of the fields.
    void Refresh() {
        FillList();
        DrawEnvelopePicture(picture_->Surface(), {0, 0, picture_->Rect().w, picture_->Rect().h}, set_[shown_]);
    }

    void PressKey(uint16_t key) {
        if (!preview_ || std::find(held_.begin(), held_.end(), key) != held_.end()) return;
        held_.push_back(key);
        preview_(set_[shown_], octave_, key, true);
    }

    void LetGo(uint16_t key) {
        const auto held = std::find(held_.begin(), held_.end(), key);
        if (held == held_.end()) return;
        held_.erase(held);
        preview_(set_[shown_], octave_, key, false);
    }

    void ShowInstrument() {
        const Instrument& instrument = set_[shown_];
        name_->SetText(instrument.name);
        shownName_ = name_->Text();
        startVolume_[0]->SetNumber(instrument.startVolume);
        ShowNumbers(delay_, instrument.delay);
        ShowNumbers(volumeAdd_, instrument.volumeAdd);
        ShowNumbers(vibratoSpeed_, instrument.vibratoSpeed);
        ShowNumbers(vibratoStrength_, instrument.vibratoStrength);
    }

    // The list's names follow the name field; its selection and scroll stay.
    // Each name is cut or padded to the width of the column's "%24s", so the
    // names stand at its left edge.
    void FillList() {
        std::vector<ListLine> lines;
        for (int i = 0; i < kInstruments; ++i) {
            std::string name = set_[i].name;
            name.resize(kListedName, ' ');
            lines.push_back({static_cast<long long>(i), std::move(name)});
        }
        if (listed_ == lines) return;
        listed_ = lines;
        list_->SetLines(std::move(lines));
        list_->Select(shown_);
    }

    InstrumentSet& set_;
    int shown_;
    int octave_;  // as the preview takes it
    std::optional<Instrument>& copied_;
    Requesters& requesters_;
    const InstrumentPreview& preview_;
    Window* window_ = nullptr;
    ListBox* list_ = nullptr;
    std::vector<ListLine> listed_;
    Image* picture_ = nullptr;
    TextLine* name_ = nullptr;
    std::string shownName_;  // the name field's text when the instrument was shown or last read
    Numbers<1> startVolume_{};
    Numbers<4> delay_{};
    Numbers<kEnvelopePhases> volumeAdd_{};
    Numbers<kEnvelopePhases> vibratoSpeed_{};
    Numbers<kEnvelopePhases> vibratoStrength_{};
    TextLine* octaveField_ = nullptr;
    PushButton* copy_ = nullptr;
    PushButton* paste_ = nullptr;
    PushButton* reset_ = nullptr;
    std::vector<uint16_t> held_;  // the keys sounding, oldest first
};

}  // namespace

std::optional<InstrumentSet> InstrumentEditor::Run(const InstrumentSet& instruments, int shown, int octave) {
    DialogForm form(requesters_, "Instrument Editor", kWidth, kLabelWidth);
    if (!form.Opened()) return std::nullopt;
    InstrumentSet set = instruments;
    EditorWindow window(form, set, std::clamp(shown, 0, kInstruments - 1), octave, copied_, requesters_, preview_);
    const int pressed = form.Run(
        {"Okay", "Cancel"},
        [&](int button) {
            if (button == 0) window.ReadFields();
            return true;
        },
        [&](const QueueEntry& entry) { window.Handle(entry); });
    window.ReleaseKeys();
    if (pressed != 0) return std::nullopt;
    return set;
}

}  // namespace sondrel
