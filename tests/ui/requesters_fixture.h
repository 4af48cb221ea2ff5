#pragma once
// The bench for anything that runs the requesters' frame loop (requesters,
// dialogs): a scripted host that plays one step a frame, a main window below
// and helpers that queue clicks and keys for the frames to come.

#include <deque>
#include <functional>
#include <stdexcept>
#include <string>

#include "ui/requesters/requester_host.h"
#include "ui/requesters/requesters.h"
#include "ui/toolkit_fixture.h"
#include "ui/window.h"

namespace sondrel {

// Plays a script one step a frame, before the toolkit takes the frame's
// input, and gives up after kFrameLimit frames so a requester that never
// ends fails the test instead of hanging it.
class ScriptedHost : public RequesterHost {
public:
    static constexpr int kFrameLimit = 200;

    explicit ScriptedHost(Toolkit& toolkit) : toolkit_(toolkit) {}
    void PollInput() override {
        if (++frames > kFrameLimit) throw std::runtime_error("the requester was still open at the frame limit");
        if (script.empty()) return;
        const auto step = std::move(script.front());
        script.pop_front();
        step();
    }
    void DrawFrame() override { toolkit_.Draw(); }
    bool HandleCloseRequest() override {
        ++closeRequests;
        return quitOnClose;
    }

    std::deque<std::function<void()>> script;
    int frames = 0;
    int closeRequests = 0;
    bool quitOnClose = false;

private:
    Toolkit& toolkit_;
};

// The requesters run their own frames, so input here is only queued for them.
class RequesterFixture : public ToolkitFixture {
protected:
    // The next frame runs step first.
    void Then(std::function<void()> step) { host.script.push_back(std::move(step)); }
    void QueueKey(uint16_t key, uint16_t character = 0) {
        Queue(kGorbKeyDown, {}, key, character);
        Queue(kGorbKeyUp, {}, key);
    }
    Widget* Find(uint16_t windowId, uint16_t widgetId) {
        Window* window = toolkit.FindWindow(windowId);
        if (window == nullptr) return nullptr;
        for (const auto& widget : window->Widgets())
            if (widget->Id() == widgetId) return widget.get();
        return nullptr;
    }
    // A click at window coordinates p of the window.
    void ClickAt(uint16_t windowId, Point p) {
        const Gorb_Rect& rect = toolkit.FindWindow(windowId)->Rect();
        Queue(kGorbButton1Down, {rect.x + p.x, rect.y + p.y});
        Queue(kGorbButton1Up, {rect.x + p.x, rect.y + p.y});
    }
    void ClickWidget(uint16_t windowId, uint16_t widgetId) {
        Widget* widget = Find(windowId, widgetId);
        ASSERT_NE(widget, nullptr) << "widget " << widgetId << " of window " << windowId;
        const Gorb_Rect& r = widget->Rect();
        ClickAt(windowId, {r.x + r.w / 2, r.y + r.h / 2});
    }

    Window* main = toolkit.OpenWindow(1, {0, 0, kScreenWidth, kScreenHeight}, kWindowNotDraggable, "main");
    ScriptedHost host{toolkit};
    Requesters requesters{toolkit, host};
};

}  // namespace sondrel
