#pragma once

#include "engine/scene/Material.h"
#include "engine/scene/SceneManager.h"

#include <QString>

#include <boost/make_shared.hpp>

#include <algorithm>
#include <atomic>
#include <functional>
#include <mutex>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace halvern::test {

using MaterialList = std::vector<boost::shared_ptr<scene::Material>>;

inline MaterialList makeMaterials(const std::vector<std::string>& ids)
{
    MaterialList materials(ids.size());
    std::transform(ids.begin(), ids.end(), materials.begin(),
                   [](const std::string& id) { return boost::make_shared<scene::Material>(id, "effect"); });
    return materials;
}

/// "m0", "m1", ...
inline std::vector<std::string> makeIDs(int count)
{
    std::vector<std::string> ids(std::size_t(count), "m");
    for (std::size_t i = 0; i < ids.size(); ++i)
        ids[i] += std::to_string(i);
    return ids;
}

/// A scene whose list of materials can be replaced, and which counts how often it is asked for. Any thread.
class MaterialScene : public scene::SceneManager
{
public:
    explicit MaterialScene(const std::vector<std::string>& ids = {}) :
        SceneManager(nullptr), materials(makeMaterials(ids))
    {}

    MaterialList getMaterialList() override
    {
        ++fetches;
        if (onFetch)
            onFetch();
        const std::lock_guard<std::mutex> lock(mutex);
        return materials;
    }

    void setMaterials(MaterialList newMaterials)
    {
        const std::lock_guard<std::mutex> lock(mutex);
        materials.swap(newMaterials);
    }

    std::atomic<int> fetches{0};
    std::function<void()> onFetch; // runs inside each call

private:
    std::mutex mutex;
    MaterialList materials;
};

} // namespace halvern::test

/// Makes failures print texts.
inline void PrintTo(const QString& text, std::ostream* out)
{
    *out << '"' << text.toStdString() << '"';
}
