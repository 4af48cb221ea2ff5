#pragma once
// A frame around a group of widgets, with an optional label set into its top
// edge.

#include <string>

#include "ui/widgets/decoration.h"

namespace sondrel {

class Frame : public Decoration {
public:
    Frame(uint16_t id, const Gorb_Rect& rect, std::string label = {})
        : Decoration(WidgetKind::Frame, id, rect), label_(std::move(label)) {}

    const std::string& Label() const { return label_; }
    void SetLabel(std::string label) { label_ = std::move(label); }

    void Draw(Painter& painter, const DrawStyle& style) const override;

private:
    std::string label_;
};

}  // namespace sondrel
