#include "platform/gorb.h"

#include <SDL.h>
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <tuple>
#include <utility>

#include "model/exception.h"
#include "platform/gorb_keys.h"
#include "test_support.h"

namespace sondrel {
namespace {

constexpr char kSystemFont[] = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf";

TEST(GorbKeys, SetOneScanCodesAndTheCharactersKeysType) {
    // Ordinary keys, extended keys with 0x80, and keys the PC keyboard lacks.
    const std::pair<int, uint16_t> keys[] = {{SDL_SCANCODE_Z, 44},   {SDL_SCANCODE_F12, 0x58},
                                             {SDL_SCANCODE_UP, 0xC8}, {SDL_SCANCODE_KP_ENTER, 0x9C},
                                             {SDL_SCANCODE_AC_BACK, 0}, {-1, 0}, {SDL_NUM_SCANCODES, 0}};
    for (const auto& [sdl, code] : keys) EXPECT_EQ(ScanCodeFromSdl(sdl), code) << sdl;

    EXPECT_EQ(ControlCharacter(0x0E), 8);
    EXPECT_EQ(ControlCharacter(0x9C), 13);
    EXPECT_EQ(ControlCharacter(1), 27);
    EXPECT_EQ(ControlCharacter(44), 0);
    EXPECT_EQ(Latin1FromUtf8("z"), 'z');
    EXPECT_EQ(Latin1FromUtf8("\xC3\xA9"), 0xE9);   // é
    EXPECT_EQ(Latin1FromUtf8("\xE2\x82\xAC"), 0);  // € is beyond Latin-1
    EXPECT_EQ(Latin1FromUtf8("ab"), 0);
    EXPECT_EQ(Latin1FromUtf8(nullptr), 0);
}

TEST(GorbSurface, FillFindPixelLockAndClip) {
    auto surface = Gorb_CreateSurface(16, 8);
    EXPECT_EQ(surface->FindPixel(0xFFFF0000), 0xF800u);
    EXPECT_EQ(surface->FindPixel(0xFF202040), 0x2108u);

    surface->Fill(0);
    surface->FillRect({2, 1, 3, 2}, 0x1234);
    surface->SetClip({0, 0, 4, 8});
    surface->FillRect({3, 5, 10, 1}, 0xFFFF);  // clipped at x = 4
    surface->ResetClip();
    Gorb_Pixels pixels = surface->Lock();
    ASSERT_NE(pixels.pixels, nullptr);
    // {x, y, pixel} just inside and just outside each filled edge
    const int expected[][3] = {{2, 0, 0}, {1, 1, 0}, {2, 1, 0x1234}, {4, 2, 0x1234},
                               {5, 2, 0}, {3, 5, 0xFFFF}, {4, 5, 0}};
    for (const auto& [x, y, pixel] : expected) EXPECT_EQ(pixels.Row(y)[x], pixel) << x << "," << y;
    surface->Unlock();
}

TEST(GorbSurface, PicturesConvertWithTheirTransparentColourAndBlitAround) {
    // A 2 x 1 picture, magenta and red, through a PNG file.
    test::ScratchDir dir;
    {
        SDL_Surface* rgba = SDL_CreateRGBSurfaceWithFormat(0, 2, 1, 32, SDL_PIXELFORMAT_ARGB8888);
        auto* pixels = static_cast<uint32_t*>(rgba->pixels);
        pixels[0] = 0xFFFF00FF;
        pixels[1] = 0xFFFF0000;
        Gorb_Surface picture(rgba);
        ASSERT_TRUE(picture.SavePng(dir / "skin.png"));
    }
    auto picture = Gorb_CreateSurface(dir / "skin.png");
    picture->Convert(kGorbFormatRgb565, kGorbConvertColourKey, 0xFFFF00FF);
    EXPECT_EQ(picture->Lock().Row(0)[1], 0xF800);
    picture->Unlock();

    auto target = Gorb_CreateSurface(4, 2);
    target->Fill(0x001F);
    target->Blit(*picture, {0, 0, 2, 1}, 1, 1);
    auto texture = Gorb_CreateTexture(*picture);
    texture->BlitPart({0, 0, 2, 1}, 2, 0, target.get());
    Gorb_Pixels pixels = target->Lock();
    EXPECT_EQ(pixels.Row(1)[1], 0x001F);  // magenta left the background showing
    EXPECT_EQ(pixels.Row(1)[2], 0xF800);
    EXPECT_EQ(pixels.Row(0)[2], 0x001F);
    EXPECT_EQ(pixels.Row(0)[3], 0xF800);
    target->Unlock();

    EXPECT_THROW(Gorb_CreateSurface(dir / "missing.png"), FileIOException);
}

TEST(GorbFont, PrintsAndMeasuresText) {
    if (!std::filesystem::exists(kSystemFont)) GTEST_SKIP() << "no DejaVu font on this system";
    auto font = Gorb_CreateFont(kSystemFont, 20);
    EXPECT_GT(font->Height(), 10);
    EXPECT_GT(font->TextWidth("Sondrel"), font->TextWidth("Son"));
    EXPECT_EQ(font->TextWidth(""), 0);

    auto surface = Gorb_CreateSurface(100, 30);
    surface->Fill(0);
    font->Print(*surface, 0, 0, "W", 0xFFFFFFFF);
    Gorb_Pixels pixels = surface->Lock();
    int lit = 0;
    for (int y = 0; y < 30; ++y)
        for (int x = 0; x < 100; ++x) lit += pixels.Row(y)[x] != 0;
    surface->Unlock();
    EXPECT_GT(lit, 20);

    EXPECT_THROW(Gorb_CreateFont("/no/such/font.ttf", 12), FileIOException);
}

// The window, its frames and input, on the dummy video driver (the offscreen
// one's GL libraries keep allocations the leak checker reports).
TEST(GorbDisplay, WindowFramesAndInputEvents) {
    setenv("SDL_VIDEODRIVER", "dummy", 1);
    ASSERT_TRUE(Gorb_Init());
    ASSERT_TRUE(Gorb_SetVideoMode(kScreenWidth, kScreenHeight, false));
    Gorb_SetWindowTitle("Sondrel");
    EXPECT_STREQ(SDL_GetWindowTitle(static_cast<SDL_Window*>(Gorb_GetWindowHandle())), "Sondrel");
    Gorb_Surface* screen = Gorb_GetScreen();
    ASSERT_NE(screen, nullptr);
    EXPECT_EQ(screen->Width(), 800);
    EXPECT_EQ(screen->Height(), 600);
    Gorb_UpdateInput();  // the window's own events on opening

    // Frames are paced: ten of them take about a sixth of a second. Only the
    // first sends pixels, all of them; then the picture stays the same.
    const uint64_t start = SDL_GetTicks64();
    for (int frame = 0; frame < 10; ++frame) Gorb_NextFrame();
    EXPECT_GE(SDL_GetTicks64() - start, 140u);
    Gorb_PresentStats stats = Gorb_GetPresentStats();
    EXPECT_EQ(std::tuple(stats.frames, stats.presented, stats.rows), std::tuple(10, 1, 600));
    // A change sends the rows it touched.
    screen->FillRect({10, 300, 5, 2}, 0xFFFF);
    Gorb_NextFrame();
    stats = Gorb_GetPresentStats();
    EXPECT_EQ(std::tuple(stats.presented, stats.rows), std::tuple(2, 602));

    // A typed key: its scan code with the character of the text that followed.
    auto push = [](Uint32 type, auto fill) {
        SDL_Event event{};
        event.type = type;
        fill(event);
        SDL_PushEvent(&event);
    };
    push(SDL_KEYDOWN, [](SDL_Event& e) { e.key.keysym.scancode = SDL_SCANCODE_Z; });
    push(SDL_TEXTINPUT, [](SDL_Event& e) { std::strcpy(e.text.text, "z"); });
    push(SDL_KEYDOWN, [](SDL_Event& e) {
        e.key.keysym.scancode = SDL_SCANCODE_TAB;
        e.key.repeat = 1;
    });
    push(SDL_MOUSEBUTTONDOWN, [](SDL_Event& e) {
        e.button.button = SDL_BUTTON_RIGHT;
        e.button.x = 30;
        e.button.y = 40;
    });
    push(SDL_MOUSEWHEEL, [](SDL_Event& e) { e.wheel.y = -2; });
    push(SDL_WINDOWEVENT, [](SDL_Event& e) { e.window.event = SDL_WINDOWEVENT_EXPOSED; });
    push(SDL_QUIT, [](SDL_Event&) {});
    Gorb_UpdateInput();

    Gorb_Event got;
    ASSERT_TRUE(Gorb_GetEvent(got));
    EXPECT_EQ(std::tuple(got.type, got.key, got.character), std::tuple(kGorbKeyDown, 44, 'z'));
    ASSERT_TRUE(Gorb_GetEvent(got));
    EXPECT_EQ(std::tuple(got.key, got.character, got.repeat), std::tuple(15, 9, true));
    ASSERT_TRUE(Gorb_GetEvent(got));
    EXPECT_EQ(std::tuple(got.type, got.x, got.y), std::tuple(kGorbButton2Down, 30, 40));
    int x = 0, y = 0;
    EXPECT_EQ(Gorb_GetMouseState(x, y), kGorbMouseSecond);
    EXPECT_EQ(x, 30);
    ASSERT_TRUE(Gorb_GetEvent(got));
    EXPECT_EQ(std::tuple(got.type, got.delta), std::tuple(kGorbWheelDown, -2));
    ASSERT_TRUE(Gorb_GetEvent(got));
    EXPECT_EQ(got.type, kGorbCloseRequest);
    EXPECT_FALSE(Gorb_GetEvent(got));
    // The exposed window gets the whole unchanged picture again.
    Gorb_NextFrame();
    EXPECT_EQ(Gorb_GetPresentStats().rows, 1202);

    // A Ctrl let go in the same frame still holds for the key pressed under it.
    push(SDL_KEYDOWN, [](SDL_Event& e) {
        e.key.keysym.scancode = SDL_SCANCODE_S;
        e.key.keysym.mod = KMOD_LCTRL;
    });
    push(SDL_KEYUP, [](SDL_Event& e) { e.key.keysym.scancode = SDL_SCANCODE_LCTRL; });
    Gorb_UpdateInput();
    ASSERT_TRUE(Gorb_GetEvent(got));
    EXPECT_EQ(Gorb_GetKeyModifiers(), uint32_t{kGorbLeftCtrl});
    ASSERT_TRUE(Gorb_GetEvent(got));
    EXPECT_EQ(Gorb_GetKeyModifiers(), 0u);

    // The screenshot is the last frame presented.
    screen->Fill(screen->FindPixel(0xFF00FF00));
    Gorb_NextFrame();
    test::ScratchDir dir;
    ASSERT_TRUE(Gorb_SaveScreenshot(dir / "shot.png"));
    auto shot = Gorb_CreateSurface(dir / "shot.png");
    EXPECT_EQ(shot->Width(), 800);
    shot->Convert();
    EXPECT_EQ(shot->Lock().Row(599)[799], 0x07E0);
    shot->Unlock();

    // The window at three times the size: each screen pixel a 3 x 3 square,
    // and the pointer divided back. The dummy display (1024 x 768) holds
    // nothing bigger than the plain window.
    EXPECT_EQ(Gorb_LargestWindowScale(kScreenWidth, kScreenHeight), 1);
    auto* window = static_cast<SDL_Window*>(Gorb_GetWindowHandle());
    ASSERT_TRUE(Gorb_SetWindowScale(3));
    EXPECT_EQ(Gorb_GetWindowScale(), 3);
    screen->FillRect({799, 599, 1, 1}, screen->FindPixel(0xFFFF0000));
    Gorb_UpdateInput();
    Gorb_NextFrame();
    SDL_Surface* shown = SDL_GetWindowSurface(window);
    ASSERT_NE(shown, nullptr);
    ASSERT_EQ(std::pair(shown->w, shown->h), std::pair(2400, 1800));
    ASSERT_EQ(shown->format->BytesPerPixel, 4);
    // Which of red and green is lit, to the converter's rounding.
    auto colour = [&](int x, int y) {
        Uint8 r, g, b;
        SDL_GetRGB(static_cast<Uint32*>(shown->pixels)[y * shown->pitch / 4 + x], shown->format, &r, &g, &b);
        return std::tuple(r > 250, g > 250, b);
    };
    const auto red = std::tuple(true, false, 0);
    const auto green = std::tuple(false, true, 0);
    const auto black = std::tuple(false, false, 0);
    for (const auto& [x, y] : {std::pair(2397, 1797), std::pair(2399, 1799)}) EXPECT_EQ(colour(x, y), red);
    EXPECT_EQ(colour(2396, 1799), green);
    EXPECT_EQ(colour(2399, 1796), green);
    push(SDL_MOUSEBUTTONDOWN, [](SDL_Event& e) {
        e.button.button = SDL_BUTTON_LEFT;
        e.button.x = 3 * 30 + 2;
        e.button.y = 3 * 40;
    });
    Gorb_UpdateInput();
    ASSERT_TRUE(Gorb_GetEvent(got));
    EXPECT_EQ(std::tuple(got.type, got.x, got.y), std::tuple(kGorbButton1Down, 30, 40));

    // The whole display shows the largest scale that fits, 1 here, centred
    // between black borders; a press on them goes nowhere, and its release
    // neither. The screenshot is still the screen's own 800 x 600.
    ASSERT_TRUE(Gorb_SetVideoMode(kScreenWidth, kScreenHeight, true, 3));
    Gorb_UpdateInput();
    Gorb_NextFrame();
    shown = SDL_GetWindowSurface(window);
    ASSERT_NE(shown, nullptr);
    ASSERT_EQ(std::pair(shown->w, shown->h), std::pair(1024, 768));  // the dummy driver's display
    EXPECT_EQ(colour(112 + 799, 84 + 599), red);
    EXPECT_EQ(colour(112, 84), green);
    for (const auto& [x, y] : {std::pair(111, 84), std::pair(112, 83), std::pair(912, 683), std::pair(1023, 767)})
        EXPECT_EQ(colour(x, y), black) << x << "," << y;
    for (const bool down : {true, false}) {
        push(down ? SDL_MOUSEBUTTONDOWN : SDL_MOUSEBUTTONUP, [](SDL_Event& e) {
            e.button.button = SDL_BUTTON_MIDDLE;
            e.button.x = 100;
            e.button.y = 300;
        });
    }
    push(SDL_MOUSEBUTTONDOWN, [](SDL_Event& e) {
        e.button.button = SDL_BUTTON_MIDDLE;
        e.button.x = 112 + 5;
        e.button.y = 84;
    });
    Gorb_UpdateInput();
    ASSERT_TRUE(Gorb_GetEvent(got));
    EXPECT_EQ(std::tuple(got.type, got.x, got.y), std::tuple(kGorbButton3Down, 5, 0));
    EXPECT_FALSE(Gorb_GetEvent(got));
    ASSERT_TRUE(Gorb_SaveScreenshot(dir / "whole.png"));
    EXPECT_EQ(Gorb_CreateSurface(dir / "whole.png")->Width(), 800);

    Gorb_Quit();
    EXPECT_EQ(Gorb_GetScreen(), nullptr);
    EXPECT_FALSE(Gorb_GetEvent(got));
}

}  // namespace
}  // namespace sondrel
