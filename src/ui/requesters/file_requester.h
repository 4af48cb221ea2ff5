#pragma once
// The file requester's window and what its entries do: a list of the
// current directory (the process's, so the next requester opens where this
// one ended) under a line naming it, a file name entry and the buttons Parent, Root, Load or Save,
// Cancel and Reload. One lives for one request.

#include <cstdint>
#include <string>
#include <vector>

#include "ui/command_queue.h"
#include "ui/requesters/directory_listing.h"

namespace sondrel {

class ListBox;
class MessageText;
class Requesters;
class TextLine;
class Window;

// Loading a name that is not there: this line, then the name.
inline constexpr char kFileNotFound[] = "File not found.";
inline constexpr char kNotAFile[] = "This is not a file.";

class FileRequester {
public:
    // Widget ids.
    static constexpr uint16_t kParentId = 0;
    static constexpr uint16_t kRootId = 1;
    static constexpr uint16_t kListId = 3;
    static constexpr uint16_t kNameId = 4;
    static constexpr uint16_t kAcceptId = 5;
    static constexpr uint16_t kCancelId = 6;
    static constexpr uint16_t kReloadId = 7;
    static constexpr uint16_t kFolderLabelId = 8;
    static constexpr uint16_t kFolderId = 9;  // the folder listed

    FileRequester(Requesters& requesters, std::vector<std::string> patterns, bool saveMode,
                  std::string defaultExtension)
        : requesters_(requesters),
          patterns_(std::move(patterns)),
          saveMode_(saveMode),
          defaultExtension_(std::move(defaultExtension)) {}

    // Opens the window and runs it; the chosen path or empty.
    std::string Run(const std::string& title);

private:
    void Build(const std::string& title);
    // True when the requester is answered (chosen or cancelled).
    bool Handle(const QueueEntry& entry);
    // A name typed or chosen: a directory is entered, a file chosen. A name
    // to load that is no file is refused with a message, and the requester
    // stays open.
    bool Accept();
    bool Choose(const std::string& name);
    void ChangeDirectory(const std::string& path);
    void Relist();

    Requesters& requesters_;
    std::vector<std::string> patterns_;
    bool saveMode_;
    std::string defaultExtension_;
    Window* window_ = nullptr;
    ListBox* list_ = nullptr;
    MessageText* folder_ = nullptr;
    TextLine* name_ = nullptr;
    std::vector<DirectoryLine> lines_;
    int choice_ = -1;  // the list line that counts as the choice
    std::string chosen_;
};

// name ends with extension, letters compared without regard to case.
bool EndsWithIgnoringCase(const std::string& name, const std::string& extension);

}  // namespace sondrel
