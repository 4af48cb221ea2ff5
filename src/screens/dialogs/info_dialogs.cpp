#include "screens/dialogs/info_dialogs.h"

#include <algorithm>
#include <vector>

#include "screens/dialogs/dialog_form.h"
#include "sound/song_time.h"
#include "ui/requesters/message_text.h"
#include "ui/requesters/requesters.h"
#include "ui/toolkit.h"
#include "ui/widgets/check_box.h"
#include "ui/widgets/list_box.h"
#include "ui/widgets/menu_button.h"
#include "ui/widgets/text_field.h"
#include "ui/widgets/text_line.h"

namespace sondrel {
namespace {

const std::vector<std::string> kClose{"Close"};

}  // namespace

ModuleInformation InformationOf(const Module& module) {
    ModuleInformation information;
    information.fileName = module.fileName;
    information.directory = module.directory;
    information.songLength = module.patternListLength;
    for (int p = 0; p < kPatterns; ++p) {
        if (!module.patterns[p].used) continue;
        ++information.patterns;
        if (module.CountInList(p) == 0) ++information.unusedPatterns;
    }
    return information;
}

void ShowModuleInformation(Requesters& requesters, const ModuleInformation& information) {
    DialogForm form(requesters, "Module information", 420, 190);
    if (!form.Opened()) return;
    form.BeginGroup("File");
    form.Show("Filename:", information.fileName);
    form.Show("Directory:", information.directory);
    form.EndGroup();
    form.BeginGroup("Patterns");
    form.Show("Song length:", std::to_string(information.songLength));
    form.Show("Number of patterns:", std::to_string(information.patterns));
    form.Show("Number of unused patterns:", std::to_string(information.unusedPatterns));
    form.EndGroup();
    form.BeginGroup("Times");
    form.Show("Time:", FormatSongTime(information.seconds));
    form.Show("Time at cursor:", FormatSongTime(information.secondsAtCursor));
    form.EndGroup();
    form.Run(kClose);
}

void ShowPatternOverview(Requesters& requesters, const Module& module) {
    DialogForm form(requesters, "Pattern overview", 360);
    if (!form.Opened()) return;
    // Lines as high as the skin's, so the headings keep their descenders.
    ListBox& list = form.List(18, 16);
    // Each column wide enough for its heading in the skin's font.
    const int length = 56;
    const int used = 44;
    list.SetColumns({{list.Rect().w - length - used - 16, "%20s", "Name"},
                     {length, "%4D", "Length"},
                     {used, "%3D", "Used"}});
    std::vector<ListLine> lines;
    for (int p = 0; p < kPatterns; ++p) {
        const Pattern& pattern = module.patterns[p];
        if (pattern.used)
            lines.push_back({pattern.name, static_cast<long long>(pattern.length),
                             static_cast<long long>(module.CountInList(p))});
    }
    list.SetLines(std::move(lines));
    form.Run({});
}

void ShowReadme(Requesters& requesters, const std::string& text) {
    DialogForm form(requesters, "Readme.txt", 620);
    if (!form.Opened()) return;
    TextField& field = form.Add<TextField>({}, 400, text.size() + 1);
    field.SetText(text);
    field.SetReadOnly(true);
    form.Run(kClose);
}

void ShowProgramInfo(Requesters& requesters) {
    DialogForm form(requesters, "Program info", 340);
    if (!form.Opened()) return;
    for (const char* text : {kProgramInfoText, kLibrariesText}) {
        const Gorb_Font* font = requesters.Kit().Style().font;
        const std::vector<std::string> lines = WrapText(text, 300, font);
        const int height = static_cast<int>(lines.size()) * TextLineHeight(font);
        form.Add<MessageText>({}, height, lines);
    }
    form.Run(kClose);
}

std::optional<PreferenceValues> RunPreferences(Requesters& requesters, const PreferenceValues& current) {
    DialogForm form(requesters, "Preferences", 360, 170);
    if (!form.Opened()) return std::nullopt;
    form.BeginGroup("Appeareance");
    CheckBox& fullscreen = form.Add<CheckBox>("Fullscreen:", DialogForm::kRowHeight - 4, "");
    fullscreen.SetOn(current.fullscreen);
    form.EndGroup();
    form.BeginGroup("Sound output");
    TextLine& volume = form.Number("Volume:", current.volume, 0, 100);
    form.EndGroup();
    form.BeginGroup("MIDI in");
    CheckBox& midiIn = form.Add<CheckBox>("Enable MIDI-in:", DialogForm::kRowHeight - 4, "");
    midiIn.SetOn(current.midiInEnable);
    TextLine& device = form.Number("MIDI-in Device ID:", current.midiInDeviceId, 0, 255);
    form.EndGroup();
    form.BeginGroup("Editing");
    CheckBox& undoWithCtrlZ = form.Check("Undo with Ctrl+Z, redo with Ctrl+Y", current.undoWithCtrlZ);
    CheckBox& typeDigits = form.Check("Type values with digits", current.typeDigits);
    form.EndGroup();
    form.BeginGroup("Window");
    MenuButton& scale = form.Choice("Window scale:", "1x\n2x\n3x\n4x", std::clamp(current.windowScale, 1, 4) - 1);
    form.EndGroup();
    PreferenceValues chosen = current;
    const auto read = [&](int) {
        chosen = {fullscreen.On(),    volume.Value(),     midiIn.On(),        device.Value(),
                  undoWithCtrlZ.On(), typeDigits.On(),    scale.Choice() + 1};
        return true;
    };
    if (form.Run({"Okay", "Cancel"}, read) != 0) return std::nullopt;
    return chosen;
}

}  // namespace sondrel
