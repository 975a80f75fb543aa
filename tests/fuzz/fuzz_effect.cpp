// Feeds the parser of effect files with anything. Begin with what is there:
//   fuzz_effect CORPUS tests/corpus/effects data/effects
#include "reference/engine/fx/EffectSyntax.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

using namespace halvern::engine::fx;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);
    try {
        const auto effect = parseEffect(text, "fuzz.fx");
        if (effect->techniques.empty() || effect->code != text)
            std::abort();
    } catch (const EffectError& error) {
        // The place is in the text.
        if (error.place.line < 1 || error.place.column < 1 || error.place.column > int(size) + 1)
            std::abort();
    }
    return 0;
}
