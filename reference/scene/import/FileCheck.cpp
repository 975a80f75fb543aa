#define BOOST_BIND_GLOBAL_PLACEHOLDERS // boost/property_tree has not moved on
#include "reference/scene/import/FileCheck.h"

#include "reference/scene/Importer.h"

#include <boost/property_tree/json_parser.hpp>

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace halvern::scene {

namespace fs = std::filesystem;

/// The words of an OFF file, which Assimp looks for under any extension; comments are left out.
static std::string nextWord(std::istream& stream)
{
    std::string word;
    while (stream >> word && word.front() == '#')
        std::getline(stream, word);
    return word;
}

/// Assimp believes the counts in the header of an OFF file: a short file can announce more vertices than
/// memory holds.
static void checkCounts(const std::string& fileName, std::istream& stream, uintmax_t size)
{
    const std::string header = nextWord(stream);
    const bool isOff = header.size() >= 3 && header.compare(header.size() - 3, 3, "OFF") == 0;
    if (!isOff)
        return;
    if (header.find('n') != std::string::npos)
        nextWord(stream); // the number of dimensions
    for (const char* what : {"vertices", "faces"}) {
        const std::string word = nextWord(stream);
        double count = 0;
        if (std::istringstream(word) >> count && count > static_cast<double>(size))
            throw ImportError(fileName + ": the header announces " + word + " " + what + ", the file has " +
                              std::to_string(size) + " bytes");
    }
}

/// The JSON of a glTF file, text or binary; empty for any other file.
/// Source: Khronos, glTF 2.0, section 4.4 "GLB File Format".
static std::string readGltfJson(const fs::path& fileName, std::istream& stream, uintmax_t size)
{
    std::string extension = fileName.extension().string();
    for (char& letter : extension)
        letter = static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
    uintmax_t length = extension == ".gltf" ? size : 0;
    stream.clear();
    stream.seekg(0);
    if (extension == ".glb") {
        char header[20] = {}; // magic, version, length; length and kind of the first chunk
        stream.read(header, sizeof header);
        std::uint32_t chunk = 0;
        std::memcpy(&chunk, header + 12, sizeof chunk);
        if (stream && std::memcmp(header + 16, "JSON", 4) == 0)
            length = std::min<uintmax_t>(chunk, size);
    }
    std::string json(length, '\0');
    stream.read(&json[0], static_cast<std::streamsize>(length));
    json.resize(static_cast<std::size_t>(std::max<std::streamsize>(stream.gcount(), 0)));
    return json;
}

/// Assimp reads the matrices of every skin, though they may be left out.
static void checkSkins(const std::string& fileName, const std::string& json)
{
    if (json.find("\"skins\"") == std::string::npos)
        return;
    boost::property_tree::ptree file;
    try {
        std::istringstream stream(json);
        boost::property_tree::read_json(stream, file);
    } catch (const boost::property_tree::json_parser_error&) {
        return; // Assimp tells what is wrong
    }
    const boost::property_tree::ptree none;
    int index = 0;
    for (const auto& skin : file.get_child("skins", none)) {
        if (skin.second.count("inverseBindMatrices") == 0)
            throw ImportError(fileName + ": skin " + std::to_string(index) +
                              " has no inverseBindMatrices, which are expected");
        ++index;
    }
}

void checkFile(const std::string& fileName)
{
    std::error_code ignored;
    const fs::file_status status = fs::status(fileName, ignored);
    if (!fs::exists(status))
        throw ImportError(fileName + ": no such file");
    if (fs::is_directory(status))
        throw ImportError(fileName + ": is a folder");
    // Before it is opened: a pipe would wait for its writer.
    if (!fs::is_regular_file(status))
        throw ImportError(fileName + ": is a device or a pipe, not a file");
    std::ifstream stream(fileName, std::ios::binary);
    if (!stream)
        throw ImportError(fileName + ": cannot be read");
    const uintmax_t size = fs::file_size(fileName, ignored);
    if (size == 0)
        throw ImportError(fileName + ": the file is empty");
    checkCounts(fileName, stream, size);
    checkSkins(fileName, readGltfJson(fileName, stream, size));
}

} // namespace halvern::scene
