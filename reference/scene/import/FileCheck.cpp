#include "reference/scene/import/FileCheck.h"

#include "reference/scene/Importer.h"

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
}

} // namespace halvern::scene
