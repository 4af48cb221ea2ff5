// Feeds arbitrary bytes to the preferences reader. Besides crashes, it checks
// that whatever loads is written in a form that loads back to the same values:
// read values never hold a double quote or a line end, so writing, reading
// and writing again must give the same text.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "app/preferences.h"
#include "model/exception.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    sondrel::Preferences prefs;
    sondrel::Config config = sondrel::MakePreferencesConfig(prefs);
    try {
        config.LoadText(std::string_view(reinterpret_cast<const char*>(data), size));
    } catch (const sondrel::Exception&) {
        if (config.loaded) std::abort();
        return 0;
    }
    if (!config.loaded) std::abort();
    const std::string written = config.Text();
    try {
        config.LoadText(written);
    } catch (const sondrel::Exception&) {
        std::abort();  // our own output did not read back
    }
    if (config.Text() != written) std::abort();
    return 0;
}
