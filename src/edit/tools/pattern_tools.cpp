#include "edit/tools/pattern_tools.h"

#include <algorithm>
#include <mutex>

#include "sound/song_player.h"

namespace sondrel {

namespace {

void ApplyModuleSettings(Module& module, const ModuleSettings& settings) {
    module.title = settings.title;
    module.author = settings.author;
    module.notes = settings.notes;
    module.chipType = settings.chipType;
    module.frequencyDivider = settings.frequencyDivider;
    module.chipVariant = settings.chipVariant;
    module.repeatPosition = static_cast<uint8_t>(std::min<int>(settings.repeatPosition, module.patternListLength - 1));
    module.initialSpeed = settings.initialSpeed;
}

// Calls visit(pattern, line) for every line of the range in every chosen pattern.
template <typename Request, typename Visit>
void ForEachRequestedLine(const Request& request, Visit visit) {
    int first = std::max(request.startLine, 0);
    int last = std::min(request.endLine, kMaxLines - 1);
    for (int p = 0; p < kPatterns; ++p) {
        if (!request.patterns.test(p)) continue;
        for (int line = first; line <= last; ++line) visit(static_cast<uint8_t>(p), line);
    }
}

// The sweeping tools wait for the song to stop, then ask their dialog.
template <typename Ask, typename Sweep>
bool AskAndSweep(EditorContext& ctx, Ask ask, Sweep sweep) {
    if (ctx.song.Playing()) return false;
    auto request = ask();
    if (!request) return false;
    sweep(ctx, *request);
    return true;
}

}  // namespace

PatternSettings SettingsOf(const Pattern& pattern) {
    return {pattern.name, pattern.length, pattern.tactEnabled, pattern.tactStart, pattern.tactInterval};
}

ModuleSettings SettingsOf(const Module& module) {
    return {module.title,          module.author,         module.notes,        module.chipType,
            module.frequencyDivider, module.repeatPosition, module.initialSpeed, module.chipVariant};
}

void SetPatternLength(Pattern& pattern, int length) {
    int old = pattern.length;
    pattern.length = static_cast<uint16_t>(std::clamp(length, 1, kMaxLines));
    for (int line = old; line < pattern.length; ++line) pattern.lines[line].Clear();
}

void ApplyPatternSettings(Pattern& pattern, const PatternSettings& settings) {
    pattern.name = settings.name;
    pattern.tactEnabled = settings.tactEnabled;
    pattern.tactStart = settings.tactStart;
    pattern.tactInterval = settings.tactInterval;
}

bool EditPatternSettings(EditorContext& ctx, ToolDialogs& dialogs) {
    uint8_t number = ctx.view.State().currentPattern;
    auto settings = dialogs.EditPatternSettings(SettingsOf(ctx.module.patterns[number]));
    if (!settings) return false;
    ctx.undo.BeginPatternSettings(number);
    ApplyPatternSettings(ctx.module.patterns[number], *settings);
    ctx.undo.EndPatternSettings();
    ctx.view.Invalidate(kRedrawAll);
    return true;
}

bool ResizePattern(EditorContext& ctx, ToolDialogs& dialogs) {
    if (ctx.song.Playing()) return false;
    uint8_t number = ctx.view.State().currentPattern;
    Pattern& pattern = ctx.module.patterns[number];
    auto length = dialogs.ResizePattern(pattern.length);
    if (!length) return false;
    ctx.undo.BeginWholePattern(number, ctx.view.SaveState());
    SetPatternLength(pattern, *length);
    ctx.view.ClampSelection();
    ctx.view.ClampTop();
    ctx.undo.EndWholePattern(ctx.view.SaveState());
    ctx.view.Invalidate(kRedrawAll);
    return true;
}

namespace {

void StopSong(EditorContext& ctx) {
    std::lock_guard<AudioMutex> lock(ctx.audioMutex);
    ctx.song.Stop();
}

void ApplyModuleSettingsCommand(EditorContext& ctx, const ModuleSettings& settings);

}  // namespace

bool EditModuleSettings(EditorContext& ctx, ToolDialogs& dialogs) {
    StopSong(ctx);
    const auto settings = dialogs.EditModuleSettings(SettingsOf(ctx.module));
    if (!settings) return false;
    ApplyModuleSettingsCommand(ctx, *settings);
    return true;
}

bool NewModuleWithSettings(EditorContext& ctx, ToolDialogs& dialogs, std::unique_ptr<Module> fresh,
                           const std::function<void(std::unique_ptr<Module>)>& replace) {
    StopSong(ctx);
    const auto settings = dialogs.NewModuleSettings(SettingsOf(*fresh));
    if (!settings) return false;
    replace(std::move(fresh));
    ApplyModuleSettingsCommand(ctx, *settings);
    return true;
}

namespace {

void ApplyModuleSettingsCommand(EditorContext& ctx, const ModuleSettings& settings) {
    std::lock_guard<AudioMutex> lock(ctx.audioMutex);
    ctx.undo.BeginRepeatPosition();
    ApplyModuleSettings(ctx.module, settings);
    ctx.undo.EndRepeatPosition();
    ctx.song.ReloadSettings();
    ctx.notes.ConfigureChip(ctx.module.Settings());
    ctx.view.Invalidate(kRedrawAll);
}

}  // namespace

bool ChangeInstruments(EditorContext& ctx, ToolDialogs& dialogs) {
    return AskAndSweep(ctx, [&] { return dialogs.ChangeInstruments(ctx.module); }, ApplyChangeInstruments);
}

bool CopyChannels(EditorContext& ctx, ToolDialogs& dialogs) {
    return AskAndSweep(ctx, [&] { return dialogs.CopyChannels(ctx.module); }, ApplyCopyChannels);
}

// A line is recorded only when a sounding note's instrument takes part in the
// change; cells with an empty note change without making their line recorded.
void ApplyChangeInstruments(EditorContext& ctx, const ChangeInstrumentsRequest& request) {
    ctx.undo.BeginChangeInstruments(request.change);
    ForEachRequestedLine(request, [&](uint8_t pattern, int line) {
        PatternLine& cells = ctx.module.patterns[pattern].lines[line];
        if (ChangeMatchesLine(cells, request.change)) ctx.undo.AddRecord(pattern, line);
        ChangeLineInstruments(cells, request.change);
    });
    ctx.undo.EndRecords();
    ctx.view.Invalidate(kRedrawAll);
}

void ApplyCopyChannels(EditorContext& ctx, const CopyChannelsRequest& request) {
    ctx.undo.BeginCopyChannels(request.copy);
    ForEachRequestedLine(request, [&](uint8_t pattern, int line) {
        PatternLine& cells = ctx.module.patterns[pattern].lines[line];
        if (ChannelsEmpty(cells, request.copy)) return;
        // Only a line the copy changes is recorded: a copy between the command
        // column and a note channel, or of a channel onto itself, leaves every
        // line as it is and so costs the history no more than its entry.
        PatternLine copied = cells;
        CopyLineChannels(copied, request.copy);
        if (copied == cells) return;
        ctx.undo.AddRecord(pattern, line);
        cells = copied;
    });
    ctx.undo.EndRecords();
    ctx.view.Invalidate(kRedrawAll);
}

}  // namespace sondrel
