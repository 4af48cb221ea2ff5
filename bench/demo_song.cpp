#include "demo_song.h"

#include "files/module_file.h"

namespace sondrel::bench {

std::filesystem::path DemoPath() {
    std::error_code ec;
    const auto exeDir = std::filesystem::read_symlink("/proc/self/exe", ec).parent_path();
    for (const auto& path : {exeDir / "demo.sdrltk", std::filesystem::path("data/demo.sdrltk")}) {
        if (std::filesystem::exists(path, ec)) return path;
    }
    return {};
}

std::unique_ptr<Module> LoadDemo() {
    const auto path = DemoPath();
    if (path.empty()) return nullptr;
    ImportOptionsProvider defaults;
    return LoadNewModule(path.string(), defaults);
}

}  // namespace sondrel::bench
