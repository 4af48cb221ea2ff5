#pragma once
// The common part of the widgets that are on or off: check boxes and toggle
// buttons flip on every press, select boxes and select buttons are radio
// style (choosing one clears the others of the same kind and group in its
// window). Toggles that share an id and each stand for one bit make a mask:
// flipping one queues the mask of all of them that are on. A press or Space
// on the focused widget acts at once and queues the kind's notification entry.

#include <cstdint>
#include <string>

#include "ui/entry_kinds.h"
#include "ui/widget.h"

namespace sondrel {

enum class ToggleLook : uint8_t {
    Box,     // a small box followed by the text
    Button,  // a button face with the text on it, pushed in while on
};

class ToggleWidget : public Widget {
public:
    // Radio style when group is not kNoGroup; choice is the index its entry carries.
    static constexpr int kNoGroup = -1;
    static constexpr int kNoBit = -1;

    bool On() const { return on_; }
    // Sets the state without queueing anything (a radio widget clears nothing).
    void SetOn(bool on) { on_ = on; }
    const std::string& Text() const { return text_; }
    void SetText(std::string text) { text_ = std::move(text); }
    int Group() const { return group_; }
    uint32_t Choice() const { return choice_; }
    int32_t Value() const override { return on_ ? 1 : 0; }
    // The mask bit this toggle stands for, or kNoBit.
    int Bit() const { return bit_; }
    void SetBit(int bit) { bit_ = bit; }
    // The mask of the toggles of this kind and id in the window that are on.
    uint32_t Mask() const;

    void Press(WidgetContext& context, Point, int part) override;
    bool KeyPress(WidgetContext& context, const Gorb_Event& event) override;
    void Draw(Painter& painter, const DrawStyle& style) const override;

protected:
    ToggleWidget(WidgetKind kind, EntryKind entry, ToggleLook look, uint16_t id, const Gorb_Rect& rect,
                 std::string text, int group = kNoGroup, uint32_t choice = 0)
        : Widget(kind, id, rect), entry_(entry), look_(look), text_(std::move(text)), group_(group), choice_(choice) {}

private:
    void Activate(WidgetContext& context);
    // The widgets of the same kind and group in the same window are turned off.
    void ClearGroup();
    void DrawBox(Painter& painter, const DrawStyle& style) const;
    void DrawButton(Painter& painter, const DrawStyle& style) const;
    // The skin item for the current state, falling back to plainer looks the skin may lack.
    bool DrawLook(Painter& painter, const DrawStyle& style, const Gorb_Rect& rect) const;

    EntryKind entry_;
    ToggleLook look_;
    std::string text_;
    int group_;
    uint32_t choice_;
    int bit_ = kNoBit;
    bool on_ = false;
};

}  // namespace sondrel
