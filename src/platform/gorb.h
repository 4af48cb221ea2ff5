#pragma once
// The graphics and input layer: one 800 x 600 window with a 16-bit RGB565
// screen surface that the program draws into and presents once a frame,
// keyboard and mouse input as a queue of events with PC set-1 scan codes,
// RGB565 surfaces and textures, TrueType fonts and PNG pictures.
//
// SDL stays behind this header: callers see the Gorb_ types only.

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

struct SDL_Surface;
struct _TTF_Font;

namespace sondrel {

constexpr int kScreenWidth = 800;
constexpr int kScreenHeight = 600;

struct Gorb_Rect {
    int x = 0;
    int y = 0;
    int w = 0;
    int h = 0;
};

// Input event types, as the widget toolkit reads them.
enum Gorb_EventType : int {
    kGorbKeyDown = 1,
    kGorbKeyUp = 2,
    kGorbMouseMove = 3,
    kGorbWheelUp = 4,    // turned away from the user: delta > 0
    kGorbWheelDown = 5,  // turned towards the user: delta < 0
    kGorbButton1Down = 6,
    kGorbButton1Up = 7,
    kGorbButton2Down = 8,
    kGorbButton2Up = 9,
    kGorbButton3Down = 10,
    kGorbButton3Up = 11,
    kGorbCloseRequest = 12,
};

struct Gorb_Event {
    int type = 0;
    uint16_t key = 0;        // PC set-1 scan code, 0x80 added for the extended keys
    uint16_t character = 0;  // Latin-1 character the key typed, 0 for none
    bool repeat = false;     // a key held down repeating
    int x = 0;               // pointer position with every event
    int y = 0;
    int delta = 0;           // wheel steps
    uint32_t modifiers = 0;  // Gorb_Modifier bits held when it happened
};

// Bits of Gorb_GetKeyModifiers.
enum Gorb_Modifier : uint32_t {
    kGorbLeftShift = 1u << 0,
    kGorbRightShift = 1u << 1,
    kGorbLeftCtrl = 1u << 2,
    kGorbRightCtrl = 1u << 3,
    kGorbLeftAlt = 1u << 4,
    kGorbRightAlt = 1u << 5,
    kGorbShift = kGorbLeftShift | kGorbRightShift,
    kGorbCtrl = kGorbLeftCtrl | kGorbRightCtrl,
    kGorbAlt = kGorbLeftAlt | kGorbRightAlt,
};

// Bits of Gorb_GetMouseState: first (left), second (right), third (middle) button.
enum Gorb_MouseButton : uint32_t { kGorbMouseFirst = 1, kGorbMouseSecond = 2, kGorbMouseThird = 4 };

// Surface formats and conversion modes for Gorb_Surface::Convert.
constexpr int kGorbFormatRgb565 = 5;
constexpr int kGorbConvertOpaque = 0;
constexpr int kGorbConvertColourKey = 2;  // pixels of the given colour are transparent

// Direct access to the pixels of a 16-bit surface; pitch is in bytes.
struct Gorb_Pixels {
    uint16_t* pixels = nullptr;
    int pitch = 0;
    uint16_t* Row(int y) const { return reinterpret_cast<uint16_t*>(reinterpret_cast<uint8_t*>(pixels) + y * pitch); }
};

class Gorb_Surface {
public:
    explicit Gorb_Surface(SDL_Surface* surface);  // takes ownership
    ~Gorb_Surface();
    Gorb_Surface(const Gorb_Surface&) = delete;
    Gorb_Surface& operator=(const Gorb_Surface&) = delete;

    int Width() const;
    int Height() const;

    // The pixel value of an ARGB colour in this surface's format.
    uint32_t FindPixel(uint32_t argb) const;
    void FillRect(const Gorb_Rect& rect, uint32_t pixel);
    void Fill(uint32_t pixel);
    // Brings the surface to 16-bit RGB565; with kGorbConvertColourKey the
    // pixels of transparentArgb are left out when the surface is blitted.
    void Convert(int format = kGorbFormatRgb565, int mode = kGorbConvertOpaque, uint32_t transparentArgb = 0);
    // Pixels of a 16-bit surface (pixels is null for any other format).
    Gorb_Pixels Lock();
    void Unlock();

    // Copies part of source to (x, y), leaving out its transparent pixels.
    void Blit(const Gorb_Surface& source, const Gorb_Rect& part, int x, int y);
    // The same, scaled to fill target.
    void BlitScaled(const Gorb_Surface& source, const Gorb_Rect& part, const Gorb_Rect& target);
    // Drawing is limited to the clip rectangle.
    void SetClip(const Gorb_Rect& rect);
    void ResetClip();
    Gorb_Rect Clip() const;

    bool SavePng(const std::filesystem::path& path) const;
    SDL_Surface* Native() const { return surface_; }

private:
    SDL_Surface* surface_;
};

// A picture prepared for repeated drawing onto the screen (or another surface).
class Gorb_Texture {
public:
    explicit Gorb_Texture(std::unique_ptr<Gorb_Surface> surface);
    int Width() const { return surface_->Width(); }
    int Height() const { return surface_->Height(); }
    // A row of the texture's RGB565 pixels, for painting it without a blit.
    const uint16_t* Row(int y) const { return pixels_.data() + static_cast<std::size_t>(y) * Width(); }
    // The pixel value left out when drawing, or -1 when every pixel is drawn.
    int TransparentPixel() const { return transparentPixel_; }
    // Draws part of the texture at (x, y) on target; the screen when target is null.
    void BlitPart(const Gorb_Rect& part, int x, int y, Gorb_Surface* target = nullptr) const;
    void BlitPartScaled(const Gorb_Rect& part, const Gorb_Rect& where, Gorb_Surface* target = nullptr) const;

private:
    std::unique_ptr<Gorb_Surface> surface_;
    std::vector<uint16_t> pixels_;  // a plain copy: the surface itself is run-length encoded
    int transparentPixel_ = -1;
};

class Gorb_Font {
public:
    explicit Gorb_Font(_TTF_Font* font, bool mono) : font_(font), mono_(mono) {}
    ~Gorb_Font();
    Gorb_Font(const Gorb_Font&) = delete;
    Gorb_Font& operator=(const Gorb_Font&) = delete;

    // Draws Latin-1 text with its top left corner at (x, y).
    void Print(Gorb_Surface& target, int x, int y, const std::string& text, uint32_t argb) const;
    int TextWidth(const std::string& text) const;
    // The font's line height. Printed pictures may run taller: some glyphs
    // (underscores, accented capitals) reach past it.
    int Height() const;
    // The rows of a printed picture that any Latin-1 glyph may cover, the top
    // one and one past the bottom one, counted from the picture's top.
    int InkTop() const { return Ink().top; }
    int InkBottom() const { return Ink().bottom; }

private:
    struct InkRows {
        int top = 0;
        int bottom = 0;
    };
    const InkRows& Ink() const;

    // The same texts come back every frame: their pictures and widths are
    // kept, up to kCachedTexts of each, and all forgotten when that is reached.
    static constexpr std::size_t kCachedTexts = 512;

    _TTF_Font* font_;
    bool mono_;
    mutable std::unordered_map<std::string, std::unique_ptr<Gorb_Surface>> pictures_;  // text and colour
    mutable std::unordered_map<std::string, int> widths_;
    mutable std::optional<InkRows> ink_;
};

// ---- Display and window ----
// Starts the video, font and picture libraries; false when video can't start.
bool Gorb_Init();
// Opens the window with a width x height screen surface, each of its pixels
// shown as a square of scale x scale, or the whole display, which shows the
// screen at the largest scale that fits, centred between black borders. On
// an open window of the same screen size it switches, keeping the screen.
bool Gorb_SetVideoMode(int width, int height, bool fullscreen, int scale = 1);
// The largest scale (1 to 4) at which a window of a width x height screen
// fits the desktop's usable area (without the panels); 1 before Gorb_Init.
int Gorb_LargestWindowScale(int width, int height);
// The scale the window was last opened with.
int Gorb_GetWindowScale();
// Resizes the open window to another scale, on the whole display or not as it is.
bool Gorb_SetWindowScale(int scale);
void Gorb_SetWindowTitle(const std::string& title);
// The native window (an SDL_Window), null before Gorb_SetVideoMode.
void* Gorb_GetWindowHandle();
void Gorb_Quit();

// ---- Input ----
// Collects the pending input into the event queue.
void Gorb_UpdateInput();
// The oldest queued event; false when there is none.
bool Gorb_GetEvent(Gorb_Event& event);
// The modifier keys held when the event last taken happened: a Ctrl tapped
// and let go within one frame still counts for the key pressed under it.
uint32_t Gorb_GetKeyModifiers();
// The buttons held (Gorb_MouseButton bits) and the pointer position, in
// screen pixels. Events carry it as well; a press on the borders around
// the screen is not passed on, nor is the wheel turned over them.
uint32_t Gorb_GetMouseState(int& x, int& y);

// ---- Frames ----
// Presents what changed of the screen surface since the last frame, then
// sleeps to the next frame's turn, 60 frames a second.
void Gorb_NextFrame();
Gorb_Surface* Gorb_GetScreen();

// What presenting has cost so far; Gorb_Quit starts the count again.
struct Gorb_PresentStats {
    long frames = 0;     // frames with a window to present in
    long presented = 0;  // frames that sent pixels to the display
    long rows = 0;       // screen rows sent, over all frames
};
Gorb_PresentStats Gorb_GetPresentStats();

// ---- Surfaces, textures, fonts ----
// A blank RGB565 surface.
std::unique_ptr<Gorb_Surface> Gorb_CreateSurface(int width, int height);
// A picture file (PNG) in its own format; Convert it before drawing with it.
// Throws FileIOException when it can't be read.
std::unique_ptr<Gorb_Surface> Gorb_CreateSurface(const std::filesystem::path& picture);
// A converted copy of source for drawing; source's colour key carries over.
std::unique_ptr<Gorb_Texture> Gorb_CreateTexture(const Gorb_Surface& source);
// Throws FileIOException when the font can't be opened.
std::unique_ptr<Gorb_Font> Gorb_CreateFont(const std::filesystem::path& file, int size, int embolden = 0,
                                           bool mono = false);

// The screen as it was last presented, as a PNG file.
bool Gorb_SaveScreenshot(const std::filesystem::path& path);

}  // namespace sondrel
