#pragma once
// An image or owner-drawn surface: the application paints the widget's own
// RGB565 surface, which is shown 1:1 with an optional selection laid over it
// (the selection colour at a chosen opacity), an optional marker frame and
// shades: areas darkened by a black of their own opacity, under the rest.
// A click queues an image entry with the point clicked, in surface
// coordinates; an image that follows drags also queues the points the
// pointer moves to while the button stays down (kept inside the image).

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "platform/gorb.h"
#include "ui/painter.h"
#include "ui/widget.h"

namespace sondrel {

class Image : public Widget {
public:
    // A surface of the rectangle's size, cleared to black.
    Image(uint16_t id, const Gorb_Rect& rect);

    Gorb_Surface& Surface() { return *surface_; }
    const Gorb_Surface& Surface() const { return *surface_; }

    // area in surface coordinates; alpha 0 (invisible) to 255 (opaque).
    void SetSelection(const Gorb_Rect& area, uint8_t alpha);
    void ClearSelection() { selection_.reset(); }
    void SetMarker(const Gorb_Rect& area, MarkerStyle style = MarkerStyle::Dotted);
    void ClearMarker() { marker_.reset(); }

    struct Shade {
        Gorb_Rect area;   // in surface coordinates
        uint8_t alpha;    // 0 leaves it as it is, 255 makes it black
    };
    void SetShades(std::vector<Shade> shades) { shades_ = std::move(shades); }
    const std::vector<Shade>& Shades() const { return shades_; }

    void SetFollowsDrags(bool follows) { followsDrags_ = follows; }

    void Press(WidgetContext& context, Point p, int part) override;
    void Drag(WidgetContext& context, Point p) override;
    void FocusGained(WidgetContext& context, bool byTab) override { AnnounceTabFocus(context, byTab); }
    void Draw(Painter& painter, const DrawStyle& style) const override;

private:
    std::unique_ptr<Gorb_Surface> surface_;
    std::optional<Gorb_Rect> selection_;
    uint8_t selectionAlpha_ = 0;
    std::optional<Gorb_Rect> marker_;
    std::vector<Shade> shades_;
    bool followsDrags_ = false;
    Point dragged_{};
    MarkerStyle markerStyle_ = MarkerStyle::Dotted;
};

}  // namespace sondrel
