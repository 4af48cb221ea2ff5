#include "platform/window_presenter.h"

#include <SDL.h>

#include <algorithm>
#include <cstring>

namespace sondrel {

namespace {

const uint16_t* RowOf(const SDL_Surface& surface, int y) {
    return reinterpret_cast<const uint16_t*>(static_cast<const uint8_t*>(surface.pixels) + y * surface.pitch);
}

// The largest rectangle of the screen's shape that fits the target, centred.
SDL_Rect FitInside(int width, int height, int targetWidth, int targetHeight) {
    SDL_Rect fit{0, 0, targetWidth, targetHeight};
    if (static_cast<int64_t>(targetWidth) * height > static_cast<int64_t>(targetHeight) * width)
        fit.w = static_cast<int>(static_cast<int64_t>(targetHeight) * width / height);
    else
        fit.h = static_cast<int>(static_cast<int64_t>(targetWidth) * height / width);
    fit.x = (targetWidth - fit.w) / 2;
    fit.y = (targetHeight - fit.h) / 2;
    return fit;
}

}  // namespace

void WindowPresenter::SurfaceFree::operator()(SDL_Surface* surface) const { SDL_FreeSurface(surface); }

WindowPresenter::~WindowPresenter() = default;

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

// The changed rows go through a copy in the window's format, so that the
// stretch is a plain one; the whole picture is stretched again each time,
// keeping the rows' edges where a full present puts them.
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
    SDL_Rect fit = FitInside(screen.w, screen.h, target.w, target.h);
    if (whole_) SDL_FillRect(&target, nullptr, SDL_MapRGB(target.format, 0, 0, 0));
    if (SDL_BlitScaled(staging_.get(), nullptr, &target, &fit) != 0) return false;
    return (whole_ ? SDL_UpdateWindowSurface(window_) : SDL_UpdateWindowSurfaceRects(window_, &fit, 1)) == 0;
}

}  // namespace sondrel
