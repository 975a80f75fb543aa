#pragma once

#include <algorithm>
#include <string>
#include <unordered_map>
#include <unordered_set>

namespace halvern::scene {

/// Makes IDs of the names in a file: without commas, never empty, each one once.
class UniqueNames
{
public:
    /// `fallback` stands for an empty name.
    std::string make(const std::string& name, const std::string& fallback)
    {
        std::string id = name.empty() ? fallback : name;
        std::replace(id.begin(), id.end(), ',', '_');
        const std::string base = id;
        while (!used.insert(id).second)
            id = base + '-' + std::to_string(++copies.try_emplace(base, 1).first->second);
        return id;
    }

private:
    std::unordered_set<std::string> used;
    std::unordered_map<std::string, unsigned> copies;
};

/// The IDs that an import has issued, by what they name.
struct ImportIDs
{
    UniqueNames nodes;
    UniqueNames materials;
    UniqueNames cameras;
    UniqueNames cameraInstances;
    UniqueNames lights;
    UniqueNames animations;
};

} // namespace halvern::scene
