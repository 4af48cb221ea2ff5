#include "app/app_platform.h"

#include "platform/midi_input.h"
#include "platform/sdl_sound_buffer.h"

namespace sondrel {

namespace {

class PortMidiDevice : public MidiDevice {
public:
    bool Open(unsigned deviceId, Callback callback) override { return port_.Open(deviceId, std::move(callback)); }
    void Close() override { port_.Close(); }

private:
    MidiInputPort port_;
};

}  // namespace

bool SdlAppPlatform::OpenDisplay(bool fullscreen, int scale) {
    if (!Gorb_Init()) return false;
    if (scale == 0) scale = Gorb_LargestWindowScale(kScreenWidth, kScreenHeight);
    return Gorb_SetVideoMode(kScreenWidth, kScreenHeight, fullscreen, scale);
}

bool SdlAppPlatform::SetFullscreen(bool fullscreen) {
    return Gorb_SetVideoMode(kScreenWidth, kScreenHeight, fullscreen, Gorb_GetWindowScale());
}

int SdlAppPlatform::WindowScale() { return Gorb_GetWindowScale(); }

bool SdlAppPlatform::SetWindowScale(int scale) { return Gorb_SetWindowScale(scale); }
void SdlAppPlatform::SetWindowTitle(const std::string& title) { Gorb_SetWindowTitle(title); }
void SdlAppPlatform::CloseDisplay() { Gorb_Quit(); }
void SdlAppPlatform::UpdateInput() { Gorb_UpdateInput(); }
bool SdlAppPlatform::GetEvent(Gorb_Event& event) { return Gorb_GetEvent(event); }
uint32_t SdlAppPlatform::KeyModifiers() { return Gorb_GetKeyModifiers(); }
uint32_t SdlAppPlatform::MouseState(int& x, int& y) { return Gorb_GetMouseState(x, y); }
Gorb_Surface* SdlAppPlatform::Screen() { return Gorb_GetScreen(); }
void SdlAppPlatform::NextFrame() { Gorb_NextFrame(); }
bool SdlAppPlatform::SaveScreenshot(const std::filesystem::path& path) { return Gorb_SaveScreenshot(path); }
std::unique_ptr<SoundBuffer> SdlAppPlatform::CreateSoundBuffer() { return std::make_unique<SdlSoundBuffer>(); }
std::unique_ptr<MidiDevice> SdlAppPlatform::CreateMidiDevice() { return std::make_unique<PortMidiDevice>(); }
void SdlAppPlatform::ShowMessage(const std::string& text) { ShowMessageBox(text); }
UtcTime SdlAppPlatform::CurrentTime() { return CurrentUtcTime(); }
std::string SdlAppPlatform::ClipboardText() { return GetClipboardText(); }
void SdlAppPlatform::SetClipboardText(const std::string& text) { sondrel::SetClipboardText(text); }

}  // namespace sondrel
