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
    auto module = std::make_unique<Module>();
    ImportOptionsProvider defaults;
    if (!LoadAnyFile(*module, path.string(), defaults)) return nullptr;
    return module;
}

}  // namespace sondrel::bench
