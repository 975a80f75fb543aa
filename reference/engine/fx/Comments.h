#pragma once

#include <string_view>

namespace halvern::engine::fx {

/// Where the code goes on after all comments that begin here. One without an end is as long as the text.
inline const char* skipComments(const char* i, const char* last)
{
    while (last - i > 1 && i[0] == '/' && (i[1] == '/' || i[1] == '*')) {
        const std::string_view rest(i, size_t(last - i));
        const std::string_view end = i[1] == '/' ? "\n" : "*/";
        const size_t found = rest.find(end, 2);
        i = found == rest.npos ? last : i + found + end.size();
    }
    return i;
}

} // namespace halvern::engine::fx
