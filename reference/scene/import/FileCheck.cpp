#define BOOST_BIND_GLOBAL_PLACEHOLDERS // boost/property_tree has not moved on
#include "reference/scene/import/FileCheck.h"

#include "reference/scene/Importer.h"

#include <boost/property_tree/json_parser.hpp>

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <utility>
#include <vector>

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

namespace {

/// The words of a text file of DirectX: braces, quoted texts with the first quote, and what stands between
/// separators. Empty at the end.
class XWords
{
public:
    explicit XWords(std::string newText) : text(std::move(newText)) {}

    std::string next()
    {
        at = text.find_first_not_of(" \t\r\n,;", at);
        while (at < text.size() && (text[at] == '#' || text.compare(at, 2, "//") == 0))
            at = text.find_first_not_of(" \t\r\n,;", text.find('\n', at));
        if (at >= text.size())
            return {};
        const size_t begin = at;
        if (text[at] == '"')
            at = text.find('"', at + 1);
        else
            at = isBrace(text[at]) ? at + 1 : text.find_first_of(" \t\r\n,;{}\"", at);
        const std::string word = text.substr(begin, at - begin);
        if (word == "{")
            ++depth;
        else if (word == "}" && depth > 0)
            --depth;
        if (at < text.size() && text[at] == '"' && word.front() == '"')
            ++at;
        return word;
    }

    /// The first word inside of the braces that come next, after a name or none.
    std::string nextInside()
    {
        const std::string first = next();
        return first == "{" || next() == "{" ? next() : std::string();
    }

    /// How many braces are open behind the last word.
    size_t getDepth() const { return depth; }

private:
    static bool isBrace(char letter) { return letter == '{' || letter == '}'; }

    const std::string text;
    size_t at = 0;
    size_t depth = 0;
};

} // namespace

/// Assimp follows the vertices that the bones of an X file name, wherever they lie.
static void checkBones(const std::string& fileName, std::istream& stream, uintmax_t size)
{
    constexpr size_t HeaderSize = 16; // "xof 0303txt 0032"
    std::string text(HeaderSize, '\0');
    stream.clear();
    stream.seekg(0);
    stream.read(&text[0], HeaderSize);
    if (!stream || text.compare(0, 4, "xof ") != 0 || text.compare(8, 4, "txt ") != 0)
        return;
    text.resize(size);
    stream.read(&text[0], static_cast<std::streamsize>(size - HeaderSize));
    if (text.find("SkinWeights") == std::string::npos)
        return;
    XWords words(std::move(text));
    std::vector<unsigned long> counts; // of the vertices of the meshes that the words are in, by depth
    for (std::string word = words.next(); !word.empty(); word = words.next()) {
        while (word == "Mesh") { // which may be the name of a frame, too
            word = words.nextInside();
            const unsigned long count = std::strtoul(word.c_str(), nullptr, 10);
            counts.resize(words.getDepth() + 1);
            counts.back() = count <= size ? count : 0; // Assimp takes 32 bits of it
        }
        const size_t depth = words.getDepth();
        const unsigned long vertices = depth < counts.size() ? counts[depth] : 0;
        if (word != "SkinWeights" || words.nextInside().rfind('"', 0) != 0)
            continue;
        for (unsigned long count = std::strtoul(words.next().c_str(), nullptr, 10); count > 0; --count) {
            const std::string index = words.next();
            if (index.empty() || std::strtoul(index.c_str(), nullptr, 10) >= vertices)
                throw ImportError(fileName + ": a bone moves vertex " + index + ", the mesh has " +
                                  std::to_string(vertices));
        }
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
    checkBones(fileName, stream, size);
}

} // namespace halvern::scene
