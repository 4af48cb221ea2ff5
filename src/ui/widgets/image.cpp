#include "ui/widgets/image.h"

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
    const auto x = static_cast<uint32_t>(p.x - Rect().x) & 0xFFFF;
    const auto y = static_cast<uint32_t>(p.y - Rect().y) & 0xFFFF;
    context.queue.PushEntry(kEntryImage, Id(), x | (y << 16));
}

void Image::Draw(Painter& painter, const DrawStyle& style) const {
    // The painter keeps the target's clip on the widget, so the blit stays inside it.
    painter.Target().Blit(*surface_, {0, 0, surface_->Width(), surface_->Height()}, painter.OriginX(),
                          painter.OriginY());
    if (selection_ && selectionAlpha_ != 0) {
        const uint32_t colour = style.Colour(ThemeColour::Selection) & 0x00FFFFFFu;
        painter.FillAlpha(*selection_, colour | (static_cast<uint32_t>(selectionAlpha_) << 24));
    }
    if (marker_) painter.Marker(*marker_, style.Colour(ThemeColour::FocusRing), markerStyle_);
}

}  // namespace sondrel
