#include "model/module.h"

#include <atomic>
#include <cstdint>
#include <new>

#include "model/notes.h"

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define SONDREL_PLAIN_MODULE_MEMORY 1  // the sanitizers watch only the ordinary heap
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define SONDREL_PLAIN_MODULE_MEMORY 1
#endif
#endif
#if !defined(__linux__)
#define SONDREL_PLAIN_MODULE_MEMORY 1
#endif

#ifndef SONDREL_PLAIN_MODULE_MEMORY
#include <sys/mman.h>
#endif

namespace sondrel {

#ifdef SONDREL_PLAIN_MODULE_MEMORY

void* Module::operator new(std::size_t size) { return ::operator new(size); }
void Module::operator delete(void* block, std::size_t) noexcept { ::operator delete(block); }

#else

namespace {

constexpr std::uintptr_t kLargePage = std::uintptr_t{2} << 20;

std::size_t BlockBytes(std::size_t size) { return (size + kLargePage - 1) & ~(kLargePage - 1); }

// Fresh memory costs a page fault for each small page first written; a
// large page is one fault. The hint is only a hint: where large pages are
// off, the memory works the same.
void* MapBlock(std::size_t bytes) {
    const std::size_t mapped = bytes + kLargePage;  // room to start on a large-page boundary
    void* raw = mmap(nullptr, mapped, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (raw == MAP_FAILED) throw std::bad_alloc();
    const auto start = reinterpret_cast<std::uintptr_t>(raw);
    const std::uintptr_t aligned = (start + kLargePage - 1) & ~(kLargePage - 1);
    if (aligned > start) munmap(raw, aligned - start);
    const std::uintptr_t end = start + mapped;
    if (end > aligned + bytes) munmap(reinterpret_cast<void*>(aligned + bytes), end - aligned - bytes);
    madvise(reinterpret_cast<void*>(aligned), bytes, MADV_HUGEPAGE);
    return reinterpret_cast<void*>(aligned);
}

// The last module's memory freed, for the next module.
std::atomic<void*> spareBlock{nullptr};

}  // namespace

void* Module::operator new(std::size_t size) {
    if (size == sizeof(Module)) {
        if (void* spare = spareBlock.exchange(nullptr)) return spare;
    }
    return MapBlock(BlockBytes(size));
}

void Module::operator delete(void* block, std::size_t size) noexcept {
    if (!block) return;
    if (size == sizeof(Module)) block = spareBlock.exchange(block);
    if (block) munmap(block, BlockBytes(size));
}

#endif

void PatternLine::Clear() {
    note.fill(kNoteEmpty);
    channelCommand.fill(kChannelCommandNone);
    command = kCommandNone;
}

int Pattern::TactOf(int line) const {
    for (int t = 0; t < 2; ++t) {
        if (!tactEnabled[t] || line < tactStart[t] || tactInterval[t] == 0) continue;
        if ((line - tactStart[t]) % tactInterval[t] == 0) return t;
    }
    return -1;
}

void Module::NewModule(ChipSettings settings) {
    fileName.clear();
    directory.clear();
    frequencyDivider = settings.frequencyDivider;
    chipType = settings.chipType;
    chipVariant = settings.variant;
    for (auto& pattern : patterns) pattern.used = 0;
    patternList.fill(0);
    patternListLength = 1;
    repeatPosition = 0;
    initialSpeed = kNewModuleSpeed;
    CreatePattern(0);
    title.clear();
    author.clear();
    notes.clear();
    for (int i = 0; i < kInstruments; ++i) ResetInstrument(i);
}

void Module::CreatePattern(int number) {
    Pattern& pattern = patterns[static_cast<uint8_t>(number)];
    pattern.used = 1;
    pattern.length = kNewPatternLength;
    pattern.name.clear();
    pattern.tactEnabled = {0, 0};
    pattern.tactStart = {0, 0};
    pattern.tactInterval = {16, 8};
    for (auto& line : pattern.lines) line.Clear();
}

std::optional<uint8_t> Module::FindFreePattern() const {
    for (int i = 0; i < kPatterns; ++i) {
        if (!patterns[i].used) return static_cast<uint8_t>(i);
    }
    return std::nullopt;
}

int Module::CountInList(int patternNumber) const {
    int count = 0;
    for (int i = 0; i < patternListLength && i < kMaxPatternList; ++i) {
        if (patternList[i] == patternNumber) ++count;
    }
    return count;
}

void Module::ResetInstrument(int number) {
    instruments[static_cast<size_t>(number) & (kInstruments - 1)].Reset();
}

const char* ChannelCommandText(uint8_t command) {
    static constexpr const char* kTexts[] = {"--", "PV", "VO", "AR", "SU", "SD", "GL", "VI", "VS", "NC", "ND", "RT"};
    return command <= kLastChannelCommand ? kTexts[command] : "??";
}

bool ChannelParamIsHex(uint8_t command) {
    return command == kEffectArpeggio || command == kEffectVibrato || command == kEffectVolumeSlide;
}

bool ChannelCommandActsOnNoise(uint8_t command) {
    switch (command) {
    case kChannelCommandPV:
    case kEffectArpeggio:
    case kEffectSlideUp:
    case kEffectSlideDown:
    case kEffectGlide:
    case kEffectVibrato:
        return false;
    default:
        return true;
    }
}

}  // namespace sondrel
