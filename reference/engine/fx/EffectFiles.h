#pragma once

#include "engine/Export.h"
#include "reference/scene/Image.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace halvern::engine::fx {

/// Folder of the effects that come with the library: share/halvern/effects beside the installed library, else
/// data/effects of the source tree.
HALVERN_ENGINE_API std::string getEffectFolder();

/// The file that a name means: the name as it stands, else a file of getEffectFolder(). The name itself if
/// there is none.
std::string findEffectFile(const std::string& fileName);

/// The text of a file. Throws EffectError for what cannot be read or is no text of a sensible size.
std::string readEffectFile(const std::string& fileName);

/// The picture in a file; a relative name is looked for as it stands, then beside the effect. Empty for what
/// cannot be read.
std::shared_ptr<const scene::Image> readPicture(const std::string& fileName, const std::string& effectFile);

struct EffectSyntax;

/// Messages about textures of the effect whose pictures cannot be read.
std::vector<std::string> findMissingPictures(const EffectSyntax& effect);

/// What tells one state of a file from another. Files that cannot be read are all alike.
struct FileStamp
{
    int64_t time = 0;
    uint64_t size = 0;

    bool operator==(const FileStamp& other) const { return time == other.time && size == other.size; }
    bool operator!=(const FileStamp& other) const { return !(*this == other); }
};
FileStamp getFileStamp(const std::string& fileName);

} // namespace halvern::engine::fx
