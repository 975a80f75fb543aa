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
        std::string word = text.substr(begin, at - begin);
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

constexpr size_t XHeaderSize = 16; // "xof 0303txt 0032"

/// The words of a binary file of DirectX, as a text file has them; numbers of the type float are left out.
class XTokens
{
public:
    explicit XTokens(const std::string& newBytes) : bytes(newBytes) {}

    std::string toText()
    {
        while (at < bytes.size())
            addToken();
        return text;
    }

private:
    enum Token {
        Name = 1,
        String = 2,
        Integer = 3,
        Guid = 5,
        Integers = 6,
        Floats = 7,
        Open = 10,
        Close = 11
    };

    void addToken()
    {
        switch (read<std::uint16_t>()) {
        case Name:
            text += take(read<std::uint32_t>()) + ' ';
            break;
        case String:
            text += '"' + take(read<std::uint32_t>()) + "\" ";
            skip(2); // the token that ends it
            break;
        case Integer:
            text += std::to_string(read<std::uint32_t>()) + ' ';
            break;
        case Guid:
            skip(16);
            break;
        case Integers:
            for (auto count = read<std::uint32_t>(); count > 0 && at < bytes.size(); --count)
                text += std::to_string(read<std::uint32_t>()) + ' ';
            break;
        case Floats:
            skip(size_t(read<std::uint32_t>()) * (bytes.compare(12, 4, "0064") == 0 ? 8 : 4));
            break;
        case Open:
            text += "{ ";
            break;
        case Close:
            text += "} ";
            break;
        }
    }

    /// 0 behind the end.
    template <class Number>
    Number read()
    {
        Number number = 0;
        if (bytes.size() - at >= sizeof number)
            std::memcpy(&number, &bytes[at], sizeof number);
        skip(sizeof number);
        return number;
    }

    std::string take(size_t count)
    {
        std::string taken = bytes.substr(at, count);
        skip(count);
        return taken;
    }

    void skip(size_t count) { at += std::min(count, bytes.size() - at); }

    const std::string& bytes;
    std::string text;
    size_t at = XHeaderSize;
};

} // namespace

/// Assimp follows the vertices that the bones of an X file name, wherever they lie.
static void checkBones(const std::string& fileName, std::istream& stream, uintmax_t size)
{
    std::string text(XHeaderSize, '\0');
    stream.clear();
    stream.seekg(0);
    stream.read(&text[0], XHeaderSize);
    const bool isBinary = text.compare(8, 4, "bin ") == 0;
    const bool isCompressed = !isBinary && text.compare(8, 4, "txt ") != 0; // not looked into
    if (!stream || text.compare(0, 4, "xof ") != 0 || isCompressed)
        return;
    text.resize(size);
    stream.read(&text[XHeaderSize], static_cast<std::streamsize>(size - XHeaderSize));
    if (text.find("SkinWeights") == std::string::npos)
        return;
    XWords words(isBinary ? XTokens(text).toText() : std::move(text));
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
