#pragma once
// What the application shell needs of the machine it runs on: the display,
// input, frames, the sound buffer, the MIDI device, message boxes and the
// time. SdlAppPlatform is the real one; tests bring their own.

#include <filesystem>
#include <memory>
#include <string>

#include "app/midi/midi_in.h"
#include "platform/gorb.h"
#include "platform/system.h"
#include "sound/sound_buffer.h"

namespace sondrel {

class AppPlatform {
public:
    virtual ~AppPlatform() = default;

    // Starts the graphics library and opens the 800 x 600 display, its
    // window at scale (1 to 4; 0 picks the largest that fits the desktop);
    // false when that can't be done.
    virtual bool OpenDisplay(bool fullscreen, int scale) = 0;
    virtual void SetWindowTitle(const std::string& title) = 0;
    // Switches the open display between full screen and a window.
    virtual bool SetFullscreen(bool /*fullscreen*/) { return false; }
    // The scale the window shows the screen at; 0 for a display that doesn't scale.
    virtual int WindowScale() { return 0; }
    // Resizes the open window to another scale.
    virtual bool SetWindowScale(int /*scale*/) { return false; }
    // Ends the graphics library, open display or not.
    virtual void CloseDisplay() = 0;

    virtual void UpdateInput() = 0;
    virtual bool GetEvent(Gorb_Event& event) = 0;
    virtual uint32_t KeyModifiers() = 0;
    // The held buttons (Gorb_MouseButton bits) and the pointer position.
    virtual uint32_t MouseState(int& x, int& y) = 0;
    // The surface the frame is drawn into; null without one.
    virtual Gorb_Surface* Screen() = 0;
    virtual void NextFrame() = 0;
    virtual bool SaveScreenshot(const std::filesystem::path& path) = 0;

    virtual std::unique_ptr<SoundBuffer> CreateSoundBuffer() = 0;
    virtual std::unique_ptr<MidiDevice> CreateMidiDevice() = 0;
    virtual void ShowMessage(const std::string& text) = 0;
    virtual UtcTime CurrentTime() = 0;
    // Plain text on the system clipboard.
    virtual std::string ClipboardText() = 0;
    virtual void SetClipboardText(const std::string& text) = 0;
};

class SdlAppPlatform : public AppPlatform {
public:
    bool OpenDisplay(bool fullscreen, int scale) override;
    void SetWindowTitle(const std::string& title) override;
    bool SetFullscreen(bool fullscreen) override;
    int WindowScale() override;
    bool SetWindowScale(int scale) override;
    void CloseDisplay() override;
    void UpdateInput() override;
    bool GetEvent(Gorb_Event& event) override;
    uint32_t KeyModifiers() override;
    uint32_t MouseState(int& x, int& y) override;
    Gorb_Surface* Screen() override;
    void NextFrame() override;
    bool SaveScreenshot(const std::filesystem::path& path) override;
    std::unique_ptr<SoundBuffer> CreateSoundBuffer() override;
    std::unique_ptr<MidiDevice> CreateMidiDevice() override;
    void ShowMessage(const std::string& text) override;
    UtcTime CurrentTime() override;
    std::string ClipboardText() override;
    void SetClipboardText(const std::string& text) override;
};

}  // namespace sondrel
