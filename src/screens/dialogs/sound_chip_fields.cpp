#include "screens/dialogs/sound_chip_fields.h"

#include "screens/dialogs/dialog_form.h"
#include "ui/widgets/menu_button.h"

namespace sondrel {
namespace {

int ChoiceOf(uint8_t setting) { return setting == kChipSettingUnset ? MenuButton::kNoChoice : setting; }

uint8_t SettingOf(const MenuButton& field) {
    return field.Choice() == MenuButton::kNoChoice ? kChipSettingUnset : static_cast<uint8_t>(field.Choice());
}

}  // namespace

SoundChipFields::SoundChipFields(DialogForm& form, const ChipSettings& chip) {
    form.BeginGroup("Sound chip");
    type_ = &form.Choice("Type:", "NTSC (60Hz)\nPAL (50Hz)", ChoiceOf(chip.chipType));
    divider_ = &form.Choice("Frequency divider:", "1x\n2x", ChoiceOf(chip.frequencyDivider));
    form.EndGroup();
}

ChipSettings SoundChipFields::Chosen() const { return {SettingOf(*divider_), SettingOf(*type_)}; }

bool SoundChipFields::Complete() const {
    return type_->Choice() != MenuButton::kNoChoice && divider_->Choice() != MenuButton::kNoChoice;
}

}  // namespace sondrel
