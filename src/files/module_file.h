#pragma once
// The module file (".sdrltk"): the magic "SDRLTK-2" followed by the blocks
// HEAD, INFO, INST, PATS and PATT. Also the file-type detection that decides
// which loader or importer gets a file the user opens.

#include <cstdio>
#include <memory>
#include <string>

#include "files/import/importers.h"
#include "model/module.h"

namespace sondrel {

inline constexpr char kModuleMagic[] = "SDRLTK-2";
inline constexpr char kModuleExtension[] = ".sdrltk";

// What the load and save commands tell the user when an Exception reaches them.
inline constexpr char kCouldNotLoadModule[] = "Couldn't load module.";
inline constexpr char kCouldNotSaveModule[] = "Couldn't save module.";

enum class FileKind {
    Unknown,
    Mod,            // "M.K.", "M!K!" or "4CHN" at offset 1080
    Vgm,            // "Vgm " or a gzip stream
    LegacyModule,   // "SDRLTK  ": the old raw layout, not loadable
    CurrentModule,  // "SDRLTK-2"
    Midi,           // "MThd" 00 00 00 06
    Basic,          // none of the above, named *.BAS or *.BAM (upper case only)
};

// Classifies a file by its first bytes and, when they say nothing, by the
// extension of its name. Throws Exception for a file shorter than 4 bytes.
// The stream's position is left anywhere.
FileKind DetectFileKind(FILE* file, const std::string& path);
// Opens the file first; throws Exception when it can't be opened.
FileKind DetectFileKind(const std::string& path);

// Writes the whole module; on success the module records the path as its own.
// A module holding a text that would load back differently is refused with an
// Exception naming the field before the file is touched. Otherwise throws
// Exception (or a subclass) on failure; a partly written file stays on disk.
void SaveModule(Module& module, const std::string& path);

// Reads the five blocks from a stream positioned just after the magic. The
// module is reset and filled as the file is read, so on failure it is left
// half loaded: callers load into a fresh Module.
void LoadModuleFile(Module& module, FILE* file);

// Loads or imports the file as the given kind, whatever its content says; the
// detection step of LoadAnyFile is skipped. Unknown throws Exception.
bool LoadFileAs(Module& module, const std::string& path, FileKind kind, ImportOptionsProvider& options);

// Detects the file's kind and loads or imports it. Native files return true;
// imports return the importer's result (false when the user cancelled). An
// import's texts are made storable, and the options provider is told of
// every change. The
// module is changed only on success: after a native load it records the path,
// after an import it has no path, so the first save asks for one.
bool LoadAnyFile(Module& module, const std::string& path, ImportOptionsProvider& options);

// LoadAnyFile's work (LoadFileAs's when a kind other than Unknown is given)
// into a module of its own, which saves a copy when the caller has no module
// yet. Null when the user cancelled an import.
std::unique_ptr<Module> LoadNewModule(const std::string& path, ImportOptionsProvider& options,
                                      FileKind kind = FileKind::Unknown);

// The recorded directory and file name joined; empty when the module has no name.
std::string RecordedPath(const Module& module);

}  // namespace sondrel
