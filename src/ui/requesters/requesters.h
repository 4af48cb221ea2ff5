#pragma once
// The modal requesters: a message with one button, a question with two and
// the file requester. Each opens its window over the others (which become
// inert), runs frames of its own until it is answered and returns the answer.
//
// Keys: Escape cancels any requester, Return presses the focused button (in
// the file requester it accepts from the list or the name entry), Space
// presses the focused button as everywhere.

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "platform/gorb.h"
#include "ui/command_queue.h"

namespace sondrel {

class RequesterHost;
class Toolkit;
class Window;

constexpr uint16_t kFileRequesterWindowId = 10000;
constexpr uint16_t kMessageWindowId = 10001;  // the message and the question share it

class Requesters {
public:
    Requesters(Toolkit& toolkit, RequesterHost& host, int screenWidth = kScreenWidth,
               int screenHeight = kScreenHeight)
        : toolkit_(toolkit), host_(host), screenWidth_(screenWidth), screenHeight_(screenHeight) {}

    // Returns when "OK" is pressed (or the message is cancelled).
    void ShowMessage(const std::string& text);
    // True for the first button, false for the second, a cancel, or when a
    // message or question is already open (it is raised instead).
    bool AskQuestion(const std::string& text, const std::string& yesLabel, const std::string& noLabel);
    // The chosen file's absolute path, empty when cancelled. patterns are
    // shell patterns matched without regard to case; in save mode a typed
    // name gets defaultExtension unless it already ends with it.
    std::string RequestFile(const std::vector<std::string>& patterns, const std::string& title, bool saveMode,
                            const std::string& defaultExtension);

    Toolkit& Kit() { return toolkit_; }
    int ScreenWidth() const { return screenWidth_; }
    int ScreenHeight() const { return screenHeight_; }

    // Runs frames until handle answers true for an entry (true) or the
    // program is to quit (false), then closes window. handle sees every
    // entry of the frame but the close requests, which go to the host.
    bool RunUntilAnswered(Window* window, const std::function<bool(const QueueEntry&)>& handle);

private:
    // The message or question window with its text and buttons; null when
    // one is open already.
    Window* OpenMessageWindow(const std::string& title, const std::string& text,
                              const std::vector<std::string>& labels);

    Toolkit& toolkit_;
    RequesterHost& host_;
    int screenWidth_;
    int screenHeight_;
    int depth_ = 0;         // requesters running inside each other
    bool quitting_ = false;  // the host decided to quit; every open requester ends
};

// The keys the requesters answer to, from a key entry no widget took.
bool IsEscapeEntry(const QueueEntry& entry);
bool IsReturnEntry(const QueueEntry& entry);

}  // namespace sondrel
