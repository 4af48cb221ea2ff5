#pragma once
// Puts the 16-bit screen surface into the window's own pixels, without a
// graphics context: only the rows that changed since the last present are
// converted and sent to the display, and an unchanged frame sends nothing.
// A window bigger than the screen shows it at the largest whole scale up to
// the one asked for, every screen pixel a square of window pixels, centred
// between black borders.

#include <cstdint>
#include <memory>
#include <vector>

#include "platform/screen_placement.h"

struct SDL_Surface;
struct SDL_Window;

namespace sondrel {

class WindowPresenter {
public:
    explicit WindowPresenter(SDL_Window* window, int maxScale = kMinWindowScale)
        : window_(window), maxScale_(maxScale) {}
    ~WindowPresenter();
    WindowPresenter(const WindowPresenter&) = delete;
    WindowPresenter& operator=(const WindowPresenter&) = delete;

    // The next present sends the whole picture: the window's pixels were
    // lost (exposed, resized, switched to or from the whole display).
    void Invalidate() { whole_ = true; }
    // The largest scale the screen is shown at; the whole picture is sent again.
    void SetMaxScale(int scale);
    // Sends what changed of screen; the number of screen rows sent.
    int Present(SDL_Surface& screen);

private:
    // The first and one past the last row that differ from the last
    // present; first == end when none does.
    void ChangedRows(const SDL_Surface& screen, int& first, int& end) const;
    // The window's pixels, noticing when the window made new ones.
    SDL_Surface* Target();
    bool SendScaled(SDL_Surface& screen, SDL_Surface& target, int first, int end);
    // Copies rows first to end of staging_ onto the target, each pixel made
    // a square of placement.scale pixels.
    void Enlarge(SDL_Surface& target, const ScreenPlacement& placement, int first, int end) const;

    SDL_Window* window_;
    int maxScale_;
    SDL_Surface* target_ = nullptr;  // the window's, not ours
    int targetWidth_ = 0;
    int targetHeight_ = 0;
    uint32_t targetFormat_ = 0;
    std::vector<uint16_t> last_;  // the screen as last presented, row after row
    bool whole_ = true;
    // The screen in the window's format, enlarged from when the sizes differ.
    struct SurfaceFree {
        void operator()(SDL_Surface* surface) const;
    };
    std::unique_ptr<SDL_Surface, SurfaceFree> staging_;
};

}  // namespace sondrel
