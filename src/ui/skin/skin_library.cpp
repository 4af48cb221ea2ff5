#include "ui/skin/skin_library.h"

#include "model/exception.h"
#include "platform/program_dirs.h"
#include "ui/skin/skin_files.h"
#include "ui/skin/skin_reader.h"

namespace sondrel {

std::filesystem::path DefaultSkinDirectory() { return DataDirectoryFor(ProgramDirectory()) / "skins"; }

SkinLibrary::SkinLibrary(std::filesystem::path directory, SkinRequirements required)
    : directory_(std::move(directory)), required_(std::move(required)) {}

namespace {

// Every key the toolkit looks up; each lookup throws its own message.
void CheckRequiredKeys(const Skin& skin, const SkinRequirements& required) {
    for (const auto& key : required.items) skin.Item(key);
    for (const auto& key : required.colourAreas) skin.ColourArea(key);
    for (const auto& name : required.fonts) skin.Font(name);
    for (const auto& name : required.icons) skin.Icon(name);
    for (const auto& name : required.configs) skin.Config(name);
}

}  // namespace

void SkinLibrary::LoadSkin(const std::string& fileName) {
    SkinFile file = ReadSkinFile(directory_, fileName);
    // A missing key is missing from the whole file; a font that can't be
    // opened is named where its entry stands.
    try {
        CheckRequiredKeys(file.skin, required_);
    } catch (const Exception&) {
        RethrowInFile(directory_ / fileName);
    }

    auto loaded = std::make_unique<Loaded>();
    for (const auto& [name, font] : file.skin.fonts) {
        try {
            loaded->fonts[name] =
                Gorb_CreateFont(directory_ / "fonts" / font.fileName, font.size, font.embolden, font.mono);
        } catch (const Exception&) {
            RethrowInFile(directory_ / fileName, font.line);
        }
    }
    loaded->picture = Gorb_CreateTexture(*file.picture);
    loaded->skin = std::move(file.skin);
    current_ = std::move(loaded);
}

const SkinLibrary::Loaded& SkinLibrary::Get() const {
    if (!current_) throw InternalException("SkinLibrary: no skin loaded");
    return *current_;
}

const Skin& SkinLibrary::Current() const { return Get().skin; }

const Gorb_Texture& SkinLibrary::Picture() const { return *Get().picture; }

const Gorb_Font& SkinLibrary::Font(std::string_view name) const {
    const Loaded& loaded = Get();
    loaded.skin.Font(name);  // throws the lookup failure for an unknown name
    return *loaded.fonts.find(name)->second;
}

}  // namespace sondrel
