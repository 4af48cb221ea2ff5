#include "platform/window_presenter.h"

#include <SDL.h>

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace sondrel {

namespace {

const uint16_t* RowOf(const SDL_Surface& surface, int y) {
    return reinterpret_cast<const uint16_t*>(static_cast<const uint8_t*>(surface.pixels) + y * surface.pitch);
}

template <typename Pixel>
Pixel* PixelRow(SDL_Surface& surface, int y) {
    return reinterpret_cast<Pixel*>(static_cast<uint8_t*>(surface.pixels) + static_cast<std::ptrdiff_t>(y) * surface.pitch);
}

// Each source row becomes one row of wide pixels, copied scale times down.
template <typename Pixel>
void EnlargeRows(SDL_Surface& source, SDL_Surface& target, const ScreenPlacement& placement, int first, int end) {
    const int scale = placement.scale;
    const std::size_t rowBytes = static_cast<std::size_t>(source.w) * scale * sizeof(Pixel);
    for (int y = first; y < end; ++y) {
        const Pixel* from = PixelRow<Pixel>(source, y);
        const int top = placement.y + y * scale;
        Pixel* to = PixelRow<Pixel>(target, top) + placement.x;
        for (int x = 0; x < source.w; ++x) std::fill_n(to + x * scale, scale, from[x]);
        for (int copy = 1; copy < scale; ++copy) std::memcpy(PixelRow<Pixel>(target, top + copy) + placement.x, to, rowBytes);
    }
}

}  // namespace

void WindowPresenter::SurfaceFree::operator()(SDL_Surface* surface) const { SDL_FreeSurface(surface); }

WindowPresenter::~WindowPresenter() = default;

void WindowPresenter::SetMaxScale(int scale) {
    maxScale_ = scale;
    whole_ = true;
}

SDL_Surface* WindowPresenter::Target() {
    SDL_Surface* target = SDL_GetWindowSurface(window_);
    if (!target) {
        whole_ = true;
        return nullptr;
    }
    if (target != target_ || target->w != targetWidth_ || target->h != targetHeight_ ||
        target->format->format != targetFormat_) {
        target_ = target;
        targetWidth_ = target->w;
        targetHeight_ = target->h;
        targetFormat_ = target->format->format;
        staging_.reset();
        whole_ = true;
    }
    return target;
}

void WindowPresenter::ChangedRows(const SDL_Surface& screen, int& first, int& end) const {
    const std::size_t rowBytes = static_cast<std::size_t>(screen.w) * sizeof(uint16_t);
    auto same = [&](int y) { return std::memcmp(RowOf(screen, y), last_.data() + y * screen.w, rowBytes) == 0; };
    first = 0;
    end = screen.h;
    while (first < end && same(first)) ++first;
    while (end > first && same(end - 1)) --end;
}

int WindowPresenter::Present(SDL_Surface& screen) {
    SDL_Surface* target = Target();
    if (!target) return 0;
    const std::size_t pixels = static_cast<std::size_t>(screen.w) * screen.h;
    if (last_.size() != pixels) {
        last_.assign(pixels, 0);
        whole_ = true;
    }
    if (SDL_MUSTLOCK(&screen)) SDL_LockSurface(&screen);
    int first = 0;
    int end = screen.h;
    if (!whole_) ChangedRows(screen, first, end);
    for (int y = first; y < end; ++y) std::copy_n(RowOf(screen, y), screen.w, last_.begin() + y * screen.w);
    if (SDL_MUSTLOCK(&screen)) SDL_UnlockSurface(&screen);
    if (first == end) return 0;

    bool sent = false;
    if (target->w == screen.w && target->h == screen.h) {
        SDL_Rect rows{0, first, screen.w, end - first};
        SDL_Rect to = rows;
        sent = SDL_BlitSurface(&screen, &rows, target, &to) == 0 && SDL_UpdateWindowSurfaceRects(window_, &rows, 1) == 0;
    } else {
        sent = SendScaled(screen, *target, first, end);
    }
    // What could not be sent is sent whole next time.
    whole_ = !sent;
    return sent ? end - first : 0;
}

// The changed rows go through a copy in the window's format, from which
// they are enlarged; a window too small for the screen, or of an unusual
// pixel size, gets SDL's own nearest-pixel stretch of the whole picture.
bool WindowPresenter::SendScaled(SDL_Surface& screen, SDL_Surface& target, int first, int end) {
    if (!staging_ || staging_->w != screen.w || staging_->h != screen.h) {
        staging_.reset(SDL_CreateRGBSurfaceWithFormat(0, screen.w, screen.h, 0, targetFormat_));
        if (!staging_) return false;
        SDL_SetSurfaceBlendMode(staging_.get(), SDL_BLENDMODE_NONE);
        first = 0;
        end = screen.h;
    }
    SDL_Rect rows{0, first, screen.w, end - first};
    SDL_Rect to = rows;
    if (SDL_BlitSurface(&screen, &rows, staging_.get(), &to) != 0) return false;
    const ScreenPlacement placement = PlaceScreen(screen.w, screen.h, target.w, target.h, maxScale_);
    const int scale = placement.scale;
    SDL_Rect shown{placement.x, placement.y, screen.w * scale, screen.h * scale};
    if (whole_) SDL_FillRect(&target, nullptr, SDL_MapRGB(target.format, 0, 0, 0));
    const int bytes = target.format->BytesPerPixel;
    const bool inside = placement.x >= 0 && placement.y >= 0;
    if (inside && (bytes == 4 || bytes == 2)) {
        if (SDL_MUSTLOCK(&target) && SDL_LockSurface(&target) != 0) return false;
        Enlarge(target, placement, first, end);
        if (SDL_MUSTLOCK(&target)) SDL_UnlockSurface(&target);
        shown.y += first * scale;
        shown.h = (end - first) * scale;
    } else if (SDL_BlitScaled(staging_.get(), nullptr, &target, &shown) != 0) {
        return false;
    }
    return (whole_ ? SDL_UpdateWindowSurface(window_) : SDL_UpdateWindowSurfaceRects(window_, &shown, 1)) == 0;
}

void WindowPresenter::Enlarge(SDL_Surface& target, const ScreenPlacement& placement, int first, int end) const {
    if (target.format->BytesPerPixel == 4)
        EnlargeRows<uint32_t>(*staging_, target, placement, first, end);
    else
        EnlargeRows<uint16_t>(*staging_, target, placement, first, end);
}

}  // namespace sondrel
