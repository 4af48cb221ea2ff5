#pragma once
// Steps through a module's lines and pattern list one tick at a time,
// applies each line's commands and drives four voices into its own chip.

#include <array>
#include <cstdint>

#include "model/module.h"
#include "sound/channel_effects.h"
#include "sound/sound_chip.h"
#include "sound/voice.h"

namespace sondrel {

class SongPlayer {
public:
    void Attach(Module& module);
    void ConfigureChip();
    // After a module was loaded or created: back to its initial speed and chip settings.
    void ReloadSettings();
    void Start(uint16_t line, uint16_t listPosition, bool onePattern);
    void Stop();
    void Tick();

    void SetChannelMask(uint8_t mask) { channelMask_ = mask; }
    uint8_t GetChannelMask() const { return channelMask_; }
    void SetSpeed(uint8_t speed) { speed_ = speed; }
    uint8_t GetSpeed() const { return speed_; }
    void ResetAccumulator() { tickAccumulator_ = 0; }

    uint16_t Line() const { return line_; }
    uint16_t ListPosition() const { return listPosition_; }
    uint8_t PatternNumber() const { return pattern_; }
    bool Playing() const { return playing_ != 0; }
    bool OnePattern() const { return onePattern_ != 0; }
    int16_t TickAccumulator() const { return tickAccumulator_; }
    uint8_t StereoParam() const { return stereoParam_; }
    uint8_t PvOffset(int channel) const { return pvOffset_[channel]; }

    // Set by Tick: a new line was reached / a line was played / the list ran
    // out and continued at the repeat position. The main loop clears the first two.
    uint8_t lineAdvanced = 0;
    uint8_t linePlayed = 0;
    uint8_t wrapped = 0;

    const Voice& GetVoice(int channel) const { return voices_[channel]; }
    SoundChip& Chip() { return chip_; }
    const SoundChip& Chip() const { return chip_; }
    Module* AttachedModule() const { return module_; }

private:
    void PlayLine();

    Module* module_ = nullptr;
    uint8_t speed_ = kNewModuleSpeed;
    uint8_t pvToggle_ = 0;
    std::array<uint8_t, 3> pvOffset_{};
    uint8_t channelMask_ = 0xFF;
    std::array<Voice, kChannels> voices_{};
    ChannelEffects effects_;
    uint8_t playing_ = 0;
    uint8_t onePattern_ = 0;
    int16_t tickAccumulator_ = 0;
    SoundChip chip_;
    uint16_t line_ = 0;
    uint16_t listPosition_ = 0;
    uint8_t pattern_ = 0;
    uint8_t stereoParam_ = 255;
};

// Four free voices and a chip of their own, for hearing notes while editing.
class NotePlayer {
public:
    void Init(ChipSettings settings);
    void ConfigureChip(ChipSettings settings);
    // A note for so many ticks; with an effect (a channel command from 3 on)
    // the note sounds as a line holding both would play it.
    void StartVoice(int channel, const Instrument& instrument, uint8_t volume, uint8_t note,
                    int8_t detune, uint32_t ticks, uint8_t effect = kChannelCommandNone, uint8_t effectParam = 0);
    void StopVoice(int channel);
    void StopAll();
    void Tick();

    const Voice& GetVoice(int channel) const { return voices_[channel]; }
    SoundChip& Chip() { return chip_; }

private:
    std::array<Voice, kChannels> voices_{};
    ChannelEffects effects_;
    SoundChip chip_;
};

}  // namespace sondrel
