#include "platform/system.h"

#include <SDL.h>

#include <cstdio>
#include <cstring>
#include <ctime>

namespace sondrel {

namespace {

// Drivers that draw nowhere a person could see a box.
bool HeadlessVideo() {
    const char* driver = SDL_GetCurrentVideoDriver();
    if (!driver) driver = SDL_getenv("SDL_VIDEODRIVER");
    return driver && (std::strcmp(driver, "offscreen") == 0 || std::strcmp(driver, "dummy") == 0);
}

}  // namespace

std::string GetClipboardText() {
    if (!SDL_HasClipboardText()) return {};
    char* text = SDL_GetClipboardText();
    std::string result = text ? text : "";
    SDL_free(text);
    return result;
}

void SetClipboardText(const std::string& text) { SDL_SetClipboardText(text.c_str()); }

void ShowMessageBox(const std::string& text) {
    if (!HeadlessVideo() && SDL_ShowSimpleMessageBox(SDL_MESSAGEBOX_INFORMATION, "", text.c_str(), nullptr) == 0)
        return;
    std::fprintf(stderr, "%s\n", text.c_str());
}

UtcTime CurrentUtcTime() {
    const std::time_t now = std::time(nullptr);
    std::tm parts{};
    gmtime_r(&now, &parts);
    return {parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday, parts.tm_hour, parts.tm_min, parts.tm_sec};
}

}  // namespace sondrel
