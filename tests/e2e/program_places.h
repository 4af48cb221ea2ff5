#pragma once
// The program as the end-to-end tests find it: its files to copy, and where
// its main screen controls and File menu entries are drawn.

#include <cstdint>
#include <filesystem>
#include <string>

#include "e2e/x_session.h"
#include "platform/gorb.h"

namespace sondrel::e2e {

// Copies the built program, its skins and its pattern font into app.
void CopyProgram(const std::filesystem::path& app);

// A main screen control's rectangle, in window coordinates.
Gorb_Rect MainScreenControl(uint16_t id);

// Opens the File menu with a click on its title and clicks its entry reading text.
bool ChooseFileMenu(XSession& x, unsigned long window, const std::string& text);

}  // namespace sondrel::e2e
