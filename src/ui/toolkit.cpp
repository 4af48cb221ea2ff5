#include "ui/toolkit.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <utility>

#include "ui/painter.h"
#include "ui/skin/skin_library.h"

namespace sondrel {

namespace {

double SteadySeconds() {
    using namespace std::chrono;
    return duration<double>(steady_clock::now().time_since_epoch()).count();
}

// The colours used when there is no skin: a plain grey desktop look.
std::array<uint32_t, kThemeColourCount> PlainColours() {
    std::array<uint32_t, kThemeColourCount> colours{};
    colours.fill(0xFF000000);
    auto set = [&](ThemeColour c, uint32_t argb) { colours[static_cast<int>(c)] = argb; };
    set(ThemeColour::Background, 0xFF305070);
    set(ThemeColour::WindowBody, 0xFFC0C0C0);
    set(ThemeColour::WindowBorder, 0xFF202020);
    set(ThemeColour::TitleActive, 0xFF204080);
    set(ThemeColour::TitleInactive, 0xFF808080);
    set(ThemeColour::TitleText, 0xFFFFFFFF);
    set(ThemeColour::Text, 0xFF000000);
    set(ThemeColour::TextDisabled, 0xFF808080);
    set(ThemeColour::FocusRing, 0xFF000080);
    set(ThemeColour::BevelLight, 0xFFF0F0F0);
    set(ThemeColour::BevelDark, 0xFF404040);
    return colours;
}

}  // namespace

Toolkit::Toolkit(InputSource& input, std::function<double()> clock)
    : input_(input), clock_(clock ? std::move(clock) : SteadySeconds) {
    style_.colours = PlainColours();
}

Toolkit::~Toolkit() = default;

void Toolkit::Init(Gorb_Surface& screen, const SkinLibrary* skin) {
    Shutdown();
    screen_ = &screen;
    style_ = DrawStyle{};
    style_.colours = PlainColours();
    if (skin != nullptr && skin->HasSkin()) {
        style_.skin = skin;
        const Skin& current = skin->Current();
        if (!current.themes.empty())
            for (int i = 0; i < kThemeColourCount; ++i) style_.colours[i] = current.Colour(i);
        if (current.fonts.contains("default")) style_.font = &skin->Font("default");
    }
    if (menu_ != nullptr) menu_->Close();
    input_.MouseState(mouse_.x, mouse_.y);
    mode_ = MouseMode::Idle;
    buttons_ = 0;
    backlog_ = 0;
    lastTime_ = clock_();
    UpdateHover();
}

void Toolkit::Shutdown() {
    ClosePopup();
    queue_.Clear();
    stack_.clear();
    for (auto& slot : slots_) slot.reset();
    current_ = nullptr;
    held_ = nullptr;
    hover_ = {};
    mode_ = MouseMode::Idle;
}

Window* Toolkit::FindWindow(uint16_t id) const {
    const auto found = std::find_if(stack_.begin(), stack_.end(), [&](Window* w) { return w->Id() == id; });
    return found == stack_.end() ? nullptr : *found;
}

Window* Toolkit::OpenWindow(uint16_t id, const Gorb_Rect& rect, uint32_t flags, const std::string& title) {
    if (Window* open = FindWindow(id)) {
        Raise(open);
        return nullptr;
    }
    const auto slot = std::find(slots_.begin(), slots_.end(), nullptr);
    if (slot == slots_.end()) return nullptr;
    *slot = std::make_unique<Window>(id, rect, flags, title);
    Window* window = slot->get();
    for (Window* other : stack_) {
        if (!other->Active()) continue;
        other->SetActive(false);
        window->TookActiveFrom().push_back(other);
    }
    stack_.push_back(window);
    current_ = window;
    mode_ = MouseMode::Idle;
    held_ = nullptr;
    if (menu_ != nullptr) menu_->Close();
    ClosePopup();
    UpdateHover();
    return window;
}

void Toolkit::CloseWindow(Window* window) {
    const auto slot = std::find_if(slots_.begin(), slots_.end(), [&](const auto& s) { return s.get() == window; });
    if (window == nullptr || slot == slots_.end()) return;
    for (Window* other : window->TookActiveFrom()) other->SetActive(true);
    // A window closed out of order hands what it took on to the one that took the flag from it.
    for (Window* other : stack_) {
        auto& took = other->TookActiveFrom();
        if (std::erase(took, window) > 0)
            for (Window* given : window->TookActiveFrom()) {
                given->SetActive(false);
                took.push_back(given);
            }
    }
    if (held_ != nullptr && held_->Owner() == window) {
        held_ = nullptr;
        mode_ = MouseMode::Idle;
    }
    if ((mode_ == MouseMode::DraggingWindow || mode_ == MouseMode::WindowPartHeld) && current_ == window)
        mode_ = MouseMode::Idle;
    if (popupWindow_ == window) ClosePopup();
    std::erase(stack_, window);
    slot->reset();
    current_ = stack_.empty() ? nullptr : stack_.back();
    UpdateHover();
}

void Toolkit::ClosePopup() {
    Popup* popup = std::exchange(popup_, nullptr);
    popupWindow_ = nullptr;
    if (popup == nullptr) return;
    popup->Close();
    if (mode_ == MouseMode::InMenu) mode_ = MouseMode::Idle;
}

void Toolkit::TakePopup(const WidgetContext& context, Window* window) {
    if (context.popup == popup_) return;
    popup_ = context.popup;
    popupWindow_ = popup_ != nullptr ? window : nullptr;
}

void Toolkit::Raise(Window* window) {
    const auto found = std::find(stack_.begin(), stack_.end(), window);
    if (found == stack_.end()) return;
    stack_.erase(found);
    stack_.push_back(window);
    current_ = window;
}

void Toolkit::Focus(Window* window, Widget* widget, bool byTab) {
    if (window == nullptr || window->Focus() == widget) return;
    WidgetContext context = Context();
    if (Widget* old = window->Focus()) old->FocusLost(context);
    window->SetFocus(widget);
    if (widget != nullptr) widget->FocusGained(context, byTab);
    mode_ = context.mouseMode;
}

void Toolkit::Update() {
    Gorb_Event event;
    while (input_.NextEvent(event)) {
        modifiers_ = input_.Modifiers();
        Dispatch(event);
    }
    const double now = clock_();
    backlog_ = std::min(backlog_ + (now - lastTime_), kMaxTickBacklog);
    lastTime_ = now;
    RunTicks();
}

void Toolkit::RunTicks() {
    // The small allowance keeps 0.1 s from counting as 9.999... ticks.
    const int ticks = static_cast<int>(std::floor(backlog_ / kTickSeconds + 1e-9));
    for (int i = 0; i < ticks; ++i) {
        if (mode_ != MouseMode::WidgetHeld || held_ == nullptr) continue;
        WidgetContext context = Context();
        held_->Repeat(context);
        mode_ = context.mouseMode;
    }
    backlog_ = std::max(0.0, backlog_ - ticks * kTickSeconds);
}

void Toolkit::UpdateHover() {
    hover_ = {};
    if ((popup_ != nullptr && popup_->Contains(mouse_)) || (menu_ != nullptr && menu_->Contains(mouse_))) {
        hover_.kind = HoverKind::Menu;
        return;
    }
    for (auto it = stack_.rbegin(); it != stack_.rend(); ++it) {
        Window* window = *it;
        if (!window->Contains(mouse_)) continue;
        hover_.window = window;
        hover_.kind = HoverKind::WindowBody;
        if (window->Active()) {
            const Point local = window->ToLocal(mouse_);
            hover_.windowPart = window->PartAt(local);
            if (hover_.windowPart == WindowPart::None) hover_.widget = window->WidgetAt(local, hover_.part);
            if (hover_.widget != nullptr) hover_.kind = HoverKind::Widget;
        }
        return;
    }
}

void Toolkit::Draw() {
    if (screen_ == nullptr) return;
    Painter painter(*screen_);
    const Gorb_Rect whole{0, 0, screen_->Width(), screen_->Height()};
    painter.Fill(whole, style_.Colour(ThemeColour::Background));
    // Widgets show their hover looks only while nothing is held.
    const bool idle = mode_ == MouseMode::Idle;
    style_.hovered = idle ? hover_.widget : nullptr;
    style_.hoveredPart = idle ? hover_.part : kNoPart;
    for (const Window* window : stack_) DrawWindow(painter, *window);
    style_.hovered = nullptr;
    if (menu_ != nullptr) menu_->Draw(painter, style_);
    if (popup_ != nullptr) popup_->Draw(painter, style_);
}

void Toolkit::DrawWindow(Painter& painter, const Window& window) const {
    const Gorb_Rect& rect = window.Rect();
    const Painter::Scope scope(painter, rect);
    const Gorb_Rect local{0, 0, rect.w, rect.h};
    const Gorb_Rect titleBar{0, 0, rect.w, kTitleBarHeight};
    if (!style_.DrawItem(painter, "BWINDOW", local)) {
        painter.Fill(local, style_.Colour(ThemeColour::WindowBody));
        const ThemeColour title = window.Active() ? ThemeColour::TitleActive : ThemeColour::TitleInactive;
        painter.Fill(titleBar, style_.Colour(title));
        painter.Outline(local, style_.Colour(ThemeColour::WindowBorder));
    }
    if (style_.font != nullptr) {
        // The title ends before the leftmost box of the title bar.
        int textEnd = rect.w;
        for (WindowPart part : {WindowPart::Close, WindowPart::Maximize})
            if (window.HasPart(part)) textEnd = std::min(textEnd, window.PartRect(part).x);
        const Gorb_Rect textArea{4, 0, textEnd - 8, kTitleBarHeight};
        painter.TextIn(*style_.font, textArea, window.Title(), style_.Colour(ThemeColour::TitleText));
    }
    for (const auto& widget : window.Widgets()) {
        if (widget->Hidden()) continue;
        const Painter::Scope widgetScope(painter, widget->Rect());
        widget->Draw(painter, style_);
    }
    DrawWindowParts(painter, window);
}

void Toolkit::DrawWindowParts(Painter& painter, const Window& window) const {
    for (WindowPart part : {WindowPart::Close, WindowPart::Maximize, WindowPart::Resize}) {
        if (!window.HasPart(part)) continue;
        const Gorb_Rect box = window.PartRect(part);
        const bool held = mode_ == MouseMode::WindowPartHeld && current_ == &window && heldPart_ == part;
        const bool hovered = mode_ == MouseMode::Idle && hover_.window == &window && hover_.windowPart == part;
        const WidgetKind kind = part == WindowPart::Close      ? WidgetKind::WindowClose
                                : part == WindowPart::Maximize ? WidgetKind::WindowMaximize
                                                               : WidgetKind::WindowResize;
        const std::string base = "B" + std::string(SkinTypeName(kind));
        const bool pressed = held && heldPartDown_;
        if (style_.DrawStateItem(painter, base, LookState(window.Active(), pressed, hovered), box)) continue;
        painter.Fill(box, style_.Colour(ThemeColour::WindowBody));
        painter.Bevel(box, style_.Colour(ThemeColour::BevelLight), style_.Colour(ThemeColour::BevelDark),
                      pressed ? BevelStyle::Sunken : BevelStyle::Raised);
    }
}

}  // namespace sondrel
