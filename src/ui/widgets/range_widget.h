#pragma once
// What scroll bars and sliders share: a value within a range, laid out along
// one axis, with a grip that shows the value and can be dragged. The value
// is committed when the widget is let go (the toolkit queues the value
// entry); every change while it is held sets the changed-while-held flag.

#include <cstdint>
#include <string>

#include "ui/widget.h"

namespace sondrel {

class RangeWidget : public Widget {
public:
    // The parts a hit test reports.
    enum Part : int { kTrackLess = 0, kTrackMore = 1, kGrip = 2, kArrowLess = 3, kArrowMore = 4 };

    int32_t Minimum() const { return minimum_; }
    int32_t Maximum() const { return maximum_; }
    // A range given backwards is taken as the single value minimum.
    void SetRange(int32_t minimum, int32_t maximum);
    // Clamped into the range.
    void SetValue(int32_t value);
    int32_t Value() const override { return value_; }
    bool Vertical() const { return vertical_; }
    // The part the first button went down on while it is held, else kNoPart.
    int HeldPart() const { return heldPart_; }

    int HitTest(Point p) const override;
    void Press(WidgetContext& context, Point p, int part) override;
    void Release(WidgetContext& context, Point p, int part) override;
    void Drag(WidgetContext& context, Point p) override;
    bool CommitsOnRelease() const override { return true; }

protected:
    RangeWidget(WidgetKind kind, bool vertical, uint16_t id, const Gorb_Rect& rect)
        : Widget(kind, id, rect), vertical_(vertical) {}

    // The span of the track along the axis, relative to the widget's start.
    virtual int TrackStart() const { return 0; }
    virtual int TrackLength() const { return Length(); }
    virtual int GripLength() const = 0;
    // A press on the track or an arrow (not the grip).
    virtual void Step(int part) = 0;

    // Along the axis / across it, in pixels.
    int Length() const { return vertical_ ? Rect().h : Rect().w; }
    int Thickness() const { return vertical_ ? Rect().w : Rect().h; }
    // p's distance along the axis from the widget's start.
    int Along(Point p) const { return vertical_ ? p.y - Rect().y : p.x - Rect().x; }
    // The grip's start along the axis, relative to the widget's start.
    int GripStart() const;
    // A rectangle in local coordinates from a span along the axis, full thickness.
    Gorb_Rect Span(int start, int length) const;
    // Where the pointer was last seen while held, along the axis.
    int PointerAlong() const { return pointer_; }
    // The skin key of a part: prefix, skin type name, part name, state suffix.
    std::string Key(char prefix, const char* part, const char* state) const;

private:
    bool vertical_;
    int32_t minimum_ = 0;
    int32_t maximum_ = 100;
    int32_t value_ = 0;
    int heldPart_ = kNoPart;
    int grab_ = 0;  // the pointer's offset into the grip when it was taken
    int pointer_ = 0;
};

}  // namespace sondrel
