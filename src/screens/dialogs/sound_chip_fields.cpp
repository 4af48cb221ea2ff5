#include "screens/dialogs/sound_chip_fields.h"

#include <string>

#include "screens/dialogs/dialog_form.h"
#include "ui/widgets/menu_button.h"

namespace sondrel {
namespace {

int ChoiceOf(uint8_t setting) { return setting == kChipSettingUnset ? MenuButton::kNoChoice : setting; }

uint8_t SettingOf(const MenuButton& field) {
    return field.Choice() == MenuButton::kNoChoice ? kChipSettingUnset : static_cast<uint8_t>(field.Choice());
}

std::string VariantChoices() {
    std::string choices;
    for (const char* name : kChipVariantNames) {
        if (!choices.empty()) choices += '\n';
        choices += name;
    }
    return choices;
}

}  // namespace

SoundChipFields::SoundChipFields(DialogForm& form, const ChipSettings& chip, bool askVariant)
    : proposedVariant_(chip.variant) {
    form.BeginGroup("Sound chip");
    type_ = &form.Choice("Type:", "NTSC (60Hz)\nPAL (50Hz)", ChoiceOf(chip.chipType));
    divider_ = &form.Choice("Frequency divider:", "1x\n2x", ChoiceOf(chip.frequencyDivider));
    if (askVariant) variant_ = &form.Choice("Chip:", VariantChoices(), chip.variant);
    form.EndGroup();
}

ChipSettings SoundChipFields::Chosen() const {
    const uint8_t variant = variant_ ? static_cast<uint8_t>(variant_->Choice()) : proposedVariant_;
    return {SettingOf(*divider_), SettingOf(*type_), variant};
}

bool SoundChipFields::Complete() const {
    return type_->Choice() != MenuButton::kNoChoice && divider_->Choice() != MenuButton::kNoChoice;
}

}  // namespace sondrel
