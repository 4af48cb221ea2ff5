#include "ui/requesters/file_requester.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <system_error>

#include "ui/entry_kinds.h"
#include "ui/requesters/message_text.h"
#include "ui/requesters/requesters.h"
#include "ui/toolkit.h"
#include "ui/widgets/list_box.h"
#include "ui/widgets/push_button.h"
#include "ui/widgets/text_line.h"

namespace sondrel {
namespace {

namespace fs = std::filesystem;

constexpr int kMargin = 8;
constexpr int kGap = 6;
constexpr int kRowHeight = 22;
constexpr int kSizeColumnWidth = 130;
constexpr int kFolderLabelWidth = 52;

ListLine ToListLine(const DirectoryLine& line) {
    switch (line.type) {
        case DirectoryLineType::Directory: return {line.name, std::string("<DIR>")};
        case DirectoryLineType::Drive: return {line.name, std::string("<DRIVE>")};
        case DirectoryLineType::File: break;
    }
    return {line.name, std::to_string(line.size)};
}

}  // namespace

bool EndsWithIgnoringCase(const std::string& name, const std::string& extension) {
    if (extension.size() > name.size()) return false;
    return std::equal(extension.begin(), extension.end(), name.end() - static_cast<long>(extension.size()),
                      [](char a, char b) {
                          return std::tolower(static_cast<unsigned char>(a)) ==
                                 std::tolower(static_cast<unsigned char>(b));
                      });
}

std::string Requesters::RequestFile(const std::vector<std::string>& patterns, const std::string& title,
                                    bool saveMode, const std::string& defaultExtension) {
    FileRequester requester(*this, patterns, saveMode, saveMode ? defaultExtension : std::string());
    return requester.Run(title);
}

std::string FileRequester::Run(const std::string& title) {
    Build(title);
    if (window_ == nullptr) return {};
    Relist();
    requesters_.RunUntilAnswered(window_, [this](const QueueEntry& entry) { return Handle(entry); });
    return chosen_;
}

void FileRequester::Build(const std::string& title) {
    Toolkit& toolkit = requesters_.Kit();
    const int width = requesters_.ScreenWidth() / 2;
    const int height = requesters_.ScreenHeight() * 2 / 3;
    const Gorb_Rect rect{(requesters_.ScreenWidth() - width) / 2, (requesters_.ScreenHeight() - height) / 2, width,
                         height};
    window_ = toolkit.OpenWindow(kFileRequesterWindowId, rect, kWindowNotDraggable, title);
    if (window_ == nullptr) return;

    const int inner = width - 2 * kMargin;
    const int buttonY = height - kMargin - kRowHeight;
    const int nameY = buttonY - kGap - kRowHeight;
    const int folderY = kTitleBarHeight + kMargin;
    const int folderHeight = ListBox::kDefaultLineHeight + 2;
    window_->Emplace<MessageText>(kFolderLabelId, Gorb_Rect{kMargin, folderY, kFolderLabelWidth, folderHeight},
                                  std::vector<std::string>{"Folder:"}, TextAlign::Left);
    folder_ = &window_->Emplace<MessageText>(
        kFolderId, Gorb_Rect{kMargin + kFolderLabelWidth, folderY, inner - kFolderLabelWidth, folderHeight},
        std::vector<std::string>{}, TextAlign::Left, TextFit::EllipsisFront);
    const int listY = folderY + folderHeight + kGap / 2;
    list_ = &window_->Emplace<ListBox>(kListId, Gorb_Rect{kMargin, listY, inner, nameY - kGap - listY});
    const int nameColumn = inner - 2 * ListBox::kBorder - kSizeColumnWidth;
    list_->SetColumns({{nameColumn, "%s", "Filename"}, {kSizeColumnWidth, "%20s", "Size"}});
    name_ = &window_->Emplace<TextLine>(kNameId, Gorb_Rect{kMargin, nameY, inner, kRowHeight}, 4095);

    struct ButtonPlace {
        uint16_t id;
        const char* label;
    };
    const ButtonPlace buttons[] = {{kParentId, "Parent"},
                                  {kRootId, "Root"},
                                  {kReloadId, "Reload"},
                                  {kAcceptId, saveMode_ ? "Save" : "Load"},
                                  {kCancelId, "Cancel"}};
    const int count = static_cast<int>(std::size(buttons));
    const int buttonWidth = (inner - (count - 1) * kGap) / count;
    for (int i = 0; i < count; ++i)
        window_->Emplace<PushButton>(buttons[i].id,
                                     Gorb_Rect{kMargin + i * (buttonWidth + kGap), buttonY, buttonWidth, kRowHeight},
                                     buttons[i].label);
    toolkit.Focus(window_, name_);
}

bool FileRequester::Handle(const QueueEntry& entry) {
    if (IsEscapeEntry(entry)) return true;
    if (IsReturnEntry(entry)) {
        // The name entry takes its own Return; here the list or a button has the focus.
        const Widget* focused = window_->Focus();
        if (focused != nullptr && focused->Kind() == WidgetKind::Button)
            return Handle({kEntryValue, focused->Id(), 0});
        return Accept();
    }
    switch (entry.kind) {
        case kEntryListLine:
        case kEntryListActivate:
            if (entry.a != kListId) return false;
            choice_ = entry.b < lines_.size() ? static_cast<int>(entry.b) : -1;
            if (choice_ >= 0 && lines_[choice_].type == DirectoryLineType::File) name_->SetText(lines_[choice_].name);
            return entry.kind == kEntryListActivate && Accept();
        case kEntryTextReturn: return entry.a == kNameId && Accept();
        case kEntryTextChanged:
            if (entry.a == kNameId) choice_ = -1;
            return false;
        case kEntryWindowClose: return entry.a == kFileRequesterWindowId;
        case kEntryValue: break;
        default: return false;
    }
    switch (entry.a) {
        case kParentId: ChangeDirectory(".."); return false;
        case kRootId: ChangeDirectory("/"); return false;
        case kAcceptId: return Accept();
        case kCancelId: return true;
        case kReloadId: Relist(); return false;
        default: return false;
    }
}

bool FileRequester::Accept() {
    if (choice_ >= 0) {
        const DirectoryLine line = lines_[choice_];
        if (line.type == DirectoryLineType::File) return Choose(line.name);
        ChangeDirectory(line.name);
        return false;
    }
    std::string name = name_->Text();
    if (name.empty()) return false;
    std::error_code error;
    if (fs::is_directory(name, error)) {
        ChangeDirectory(name);
        name_->SetText({});
        return false;
    }
    if (!EndsWithIgnoringCase(name, defaultExtension_)) name += defaultExtension_;
    return Choose(name);
}

namespace {

// What a name that is no regular file names, for the message that refuses it.
const char* WhatItIs(fs::file_type type) {
    switch (type) {
        case fs::file_type::fifo: return "a named pipe.";
        case fs::file_type::block:
        case fs::file_type::character: return "a device.";
        case fs::file_type::socket: return "a socket.";
        default: return "not a regular file.";
    }
}

}  // namespace

bool FileRequester::Choose(const std::string& name) {
    std::error_code error;
    const fs::path path = fs::absolute(name, error);
    if (error) return false;
    if (saveMode_) {
        if (fs::exists(path, error) &&
            !requesters_.AskQuestion("The file " + name + " already exists. Shall it be overwritten?", "Yes", "No"))
            return false;
    } else if (!fs::exists(path, error)) {
        requesters_.ShowMessage(std::string(kFileNotFound) + "\n" + name);
        return false;
    } else if (!fs::is_regular_file(path, error)) {
        requesters_.ShowMessage(std::string(kNotAFile) + "\n" + name + " is " + WhatItIs(fs::status(path, error).type()));
        return false;
    }
    chosen_ = path.lexically_normal().string();
    return true;
}

void FileRequester::ChangeDirectory(const std::string& path) {
    std::error_code error;
    fs::current_path(path, error);
    Relist();
}

void FileRequester::Relist() {
    lines_ = ListDirectory(".", patterns_);
    std::vector<ListLine> rows;
    rows.reserve(lines_.size());
    for (const DirectoryLine& line : lines_) rows.push_back(ToListLine(line));
    list_->SetLines(std::move(rows));
    choice_ = -1;
    std::error_code error;
    const fs::path folder = fs::current_path(error);
    folder_->SetLines({error ? std::string() : folder.string()});
}

}  // namespace sondrel
