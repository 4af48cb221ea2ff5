#pragma once
// Theme files: one or more themes, each a name, an author and a colour table.
//
//   theme {
//   name = "Night"
//   author = "Someone"
//   colors {
//   ; a comment line
//   background = $FF181C24
//   text = 0xFFD0D8E0
//   text_disabled = darken(text, 64)
//   hover = lighten(background, 16)
//   selection = alphaset(focus_ring, 128)
//   title_text = copy(text)
//   }
//   }
//
// Colour names are keywords, hexadecimal numbers are on and ";" starts a
// comment. Colours a theme leaves out are 0.

#include <filesystem>
#include <string_view>
#include <vector>

#include "ui/skin/skin.h"

namespace sondrel {

// Throws ParseException on any syntax error.
std::vector<Theme> ReadThemes(std::string_view text);
// The same for a file; its failures name the file and the line (see
// skin_files.h), and one that can't be read throws FileIOException.
std::vector<Theme> ReadThemeFile(const std::filesystem::path& path);

}  // namespace sondrel
