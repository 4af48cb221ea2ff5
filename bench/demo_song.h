#pragma once
// The demo song the benchmarks play and load.

#include <filesystem>
#include <memory>

#include "model/module.h"

namespace sondrel::bench {

// demo.sdrltk beside the executable, else data/demo.sdrltk from the source
// tree; empty when neither exists.
std::filesystem::path DemoPath();

// The demo song loaded, or null when it can't be found; throws when it does not load.
std::unique_ptr<Module> LoadDemo();

}  // namespace sondrel::bench
