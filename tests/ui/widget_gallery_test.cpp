#include <gtest/gtest.h>

#include <set>

#include "ui/painter.h"
#include "ui/toolkit_fixture.h"
#include "ui/widget_gallery.h"

namespace sondrel {
namespace {

bool Inside(const Gorb_Rect& inner, const Gorb_Rect& outer) {
    return inner.x >= outer.x && inner.y >= outer.y && inner.x + inner.w <= outer.x + outer.w &&
           inner.y + inner.h <= outer.y + outer.h;
}

// The gallery drawn with the shipped skin: every widget shows something of its
// own over the window body, widgets only overlap where a frame holds them
// whole, and every kind the toolkit has is there.
using WidgetGalleryTest = ToolkitFixture;

TEST_F(WidgetGalleryTest, EveryKindIsDrawnInItsOwnPlace) {
    const Gorb_Rect area{0, DropDownMenuBar::kBarHeight, kGalleryWidth, kGalleryHeight};
    Window* window = Restart(area, &ShippedSkin(), kWindowNotDraggable);
    const auto bare = Pixels(area);

    BuildWidgetGallery(*window, &ShippedSkin());
    const auto drawn = Pixels(area);
    screen->SavePng("widget_gallery.png");

    const Gorb_Rect content{2, kTitleBarHeight + 2, area.w - 4, area.h - kTitleBarHeight - 4};
    const auto& widgets = window->Widgets();
    std::set<WidgetKind> kinds;
    for (size_t i = 0; i < widgets.size(); ++i) {
        const Widget& widget = *widgets[i];
        const Gorb_Rect& r = widget.Rect();
        SCOPED_TRACE(testing::Message() << "widget " << widget.Id() << " " << SkinTypeName(widget.Kind()));
        kinds.insert(widget.Kind());
        ASSERT_TRUE(Inside(r, content));
        bool changed = false;
        for (int y = r.y; y < r.y + r.h && !changed; ++y)
            for (int x = r.x; x < r.x + r.w && !changed; ++x)
                changed = drawn[static_cast<size_t>(y * area.w + x)] != bare[static_cast<size_t>(y * area.w + x)];
        EXPECT_TRUE(changed);
        for (size_t j = i + 1; j < widgets.size(); ++j) {
            const Widget& other = *widgets[j];
            if (Intersect(r, other.Rect()).w == 0) continue;
            const bool framed = (widget.Kind() == WidgetKind::Frame && Inside(other.Rect(), r)) ||
                                (other.Kind() == WidgetKind::Frame && Inside(r, other.Rect()));
            EXPECT_TRUE(framed) << "overlaps widget " << other.Id();
        }
    }
    // Kinds the toolkit draws itself as parts of windows and menus.
    const std::set<WidgetKind> elsewhere = {WidgetKind::Window, WidgetKind::Menu, WidgetKind::WindowClose,
                                            WidgetKind::WindowMaximize, WidgetKind::WindowResize};
    for (int k = 0; k < static_cast<int>(WidgetKind::Count); ++k) {
        const auto kind = static_cast<WidgetKind>(k);
        if (!elsewhere.contains(kind)) {
            EXPECT_TRUE(kinds.contains(kind)) << SkinTypeName(kind);
        }
    }
}

}  // namespace
}  // namespace sondrel
