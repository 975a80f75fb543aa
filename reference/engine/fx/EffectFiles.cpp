#include "reference/engine/fx/EffectFiles.h"

#include "reference/engine/ImageDecoder.h"
#include "reference/engine/fx/EffectBuilder.h"

#include <boost/algorithm/string/case_conv.hpp>

#include <dlfcn.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

namespace halvern::engine::fx {

namespace fs = std::filesystem;

namespace {

constexpr uintmax_t largestEffect = 256 * 1024;
constexpr uintmax_t largestPicture = 256 * 1024 * 1024;

fs::path libraryFolder()
{
    Dl_info info;
    if (!dladdr(reinterpret_cast<const void*>(&getEffectFolder), &info) || !info.dli_fname)
        return {};
    return fs::path(info.dli_fname).parent_path();
}

std::string findFolder()
{
    std::error_code error;
    const fs::path installed = fs::weakly_canonical(libraryFolder() / HALVERN_EFFECTS_FROM_LIB, error);
    if (!error && fs::is_directory(installed, error))
        return installed.string();
    return HALVERN_SOURCE_EFFECTS;
}

/// False for anything but a file of at most that size that can be read to its end.
template <class Bytes>
bool read(const fs::path& file, uintmax_t largest, Bytes& bytes)
{
    std::error_code error;
    if (!fs::is_regular_file(file, error) || fs::file_size(file, error) > largest)
        return false;
    std::ifstream stream(file, std::ios::binary);
    bytes.assign(std::istreambuf_iterator<char>(stream), {});
    return !stream.bad() && stream.is_open();
}

} // namespace

std::string getEffectFolder()
{
    static const std::string folder = findFolder();
    return folder;
}

std::string findEffectFile(const std::string& fileName)
{
    std::error_code error;
    if (fs::exists(fileName, error))
        return fileName;
    const fs::path file = fs::path(getEffectFolder()) / fileName;
    return fs::exists(file, error) ? file.string() : fileName;
}

std::string readEffectFile(const std::string& fileName)
{
    std::string text;
    std::error_code error;
    if (fs::is_regular_file(fileName, error) && fs::file_size(fileName, error) > largestEffect)
        throw EffectError(fileName, {}, "expected an effect file of at most 256 KiB");
    if (!read(fileName, largestEffect, text))
        throw EffectError(fileName, {}, "expected an effect file that can be read");
    if (text.find('\0') != text.npos)
        throw EffectError(fileName, {}, "expected an effect file, which is text");
    return text;
}

std::shared_ptr<const scene::Image> readPicture(const std::string& fileName, const std::string& effectFile)
{
    if (fileName.empty())
        return {};
    std::vector<uint8_t> encoded;
    const fs::path beside = fs::path(effectFile).parent_path() / fileName;
    if (!read(fileName, largestPicture, encoded) && !read(beside, largestPicture, encoded))
        return {};
    std::string hint = fs::path(fileName).extension().string();
    hint.erase(0, 1);
    boost::to_lower(hint, std::locale::classic());
    auto image = std::make_shared<scene::Image>(decodeImage(encoded, hint));
    image->name = fileName;
    return image->width > 0 ? image : nullptr;
}

std::vector<std::string> findMissingPictures(const EffectSyntax& effect)
{
    std::vector<std::string> messages;
    for (const ParameterSyntax& each : effect.parameters)
        if (!each.file.empty() && !readPicture(each.file, effect.fileName))
            messages.push_back(EffectError(effect.fileName, each.place,
                                           "expected a picture that can be read, not " + inQuotes(each.file))
                                   .what());
    return messages;
}

FileStamp getFileStamp(const std::string& fileName)
{
    std::error_code error;
    const auto time = fs::last_write_time(fileName, error);
    const uintmax_t size = error ? 0 : fs::file_size(fileName, error);
    if (error)
        return {};
    return {time.time_since_epoch().count(), size};
}

} // namespace halvern::engine::fx
