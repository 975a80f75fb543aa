#pragma once

#include "reference/scene/Image.h"

#include <osg/Texture2D>

#include <memory>
#include <unordered_map>

namespace halvern::engine {

/// Whether there is a picture with all of its pixels.
bool isUsable(const std::shared_ptr<const scene::Image>& picture);

/// The textures of the pictures in use, one for each.
class PictureTextures
{
public:
    osg::Texture2D* get(const std::shared_ptr<const scene::Image>& picture);

    /// Drops what nobody else holds.
    void sweep();

private:
    struct Entry
    {
        std::shared_ptr<const scene::Image> picture; // keeps the address from being another's
        osg::ref_ptr<osg::Texture2D> texture;
    };
    std::unordered_map<const scene::Image*, Entry> textures;
};

} // namespace halvern::engine
