#include "sound/song_player.h"

namespace sondrel {

void SongPlayer::Attach(Module& module) {
    module_ = &module;
    VibratoTable::Get();
    chip_.ResetBuffer();
    speed_ = module.initialSpeed;
    tickAccumulator_ = 0;
    playing_ = 0;
    channelMask_ = 0xFF;
    stereoParam_ = 255;
    ConfigureChip();
}

void SongPlayer::ConfigureChip() {
    chip_.Configure(module_->chipType != kChipNtsc, module_->frequencyDivider, module_->chipVariant);
}

void SongPlayer::ReloadSettings() {
    speed_ = module_->initialSpeed;
    tickAccumulator_ = 0;
    ConfigureChip();
}

void SongPlayer::Start(uint16_t line, uint16_t listPosition, bool onePattern) {
    line_ = line;
    listPosition_ = listPosition;
    onePattern_ = onePattern ? 1 : 0;
    tickAccumulator_ = 0;
    playing_ = 1;
    pvToggle_ = 1;
    pvOffset_.fill(0);
    lineAdvanced = linePlayed = wrapped = 0;
    stereoParam_ = 255;
    pattern_ = module_->patternList[listPosition_ & 255];
    chip_.Reset();
    for (auto& voice : voices_) voice.Stop();
    effects_.Reset();
}

void SongPlayer::Stop() {
    for (auto& voice : voices_) voice.Stop();
    playing_ = 0;
    lineAdvanced = linePlayed = wrapped = 0;
}

void SongPlayer::PlayLine() {
    const PatternLine& cells = module_->patterns[pattern_].lines[line_ & 255];
    for (int c = 0; c < kChannels; ++c) {
        const bool effectTakesNote =
            effects_.BeginLine(c, cells, voices_[c], module_->instruments[cells.instrument[c] & (kInstruments - 1)]);
        if (cells.note[c] != 255 && !effectTakesNote) {
            const uint8_t index = cells.instrument[c] & (kInstruments - 1);
            voices_[c].Start(module_->instruments[index], index, cells.volume[c], cells.note[c],
                             cells.detune[c], kPlayForever);
        }
        switch (cells.channelCommand[c]) {
            case kChannelCommandPV:
                if (c < kToneChannels) pvOffset_[c] = cells.channelParam[c];
                break;
            case kChannelCommandVO:
                voices_[c].SetVolume(cells.channelParam[c]);
                break;
            default:
                break;
        }
    }
    if (cells.command == kCommandSP) speed_ = cells.commandParam;
    if (cells.command == kCommandST) stereoParam_ = cells.commandParam;
}

void SongPlayer::Tick() {
    chip_.BeginTick();
    wrapped = 0;
    if (playing_) {
        if (tickAccumulator_ < 1) {
            linePlayed = 1;
            PlayLine();
            tickAccumulator_ = static_cast<int16_t>(tickAccumulator_ + speed_);
            pvToggle_ ^= 1;
        }
        // Speeds are eighths of a tick; the 16-bit accumulator may wrap at very low speeds.
        tickAccumulator_ = static_cast<int16_t>(tickAccumulator_ - 8);
        if (tickAccumulator_ < 1) {
            ++line_;
            lineAdvanced = 1;
            if (line_ >= module_->patterns[pattern_].length) {
                if (onePattern_) {
                    Stop();
                    lineAdvanced = 1;
                } else {
                    line_ = 0;
                    ++listPosition_;
                    if (listPosition_ >= module_->patternListLength) {
                        listPosition_ = module_->repeatPosition;
                        wrapped = 1;
                    }
                    pattern_ = module_->patternList[listPosition_ & 255];
                }
            }
        }
    }
    if (playing_) {
        for (int c = 0; c < kChannels; ++c) effects_.Tick(c, voices_[c]);
    }
    for (int c = 0; c < kChannels; ++c) {
        const uint8_t offset = (pvToggle_ == 1 && c < kToneChannels) ? pvOffset_[c] : 0;
        voices_[c].Update(chip_, c, offset);
    }
    chip_.SetStereo(stereoParam_);
}

void NotePlayer::Init(ChipSettings settings) {
    VibratoTable::Get();
    chip_.ResetBuffer();
    ConfigureChip(settings);
}

void NotePlayer::ConfigureChip(ChipSettings settings) {
    chip_.Configure(settings.chipType != kChipNtsc, settings.frequencyDivider, settings.variant);
    chip_.Reset();
}

void NotePlayer::StartVoice(int channel, const Instrument& instrument, uint8_t volume, uint8_t note,
                            int8_t detune, uint32_t ticks, uint8_t effect, uint8_t effectParam) {
    const int c = channel & 3;
    PatternLine cells;
    cells.Clear();
    cells.note[c] = note;
    cells.detune[c] = detune;
    cells.volume[c] = volume;
    cells.channelCommand[c] = effect;
    cells.channelParam[c] = effectParam;
    if (!effects_.BeginLine(c, cells, voices_[c], instrument, ticks))
        voices_[c].Start(instrument, 0, volume, note, detune, ticks);
}

void NotePlayer::StopVoice(int channel) {
    voices_[channel & 3].Stop();
    effects_.Clear(channel & 3);
}

void NotePlayer::StopAll() {
    for (auto& voice : voices_) voice.Stop();
    effects_.Reset();
}

void NotePlayer::Tick() {
    chip_.BeginTick();
    for (int c = 0; c < kChannels; ++c) {
        effects_.Tick(c, voices_[c]);
        voices_[c].Update(chip_, c, 0);
    }
}

}  // namespace sondrel
