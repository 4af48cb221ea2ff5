#pragma once
// Holds the current skin with what it draws with: the picture as a texture
// and its fonts opened. A new skin replaces the current one only when it
// loaded completely; after a failed load the old one stays.

#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "platform/gorb.h"
#include "ui/skin/skin.h"
#include "ui/skin/skin_names.h"

namespace sondrel {

// The "skins" directory among the program's runtime files.
std::filesystem::path DefaultSkinDirectory();

class SkinLibrary {
public:
    explicit SkinLibrary(std::filesystem::path directory = DefaultSkinDirectory(),
                         SkinRequirements required = RequiredSkinKeys());

    // Reads the skin file in the skin directory, checks that every required
    // key is defined, opens its fonts (from the "fonts" directory) and makes
    // the picture a texture. Throws ParseException or FileIOException, whose
    // message names the file and the line that failed, and then keeps the
    // skin it had.
    void LoadSkin(const std::string& fileName);

    bool HasSkin() const { return current_ != nullptr; }
    // These throw InternalException before the first successful load.
    const Skin& Current() const;
    const Gorb_Texture& Picture() const;
    // Throws ParseException "Font name not found" for a name the skin lacks.
    const Gorb_Font& Font(std::string_view name) const;

private:
    struct Loaded {
        Skin skin;
        std::unique_ptr<Gorb_Texture> picture;
        std::map<std::string, std::unique_ptr<Gorb_Font>, std::less<>> fonts;
    };

    const Loaded& Get() const;

    // Paths are resolved against the skin directory rather than by changing
    // the working directory: the same lookup, without touching process state.
    std::filesystem::path directory_;
    SkinRequirements required_;
    std::unique_ptr<Loaded> current_;
};

}  // namespace sondrel
