#pragma once
// Reads a skin file into a Skin: the header with the picture, then item,
// colour, font, icon, theme inclusion and configuration entries, then the
// closing tag.
//
//   <skin name="Calm" author="Someone" picture="calm.png">
//   <item name="GT_BUTTON" rect="0,0,32,16" brd="3,3,3,3" />
//   <hitem name="GT_HSLIDER_GRIP" rect="32,0,12,8" brd="2,2" anim="4,100" />
//   <scol name="GT_TEXTLINE_CUR" rect="48,0,2,2" />
//   <font name="default" filename="DejaVuSans.ttf" size="12" />
//   <icon name="play" rect="0,32,48,16" ctype="multi" />
//   <include_themes name="calm.theme" />
//   <cfg name="list_line" height="16" text_x="3">
//   </skin>
//
// Attributes stand in a fixed order; optional ones may be left out.

#include <filesystem>
#include <memory>
#include <string>

#include "platform/gorb.h"
#include "ui/skin/skin.h"

namespace sondrel {

struct SkinFile {
    Skin skin;
    std::unique_ptr<Gorb_Surface> picture;  // converted, magenta transparent
};

// Reads directory/fileName. The picture lies in directory, theme files in
// directory/themes. Throws ParseException on syntax errors and
// FileIOException when a file can't be read, each naming the file and the
// line where reading stopped (see skin_files.h).
SkinFile ReadSkinFile(const std::filesystem::path& directory, const std::string& fileName);

}  // namespace sondrel
