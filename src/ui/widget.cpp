#include "ui/widget.h"

#include <string>

#include "ui/command_queue.h"
#include "ui/entry_kinds.h"
#include "ui/painter.h"
#include "ui/skin/skin_library.h"

namespace sondrel {

void Widget::AnnounceTabFocus(WidgetContext& context, bool byTab) const {
    if (byTab) context.queue.PushEntry(kEntryValue, Id(), static_cast<uint32_t>(Value()));
}

bool DrawStyle::DrawItem(Painter& painter, std::string_view key, const Gorb_Rect& rect) const {
    if (skin == nullptr || !skin->HasSkin()) return false;
    const auto& items = skin->Current().items;
    const auto found = items.find(key);
    if (found == items.end() || !found->second.defined) return false;
    const SkinItem& item = found->second;
    const StretchSource source{item.rect, item.borders.left, item.borders.right, item.borders.top, item.borders.bottom};
    painter.DrawStretched(skin->Picture(), source, rect);
    return true;
}

bool DrawStyle::DrawStateItem(Painter& painter, std::string_view base, std::string_view state,
                              const Gorb_Rect& rect) const {
    if (!state.empty() && DrawItem(painter, std::string(base) + std::string(state), rect)) return true;
    return DrawItem(painter, base, rect);
}

}  // namespace sondrel
