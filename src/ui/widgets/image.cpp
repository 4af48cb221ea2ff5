#include "ui/widgets/image.h"

#include <algorithm>

#include "ui/command_queue.h"
#include "ui/entry_kinds.h"

namespace sondrel {

Image::Image(uint16_t id, const Gorb_Rect& rect)
    : Widget(WidgetKind::Image, id, rect), surface_(Gorb_CreateSurface(rect.w, rect.h)) {
    surface_->Fill(0);
}

void Image::SetSelection(const Gorb_Rect& area, uint8_t alpha) {
    selection_ = area;
    selectionAlpha_ = alpha;
}

void Image::SetMarker(const Gorb_Rect& area, MarkerStyle style) {
    marker_ = area;
    markerStyle_ = style;
}

void Image::Press(WidgetContext& context, Point p, int part) {
    if (part == kNoPart) return;
    dragged_ = {p.x - Rect().x, p.y - Rect().y};
    context.queue.PushEntry(kEntryImage, Id(), PackImagePoint(dragged_.x, dragged_.y, false));
    if (followsDrags_) context.mouseMode = MouseMode::WidgetHeld;
}

void Image::Drag(WidgetContext& context, Point p) {
    const Point inside{std::clamp(p.x - Rect().x, 0, Rect().w - 1), std::clamp(p.y - Rect().y, 0, Rect().h - 1)};
    if (inside.x == dragged_.x && inside.y == dragged_.y) return;
    dragged_ = inside;
    context.queue.PushEntry(kEntryImage, Id(), PackImagePoint(inside.x, inside.y, true));
}

void Image::Draw(Painter& painter, const DrawStyle& style) const {
    // The painter keeps the target's clip on the widget, so the blit stays inside it.
    painter.Target().Blit(*surface_, {0, 0, surface_->Width(), surface_->Height()}, painter.OriginX(),
                          painter.OriginY());
    for (const Shade& shade : shades_) painter.FillAlpha(shade.area, static_cast<uint32_t>(shade.alpha) << 24);
    if (selection_ && selectionAlpha_ != 0) {
        const uint32_t colour = style.Colour(ThemeColour::Selection) & 0x00FFFFFFu;
        painter.FillAlpha(*selection_, colour | (static_cast<uint32_t>(selectionAlpha_) << 24));
    }
    if (marker_) painter.Marker(*marker_, style.Colour(ThemeColour::FocusRing), markerStyle_);
}

}  // namespace sondrel
