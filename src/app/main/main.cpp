// sondrel: the tracker.

#include "app/application.h"
#include "app/command_line.h"

int main(int argc, char** argv) {
    sondrel::SdlAppPlatform platform;
    sondrel::Application application(platform, sondrel::CurrentAppPaths(), sondrel::AppOptionsFromEnvironment());
    return application.Run(sondrel::JoinCommandLine(argc, argv));
}
