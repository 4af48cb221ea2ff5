#include "ui/widgets/range_widget.h"

#include <algorithm>
#include <string>

namespace sondrel {

void RangeWidget::SetRange(int32_t minimum, int32_t maximum) {
    minimum_ = minimum;
    maximum_ = std::max(minimum, maximum);
    SetValue(value_);
}

void RangeWidget::SetValue(int32_t value) {
    value = std::clamp(value, minimum_, maximum_);
    if (value == value_) return;
    value_ = value;
    if (heldPart_ != kNoPart) SetFlags(Flags() | kWidgetChangedWhileHeld);
}

int RangeWidget::GripStart() const {
    const int room = TrackLength() - GripLength();
    const int64_t span = static_cast<int64_t>(maximum_) - minimum_;
    if (room <= 0 || span == 0) return TrackStart();
    return TrackStart() + static_cast<int>((static_cast<int64_t>(value_) - minimum_) * room / span);
}

Gorb_Rect RangeWidget::Span(int start, int length) const {
    return vertical_ ? Gorb_Rect{0, start, Rect().w, length} : Gorb_Rect{start, 0, length, Rect().h};
}

std::string RangeWidget::Key(char prefix, const char* part, const char* state) const {
    std::string key(1, prefix);
    key += SkinTypeName(Kind());
    key += part;
    key += state;
    return key;
}

int RangeWidget::HitTest(Point p) const {
    if (!Contains(Rect(), p)) return kNoPart;
    const int along = Along(p);
    if (along < TrackStart()) return kArrowLess;
    if (along >= TrackStart() + TrackLength()) return kArrowMore;
    const int grip = GripStart();
    if (along < grip) return kTrackLess;
    if (along >= grip + GripLength()) return kTrackMore;
    return kGrip;
}

void RangeWidget::Press(WidgetContext& context, Point p, int part) {
    if (part == kNoPart) return;
    heldPart_ = part;
    pointer_ = Along(p);
    grab_ = pointer_ - GripStart();
    context.mouseMode = MouseMode::WidgetHeld;
    if (part != kGrip) Step(part);
}

void RangeWidget::Release(WidgetContext&, Point, int) { heldPart_ = kNoPart; }

void RangeWidget::Drag(WidgetContext&, Point p) {
    pointer_ = Along(p);
    if (heldPart_ != kGrip) return;
    const int room = TrackLength() - GripLength();
    if (room <= 0) return;
    // The value whose grip position lies nearest to where the pointer puts it.
    const int64_t offset = std::clamp(pointer_ - grab_ - TrackStart(), 0, room);
    const int64_t span = static_cast<int64_t>(maximum_) - minimum_;
    SetValue(static_cast<int32_t>(minimum_ + (offset * span + room / 2) / room));
}

}  // namespace sondrel
