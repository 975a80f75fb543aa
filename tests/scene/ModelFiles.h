#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <unistd.h>

namespace halvern::test {

/// A folder of its own for a test, gone at its end.
class TemporaryFolder
{
public:
    TemporaryFolder()
    {
        std::string pattern = (std::filesystem::temp_directory_path() / "halvern-XXXXXX").string();
        path = mkdtemp(pattern.data());
    }
    ~TemporaryFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    /// Writes a file, below new folders where the name has any, and returns its path.
    std::string write(const std::string& name, const std::string& bytes) const
    {
        const auto file = path / name;
        std::filesystem::create_directories(file.parent_path());
        std::ofstream(file, std::ios::binary) << bytes;
        return file.string();
    }

    std::filesystem::path path;
};

inline std::string base64(const std::string& bytes)
{
    static constexpr char Digits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    uint32_t bits = 0;
    int count = 0;
    for (const unsigned char byte : bytes) {
        bits = bits << 8 | byte;
        for (count += 8; count >= 6; count -= 6)
            text += Digits[bits >> (count - 6) & 63];
    }
    if (count > 0)
        text += Digits[bits << (6 - count) & 63];
    text.resize((text.size() + 3) / 4 * 4, '=');
    return text;
}

inline std::string bytesOf(const std::vector<float>& values)
{
    return {reinterpret_cast<const char*>(values.data()), values.size() * sizeof(float)};
}

/// A glTF file made piece by piece: each accessor is a buffer of its own.
class Gltf
{
public:
    /// The index of an accessor of floats; type "VEC3", "SCALAR", ...
    int floats(const std::string& type, const std::vector<float>& values)
    {
        const size_t width = type == "SCALAR" ? 1 : type == "MAT4" ? 16 : size_t(type.back() - '0');
        return accessor(bytesOf(values), 5126, values.size() / width, type);
    }

    int indices(const std::vector<uint32_t>& values)
    {
        return accessor({reinterpret_cast<const char*>(values.data()), values.size() * 4}, 5125,
                        values.size(), "SCALAR");
    }

    /// The index of an accessor of vectors of four, as skins name their joints.
    int joints(const std::vector<uint16_t>& values)
    {
        return accessor({reinterpret_cast<const char*>(values.data()), values.size() * 2}, 5123,
                        values.size() / 4, "VEC4");
    }

    /// The index of a mesh of the triangle (0, 0, 0), (1, 0, 0), (0, 1, 0), its texture coordinates the same.
    int triangle(const std::string& material = "")
    {
        const int positions = floats("VEC3", {0, 0, 0, 1, 0, 0, 0, 1, 0});
        const int texCoords = floats("VEC2", {0, 0, 1, 0, 0, 1});
        return mesh("{\"attributes\":{\"POSITION\":" + std::to_string(positions) +
                    ",\"TEXCOORD_0\":" + std::to_string(texCoords) + "}" +
                    (material.empty() ? "" : ",\"material\":" + material) + "}");
    }

    int mesh(const std::string& primitives)
    {
        add(meshes, "{\"primitives\":[" + primitives + "]}");
        return meshCount++;
    }

    /// The whole text. `nodes` are those of the scene's list of nodes; the roots are their indices.
    std::string text(const std::string& nodes, const std::string& roots = "0",
                     const std::string& more = "") const
    {
        std::string json = R"({"asset":{"version":"2.0"},"scene":0,"scenes":[{"nodes":[)" + roots +
                           "]}],\"nodes\":[" + nodes + "]";
        for (const auto& [key, list] : {std::pair("buffers", buffers), std::pair("bufferViews", views),
                                        std::pair("accessors", accessors), std::pair("meshes", meshes)}) {
            if (!list.empty())
                json += ",\"" + std::string(key) + "\":[" + list + "]";
        }
        return json + (more.empty() ? "" : "," + more) + "}";
    }

private:
    static void add(std::string& list, const std::string& entry)
    {
        list += (list.empty() ? "" : ",") + entry;
    }

    int accessor(const std::string& bytes, int component, size_t count, const std::string& type)
    {
        const std::string index = std::to_string(accessorCount);
        const std::string size = std::to_string(bytes.size());
        add(buffers, "{\"byteLength\":" + size + ",\"uri\":\"data:application/octet-stream;base64," +
                         base64(bytes) + "\"}");
        add(views, "{\"buffer\":" + index + ",\"byteLength\":" + size + "}");
        add(accessors, "{\"bufferView\":" + index + ",\"componentType\":" + std::to_string(component) +
                           ",\"count\":" + std::to_string(count) + ",\"type\":\"" + type + "\"}");
        return accessorCount++;
    }

    std::string buffers, views, accessors, meshes;
    int accessorCount = 0;
    int meshCount = 0;
};

} // namespace halvern::test
