// sondrel: the tracker. Until its window is built, it plays a song through
// the engine into a WAV file: the file named on the command line, or the demo
// song beside the executable.

#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>

#include "files/module_file.h"
#include "files/song_render.h"
#include "model/exception.h"
#include "sound/song_time.h"

namespace {

std::filesystem::path ExecutableDirectory() {
    std::error_code ec;
    auto exe = std::filesystem::canonical("/proc/self/exe", ec);
    return ec ? std::filesystem::current_path() : exe.parent_path();
}

class DefaultImportOptions : public sondrel::ImportOptionsProvider {};

}  // namespace

int main(int argc, char** argv) {
    const std::string song = argc > 1 ? argv[1] : (ExecutableDirectory() / "demo.sdrltk").string();
    const std::string output = "sondrel-preview.wav";
    auto module = std::make_unique<sondrel::Module>();
    module->NewModule({});
    DefaultImportOptions options;
    try {
        if (!sondrel::LoadAnyFile(*module, song, options)) return 1;
    } catch (const sondrel::Exception& e) {
        std::fprintf(stderr, "sondrel: %s\n  %s: %s\n", sondrel::kCouldNotLoadModule, song.c_str(), e.what());
        return 1;
    }
    std::printf("Sondrel has no window yet: playing \"%s\" into %s ...\n", song.c_str(), output.c_str());
    try {
        auto result = sondrel::RenderSongToWav(*module, output, {});
        std::printf("Wrote %s (%s)\n", output.c_str(), sondrel::FormatSongTime(result.seconds).c_str());
    } catch (const sondrel::Exception& e) {
        std::fprintf(stderr, "sondrel: %s\n", e.what());
        return 1;
    }
    return 0;
}
