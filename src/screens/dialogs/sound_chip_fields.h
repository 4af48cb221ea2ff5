#pragma once
// The "Sound chip" group of a dialog: the chip type and the frequency
// divider as two choices, and where the dialog asks for it the member of the
// chip family. A setting not chosen yet (kChipSettingUnset) shows an empty
// choice until the user picks one.

#include "model/module.h"

namespace sondrel {

class DialogForm;
class MenuButton;

inline constexpr char kChipSettingsMissing[] = "All chip settings must be set.";

class SoundChipFields {
public:
    // Adds the group to the form; the fields live as long as the form.
    SoundChipFields(DialogForm& form, const ChipSettings& chip, bool askVariant = false);

    // As chosen; an empty choice reads kChipSettingUnset.
    ChipSettings Chosen() const;
    bool Complete() const;

private:
    MenuButton* type_;
    MenuButton* divider_;
    MenuButton* variant_ = nullptr;
    uint8_t proposedVariant_;
};

}  // namespace sondrel
