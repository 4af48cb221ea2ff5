#include "platform/gorb.h"

#include <SDL.h>
#include <SDL_image.h>
#include <SDL_ttf.h>

#include <algorithm>
#include <cstdio>
#include <deque>

#include "model/exception.h"
#include "platform/gorb_keys.h"
#include "platform/screen_placement.h"
#include "platform/window_presenter.h"

namespace sondrel {

namespace {

// More events than this between two updates means nobody reads them.
constexpr std::size_t kMaxQueuedEvents = 1024;
constexpr int kFramesPerSecond = 60;

struct GorbState {
    bool videoStarted = false;
    SDL_Window* window = nullptr;
    std::unique_ptr<WindowPresenter> presenter;
    std::unique_ptr<Gorb_Surface> screen;
    uint64_t deadline = 0;  // when the current frame should end
    Gorb_PresentStats stats;
    std::deque<Gorb_Event> events;
    std::size_t awaitingText = SIZE_MAX;  // the key-down event the next text input belongs to
    int scale = kMinWindowScale;  // of the window; the whole display shows the largest that fits
    bool fullscreen = false;
    int mouseX = 0;  // in screen pixels
    int mouseY = 0;
    bool pointerOnScreen = true;  // not on the borders around it
    uint32_t buttons = 0;
    uint32_t heldModifiers = 0;   // as of the last key event read from SDL
    uint32_t takenModifiers = 0;  // those of the event last handed out
};

GorbState& State() {
    static GorbState state;
    return state;
}

SDL_Rect ToSdl(const Gorb_Rect& rect) { return {rect.x, rect.y, rect.w, rect.h}; }

SDL_Color ColourOf(uint32_t argb) {
    return {static_cast<Uint8>(argb >> 16), static_cast<Uint8>(argb >> 8), static_cast<Uint8>(argb),
            static_cast<Uint8>(argb >> 24)};
}

void Push(Gorb_Event event) {
    auto& state = State();
    if (state.events.size() >= kMaxQueuedEvents) {
        state.events.pop_front();
        if (state.awaitingText != SIZE_MAX) state.awaitingText = state.awaitingText ? state.awaitingText - 1 : SIZE_MAX;
    }
    event.x = state.mouseX;
    event.y = state.mouseY;
    event.modifiers = state.heldModifiers;
    state.events.push_back(event);
}

uint32_t ModifierBits(Uint16 mod) {
    uint32_t bits = 0;
    if (mod & KMOD_LSHIFT) bits |= kGorbLeftShift;
    if (mod & KMOD_RSHIFT) bits |= kGorbRightShift;
    if (mod & KMOD_LCTRL) bits |= kGorbLeftCtrl;
    if (mod & KMOD_RCTRL) bits |= kGorbRightCtrl;
    if (mod & KMOD_LALT) bits |= kGorbLeftAlt;
    if (mod & KMOD_RALT) bits |= kGorbRightAlt;
    return bits;
}

void PushKey(int type, const SDL_KeyboardEvent& key) {
    // A modifier's own event already carries its new state.
    State().heldModifiers = ModifierBits(key.keysym.mod);
    Gorb_Event event;
    event.type = type;
    event.key = ScanCodeFromSdl(key.keysym.scancode);
    event.repeat = key.repeat != 0;
    if (type == kGorbKeyDown) event.character = ControlCharacter(event.key);
    Push(event);
    auto& state = State();
    // The text a key types arrives as an event of its own right after it.
    state.awaitingText = type == kGorbKeyDown && event.character == 0 ? state.events.size() - 1 : SIZE_MAX;
}

void TakeText(const char* text) {
    auto& state = State();
    const uint16_t character = Latin1FromUtf8(text);
    if (character && state.awaitingText < state.events.size()) state.events[state.awaitingText].character = character;
    state.awaitingText = SIZE_MAX;
}

int ShownScale() {
    const auto& state = State();
    return state.fullscreen ? kMaxWindowScale : state.scale;
}

// Where the screen is shown in the window as it is now.
ScreenPlacement Placement() {
    const auto& state = State();
    int width = kScreenWidth;
    int height = kScreenHeight;
    if (state.screen) width = state.screen->Width(), height = state.screen->Height();
    int windowWidth = width;
    int windowHeight = height;
    if (state.window) SDL_GetWindowSize(state.window, &windowWidth, &windowHeight);
    return PlaceScreen(width, height, windowWidth, windowHeight, ShownScale());
}

// The pointer moved to window pixel (x, y): over the borders it stays on
// the nearest edge of the screen.
void MovePointer(const ScreenPlacement& placement, int x, int y) {
    auto& state = State();
    const ScreenPoint point = NearestScreenPixel(placement, x, y);
    state.mouseX = point.x;
    state.mouseY = point.y;
    state.pointerOnScreen = ScreenPixelAt(placement, x, y).has_value();
}

// A press on the borders around the screen is lost, and so is the release
// of a button whose press was.
void PushButton(const ScreenPlacement& placement, const SDL_MouseButtonEvent& button, bool down) {
    int type;
    uint32_t bit;
    switch (button.button) {
        case SDL_BUTTON_LEFT: type = kGorbButton1Down; bit = kGorbMouseFirst; break;
        case SDL_BUTTON_RIGHT: type = kGorbButton2Down; bit = kGorbMouseSecond; break;
        case SDL_BUTTON_MIDDLE: type = kGorbButton3Down; bit = kGorbMouseThird; break;
        default: return;
    }
    MovePointer(placement, button.x, button.y);
    auto& state = State();
    if (down) {
        if (!state.pointerOnScreen) return;
        state.buttons |= bit;
    } else {
        if (!(state.buttons & bit)) return;
        state.buttons &= ~bit;
        ++type;
    }
    Push({.type = type});
}

void DestroyWindow() {
    auto& state = State();
    state.presenter.reset();
    if (state.window) SDL_DestroyWindow(state.window);
    state.window = nullptr;
    state.screen.reset();
}

// Sleeps until the current frame's deadline: presenting into the window's
// pixels never waits for the display.
void PaceFrame() {
    auto& state = State();
    const uint64_t frequency = SDL_GetPerformanceFrequency();
    const uint64_t period = frequency / kFramesPerSecond;
    const uint64_t now = SDL_GetPerformanceCounter();
    state.deadline += period;
    // Far behind (or the first frame): start counting afresh.
    if (now > state.deadline + period) state.deadline = now;
    if (now < state.deadline) SDL_Delay(static_cast<Uint32>((state.deadline - now) * 1000 / frequency));
}

// The window's pixels are lost or stale after these: everything is sent again.
bool WindowNeedsWholePicture(Uint8 windowEvent) {
    switch (windowEvent) {
        case SDL_WINDOWEVENT_SHOWN:
        case SDL_WINDOWEVENT_EXPOSED:
        case SDL_WINDOWEVENT_RESIZED:
        case SDL_WINDOWEVENT_SIZE_CHANGED:
        case SDL_WINDOWEVENT_MAXIMIZED:
        case SDL_WINDOWEVENT_RESTORED: return true;
        default: return false;
    }
}

}  // namespace

// ---- Gorb_Surface ----

Gorb_Surface::Gorb_Surface(SDL_Surface* surface) : surface_(surface) {
    if (!surface_) throw InternalException("Gorb_Surface: no surface");
}

Gorb_Surface::~Gorb_Surface() { SDL_FreeSurface(surface_); }

int Gorb_Surface::Width() const { return surface_->w; }
int Gorb_Surface::Height() const { return surface_->h; }

uint32_t Gorb_Surface::FindPixel(uint32_t argb) const {
    const SDL_Color c = ColourOf(argb);
    return SDL_MapRGBA(surface_->format, c.r, c.g, c.b, c.a);
}

void Gorb_Surface::FillRect(const Gorb_Rect& rect, uint32_t pixel) {
    const SDL_Rect area = ToSdl(rect);
    SDL_FillRect(surface_, &area, pixel);
}

void Gorb_Surface::Fill(uint32_t pixel) { SDL_FillRect(surface_, nullptr, pixel); }

void Gorb_Surface::Convert(int format, int mode, uint32_t transparentArgb) {
    if (format != kGorbFormatRgb565) throw InternalException("Gorb_Surface::Convert(): unknown format");
    if (surface_->format->format != SDL_PIXELFORMAT_RGB565) {
        SDL_Surface* converted = SDL_ConvertSurfaceFormat(surface_, SDL_PIXELFORMAT_RGB565, 0);
        if (!converted) throw InternalException(std::string("Gorb_Surface::Convert(): ") + SDL_GetError());
        SDL_FreeSurface(surface_);
        surface_ = converted;
    }
    if (mode == kGorbConvertColourKey) {
        SDL_SetColorKey(surface_, SDL_TRUE, FindPixel(transparentArgb));
    } else {
        SDL_SetColorKey(surface_, SDL_FALSE, 0);
    }
}

Gorb_Pixels Gorb_Surface::Lock() {
    if (SDL_MUSTLOCK(surface_)) SDL_LockSurface(surface_);
    if (surface_->format->BytesPerPixel != 2) return {};
    return {static_cast<uint16_t*>(surface_->pixels), surface_->pitch};
}

void Gorb_Surface::Unlock() {
    if (SDL_MUSTLOCK(surface_)) SDL_UnlockSurface(surface_);
}

void Gorb_Surface::Blit(const Gorb_Surface& source, const Gorb_Rect& part, int x, int y) {
    SDL_Rect from = ToSdl(part);
    SDL_Rect to{x, y, part.w, part.h};
    SDL_BlitSurface(source.surface_, &from, surface_, &to);
}

void Gorb_Surface::BlitScaled(const Gorb_Surface& source, const Gorb_Rect& part, const Gorb_Rect& target) {
    SDL_Rect from = ToSdl(part);
    SDL_Rect to = ToSdl(target);
    SDL_BlitScaled(source.surface_, &from, surface_, &to);
}

void Gorb_Surface::SetClip(const Gorb_Rect& rect) {
    const SDL_Rect area = ToSdl(rect);
    SDL_SetClipRect(surface_, &area);
}

void Gorb_Surface::ResetClip() { SDL_SetClipRect(surface_, nullptr); }

Gorb_Rect Gorb_Surface::Clip() const {
    SDL_Rect area;
    SDL_GetClipRect(surface_, &area);
    return {area.x, area.y, area.w, area.h};
}

bool Gorb_Surface::SavePng(const std::filesystem::path& path) const {
    SDL_Surface* rgb = SDL_ConvertSurfaceFormat(surface_, SDL_PIXELFORMAT_RGB24, 0);
    if (!rgb) return false;
    const bool saved = IMG_SavePNG(rgb, path.c_str()) == 0;
    SDL_FreeSurface(rgb);
    return saved;
}

// ---- Gorb_Texture ----

Gorb_Texture::Gorb_Texture(std::unique_ptr<Gorb_Surface> surface) : surface_(std::move(surface)) {
    SDL_Surface* native = surface_->Native();
    Uint32 key = 0;
    if (SDL_GetColorKey(native, &key) == 0) transparentPixel_ = static_cast<int>(key);
    const Gorb_Pixels pixels = surface_->Lock();
    if (pixels.pixels) {
        pixels_.resize(static_cast<std::size_t>(Width()) * Height());
        for (int y = 0; y < Height(); ++y) std::copy_n(pixels.Row(y), Width(), pixels_.begin() + y * Width());
    } else {
        pixels_.assign(static_cast<std::size_t>(Width()) * Height(), 0);
    }
    surface_->Unlock();
}

void Gorb_Texture::BlitPart(const Gorb_Rect& part, int x, int y, Gorb_Surface* target) const {
    if (!target) target = Gorb_GetScreen();
    if (target) target->Blit(*surface_, part, x, y);
}

void Gorb_Texture::BlitPartScaled(const Gorb_Rect& part, const Gorb_Rect& where, Gorb_Surface* target) const {
    if (!target) target = Gorb_GetScreen();
    if (target) target->BlitScaled(*surface_, part, where);
}

// ---- Gorb_Font ----

Gorb_Font::~Gorb_Font() { TTF_CloseFont(font_); }

void Gorb_Font::Print(Gorb_Surface& target, int x, int y, const std::string& text, uint32_t argb) const {
    if (text.empty()) return;
    const uint32_t opaque = argb | (argb >> 24 ? 0 : 0xFF000000u);
    std::string key = text;
    for (int shift = 0; shift < 32; shift += 8) key += static_cast<char>(opaque >> shift);
    auto found = pictures_.find(key);
    if (found == pictures_.end()) {
        const SDL_Color colour = ColourOf(opaque);
        SDL_Surface* rendered = mono_ ? TTF_RenderText_Solid(font_, text.c_str(), colour)
                                      : TTF_RenderText_Blended(font_, text.c_str(), colour);
        if (!rendered) return;
        if (pictures_.size() >= kCachedTexts) pictures_.clear();
        found = pictures_.emplace(std::move(key), std::make_unique<Gorb_Surface>(rendered)).first;
    }
    const Gorb_Surface& picture = *found->second;
    target.Blit(picture, {0, 0, picture.Width(), picture.Height()}, x, y);
}

int Gorb_Font::TextWidth(const std::string& text) const {
    if (text.empty()) return 0;
    if (const auto found = widths_.find(text); found != widths_.end()) return found->second;
    int width = 0;
    int height = 0;
    if (TTF_SizeText(font_, text.c_str(), &width, &height) != 0) return 0;
    if (widths_.size() >= kCachedTexts) widths_.clear();
    widths_.emplace(text, width);
    return width;
}

int Gorb_Font::Height() const { return TTF_FontHeight(font_); }

const Gorb_Font::InkRows& Gorb_Font::Ink() const {
    if (ink_) return *ink_;
    // A glyph's rows run from ascent - maxy to ascent - miny in the picture.
    const int ascent = TTF_FontAscent(font_);
    InkRows ink{Height(), 0};
    for (Uint16 ch = 33; ch < 256; ++ch) {
        if (ch >= 127 && ch < 161) continue;  // DEL and the control characters
        int minX = 0, maxX = 0, minY = 0, maxY = 0, advance = 0;
        if (TTF_GlyphMetrics(font_, ch, &minX, &maxX, &minY, &maxY, &advance) != 0 || minY == maxY) continue;
        ink.top = std::min(ink.top, ascent - maxY);
        ink.bottom = std::max(ink.bottom, ascent - minY);
    }
    if (ink.bottom <= ink.top) ink = {0, Height()};
    ink_ = InkRows{std::max(0, ink.top), ink.bottom};
    return *ink_;
}

// ---- Display and window ----

bool Gorb_Init() {
    auto& state = State();
    if (!state.videoStarted) {
        // The window's own pixels are presented: no graphics context may be
        // made behind our back to hold them.
        SDL_SetHintWithPriority(SDL_HINT_FRAMEBUFFER_ACCELERATION, "0", SDL_HINT_OVERRIDE);
        if (SDL_InitSubSystem(SDL_INIT_VIDEO) != 0) {
            std::fprintf(stderr, "Sondrel: no display: %s\n", SDL_GetError());
            return false;
        }
        state.videoStarted = true;
    }
    if (!TTF_WasInit()) TTF_Init();
    IMG_Init(IMG_INIT_PNG);
    return true;
}

bool Gorb_SetVideoMode(int width, int height, bool fullscreen, int scale) {
    auto& state = State();
    if (!state.videoStarted) return false;
    scale = std::clamp(scale, kMinWindowScale, kMaxWindowScale);
    const Uint32 fullscreenFlag = fullscreen ? SDL_WINDOW_FULLSCREEN_DESKTOP : 0;
    if (state.window && state.screen && state.screen->Width() == width && state.screen->Height() == height) {
        const bool resized = scale != state.scale;
        state.scale = scale;
        state.fullscreen = fullscreen;
        state.presenter->SetMaxScale(ShownScale());
        // On the whole display this is the size it goes back to.
        if (resized) SDL_SetWindowSize(state.window, width * scale, height * scale);
        if (SDL_SetWindowFullscreen(state.window, fullscreenFlag) != 0) return false;
        if (resized && !fullscreen)
            SDL_SetWindowPosition(state.window, SDL_WINDOWPOS_CENTERED, SDL_WINDOWPOS_CENTERED);
        return true;
    }
    DestroyWindow();

    state.scale = scale;
    state.fullscreen = fullscreen;
    state.window = SDL_CreateWindow("Sondrel", SDL_WINDOWPOS_CENTERED, SDL_WINDOWPOS_CENTERED, width * scale,
                                    height * scale, SDL_WINDOW_SHOWN | fullscreenFlag);
    SDL_Surface* screen = SDL_CreateRGBSurfaceWithFormat(0, width, height, 16, SDL_PIXELFORMAT_RGB565);
    // The window's pixels are made now, so that a display without them fails here.
    if (!state.window || !screen || !SDL_GetWindowSurface(state.window)) {
        std::fprintf(stderr, "Sondrel: can't open the display: %s\n", SDL_GetError());
        if (screen) SDL_FreeSurface(screen);
        DestroyWindow();
        return false;
    }
    state.presenter = std::make_unique<WindowPresenter>(state.window, ShownScale());
    state.screen = std::make_unique<Gorb_Surface>(screen);
    state.screen->Fill(0);
    state.deadline = 0;
    SDL_StartTextInput();
    int x = 0;
    int y = 0;
    SDL_GetMouseState(&x, &y);
    MovePointer(Placement(), x, y);
    return true;
}

int Gorb_LargestWindowScale(int width, int height) {
    const auto& state = State();
    if (!state.videoStarted) return kMinWindowScale;
    const int display = state.window ? std::max(0, SDL_GetWindowDisplayIndex(state.window)) : 0;
    SDL_Rect area;
    if (SDL_GetDisplayUsableBounds(display, &area) != 0) return kMinWindowScale;
    return LargestScaleWithin(width, height, area.w, area.h);
}

int Gorb_GetWindowScale() { return State().scale; }

bool Gorb_SetWindowScale(int scale) {
    const auto& state = State();
    return state.screen &&
           Gorb_SetVideoMode(state.screen->Width(), state.screen->Height(), state.fullscreen, scale);
}

void Gorb_SetWindowTitle(const std::string& title) {
    if (State().window) SDL_SetWindowTitle(State().window, title.c_str());
}

void* Gorb_GetWindowHandle() { return State().window; }

void Gorb_Quit() {
    auto& state = State();
    DestroyWindow();
    state.events.clear();
    state.awaitingText = SIZE_MAX;
    state.buttons = 0;
    state.pointerOnScreen = true;
    state.heldModifiers = state.takenModifiers = 0;
    state.stats = {};
    if (TTF_WasInit()) TTF_Quit();
    IMG_Quit();
    if (state.videoStarted) {
        SDL_StopTextInput();
        SDL_QuitSubSystem(SDL_INIT_VIDEO);
        state.videoStarted = false;
    }
}

// ---- Input ----

void Gorb_UpdateInput() {
    auto& state = State();
    if (!state.videoStarted) return;
    SDL_Event event;
    ScreenPlacement placement = Placement();
    while (SDL_PollEvent(&event)) {
        switch (event.type) {
            case SDL_QUIT: Push({.type = kGorbCloseRequest}); break;
            case SDL_WINDOWEVENT:
                if (state.presenter && WindowNeedsWholePicture(event.window.event)) state.presenter->Invalidate();
                placement = Placement();
                break;
            case SDL_KEYDOWN: PushKey(kGorbKeyDown, event.key); break;
            case SDL_KEYUP: PushKey(kGorbKeyUp, event.key); break;
            case SDL_TEXTINPUT: TakeText(event.text.text); break;
            case SDL_MOUSEMOTION:
                MovePointer(placement, event.motion.x, event.motion.y);
                Push({.type = kGorbMouseMove});
                break;
            case SDL_MOUSEWHEEL: {
                int steps = event.wheel.y;
                if (event.wheel.direction == SDL_MOUSEWHEEL_FLIPPED) steps = -steps;
                if (steps != 0 && state.pointerOnScreen) Push({.type = steps > 0 ? kGorbWheelUp : kGorbWheelDown, .delta = steps});
                break;
            }
            case SDL_MOUSEBUTTONDOWN:
            case SDL_MOUSEBUTTONUP:
                PushButton(placement, event.button, event.type == SDL_MOUSEBUTTONDOWN);
                break;
            default: break;
        }
    }
}

bool Gorb_GetEvent(Gorb_Event& event) {
    auto& state = State();
    if (state.events.empty()) return false;
    event = state.events.front();
    state.events.pop_front();
    state.awaitingText = SIZE_MAX;
    state.takenModifiers = event.modifiers;
    return true;
}

uint32_t Gorb_GetKeyModifiers() { return State().takenModifiers; }

uint32_t Gorb_GetMouseState(int& x, int& y) {
    x = State().mouseX;
    y = State().mouseY;
    return State().buttons;
}

// ---- Frames ----

void Gorb_NextFrame() {
    auto& state = State();
    if (state.presenter && state.screen) {
        ++state.stats.frames;
        if (const int rows = state.presenter->Present(*state.screen->Native())) {
            ++state.stats.presented;
            state.stats.rows += rows;
        }
    }
    PaceFrame();
}

Gorb_PresentStats Gorb_GetPresentStats() { return State().stats; }

Gorb_Surface* Gorb_GetScreen() { return State().screen.get(); }

// ---- Surfaces, textures, fonts ----

std::unique_ptr<Gorb_Surface> Gorb_CreateSurface(int width, int height) {
    SDL_Surface* surface = SDL_CreateRGBSurfaceWithFormat(0, width, height, 16, SDL_PIXELFORMAT_RGB565);
    if (!surface) throw InternalException(std::string("Gorb_CreateSurface(): ") + SDL_GetError());
    return std::make_unique<Gorb_Surface>(surface);
}

std::unique_ptr<Gorb_Surface> Gorb_CreateSurface(const std::filesystem::path& picture) {
    SDL_Surface* surface = IMG_Load(picture.c_str());
    if (!surface) throw FileIOException("Couldn't load the picture " + picture.string() + ": " + IMG_GetError());
    return std::make_unique<Gorb_Surface>(surface);
}

std::unique_ptr<Gorb_Texture> Gorb_CreateTexture(const Gorb_Surface& source) {
    SDL_Surface* copy = SDL_ConvertSurfaceFormat(source.Native(), SDL_PIXELFORMAT_RGB565, 0);
    if (!copy) throw InternalException(std::string("Gorb_CreateTexture(): ") + SDL_GetError());
    SDL_SetSurfaceRLE(copy, 1);
    return std::make_unique<Gorb_Texture>(std::make_unique<Gorb_Surface>(copy));
}

std::unique_ptr<Gorb_Font> Gorb_CreateFont(const std::filesystem::path& file, int size, int embolden, bool mono) {
    if (!TTF_WasInit() && TTF_Init() != 0) throw LibraryLoadException("Gorb_CreateFont(): no font library");
    TTF_Font* font = TTF_OpenFont(file.c_str(), size);
    if (!font) throw FileIOException("Couldn't open the font " + file.string() + ": " + TTF_GetError());
    if (embolden > 0) TTF_SetFontStyle(font, TTF_STYLE_BOLD);
    if (mono) TTF_SetFontHinting(font, TTF_HINTING_MONO);
    return std::make_unique<Gorb_Font>(font, mono);
}

bool Gorb_SaveScreenshot(const std::filesystem::path& path) {
    const Gorb_Surface* screen = Gorb_GetScreen();
    return screen && screen->SavePng(path);
}

}  // namespace sondrel
