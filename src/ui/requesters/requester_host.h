#pragma once
// What a requester needs from the program around it while it runs its own
// frame loop: the platform's input polled before each toolkit update, the
// screen drawn and the frame presented, and the main loop's handling of a
// request to close the main window.

namespace sondrel {

class RequesterHost {
public:
    virtual ~RequesterHost() = default;
    // Polls the platform's input; called before every toolkit update.
    virtual void PollInput() = 0;
    // Draws the main screen with the windows over it and presents the frame.
    virtual void DrawFrame() = 0;
    // The user asked to close the main window while a requester was open.
    // The host may ask its own question; true when the program is to quit,
    // which ends every open requester as cancelled.
    virtual bool HandleCloseRequest() = 0;
};

}  // namespace sondrel
