#pragma once

#include "engine/Export.h"
#include "reference/scene/Image.h"

#include <boost/shared_ptr.hpp>

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace halvern::scene {

class SceneManager;

/// A model file that cannot be shown. what() names the file and the reason.
class HALVERN_SCENE_API ImportError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// The import was cancelled by its progress function.
class HALVERN_SCENE_API ImportCancelled : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// What importScene asks its caller. Both may be empty.
struct ImportOptions
{
    /// Called while importScene blocks, on a thread of its own, with the share that is done, 0 to 1; false
    /// cancels.
    std::function<bool(float)> progress;

    /// Decodes an encoded picture (PNG, JPEG, ...); `hint` is its file extension, lower case, or empty.
    /// Returns an image of width 0 when it cannot. Called on the same thread as `progress`. Without a decoder
    /// materials have no maps.
    std::function<Image(const std::vector<uint8_t>& encoded, const std::string& hint)> decodeImage;
};

/// Counts of what the file holds, without anything that was added to show it.
struct ImportCounts
{
    unsigned nodes = 0;          ///< the root counted
    unsigned meshes = 0;         ///< of the file; one on two nodes counts once
    unsigned materials = 0;      ///< different ones that something is drawn with
    unsigned cameras = 0;        ///< of the file
    unsigned lights = 0;         ///< of the file
    unsigned animations = 0;     ///< of the file, those that can only be played too
    unsigned long triangles = 0; ///< as drawn: a mesh on two nodes counts twice
    unsigned long vertices = 0;  ///< as drawn, like triangles
};

/// A model that was read.
struct ImportedScene
{
    boost::shared_ptr<SceneManager> sceneManager; ///< complete, not started, without an event manager
    ImportCounts counts;                          ///< what the file holds
    std::vector<std::string> warnings; ///< what could be shown only in part, such as a missing texture
};

/// Reads a model file of any format that Assimp knows into a scene of its own. Any thread; it blocks, so that
/// a program whose window is up does not call it on the GUI thread. A scene without a camera gets one that
/// frames the model; without a light, a head light and a key light. Throws ImportError, ImportCancelled.
HALVERN_SCENE_API ImportedScene importScene(const std::string& fileName, const ImportOptions& options);

/// The file extensions that importScene knows, lower case, without the dot, sorted.
HALVERN_SCENE_API std::vector<std::string> importExtensions();

} // namespace halvern::scene
