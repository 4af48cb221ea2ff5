#include "ui/widgets/speed_button.h"

#include "ui/command_queue.h"
#include "ui/entry_kinds.h"
#include "ui/painter.h"
#include "ui/skin/skin_library.h"

namespace sondrel {

void SpeedButton::Clicked(WidgetContext& context) { context.queue.PushEntry(kEntryButton, Id(), direction_); }

void SpeedButton::Draw(Painter& painter, const DrawStyle& style) const {
    PushButton::Draw(painter, style);
    if (style.skin == nullptr || !style.skin->HasSkin()) return;
    const auto& icons = style.skin->Current().icons;
    const auto found = icons.find(icon_);
    if (found == icons.end()) return;
    // A strip of several icons shows its first, square one.
    Gorb_Rect source = found->second.rect;
    if (found->second.type == SkinIconType::Multi) source.w = source.h;
    const int shift = Down() ? 1 : 0;
    const Gorb_Rect target{(Rect().w - source.w) / 2 + shift, (Rect().h - source.h) / 2 + shift, source.w, source.h};
    painter.DrawStretched(style.skin->Picture(), StretchSource{source}, target);
}

}  // namespace sondrel
