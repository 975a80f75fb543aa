// Imports each file that it is given and prints what it counts, for the comparison with `assimp info`.

#include "reference/scene/Importer.h"

#include <iostream>

using namespace halvern::scene;

int main(int argc, char** argv)
{
    ImportOptions options;
    options.decodeImage = [](const std::vector<uint8_t>& encoded, const std::string&) {
        return Image{"", 1, 1, 1, {encoded.empty() ? uint8_t(0) : encoded.front()}};
    };
    int failed = 0;
    for (int i = 1; i < argc; ++i) {
        try {
            const ImportedScene imported = importScene(argv[i], options);
            const ImportCounts& counts = imported.counts;
            std::cout << "nodes " << counts.nodes << " meshes " << counts.meshes << " materials "
                      << counts.materials << " cameras " << counts.cameras << " lights " << counts.lights
                      << " animations " << counts.animations << " triangles " << counts.triangles
                      << " vertices " << counts.vertices << " file " << argv[i] << std::endl;
            for (const auto& warning : imported.warnings)
                std::cout << "    " << warning << std::endl;
        } catch (const ImportError& error) {
            std::cout << "refused " << error.what() << std::endl;
            ++failed;
        }
    }
    return failed > 0 ? 2 : 0;
}
