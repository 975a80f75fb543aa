#include "engine/core/event/EventData.h"

#include <boost/smart_ptr/make_shared.hpp>

#include <algorithm>
#include <utility>

namespace halvern::core::event {

// No pointer stands for the empty text: it costs nothing, and moved-from data is safe to read.
EventData::EventData() = default;

EventData::EventData(std::string data)
{
    if (!data.empty())
        this->data = boost::make_shared<std::string>(std::move(data));
}

std::string EventData::getArg(int n) const
{
    const std::string& text = getData();
    if (n == 0)
        return text;
    std::size_t begin = 0;
    for (int piece = 1; piece <= n; ++piece) {
        const std::size_t end = text.find(',', begin);
        if (piece == n)
            return text.substr(begin, end - begin);
        if (end == std::string::npos)
            break;
        begin = end + 1;
        if (text[begin] == ' ')
            ++begin;
    }
    return {};
}

const std::string& EventData::getData() const
{
    static const std::string empty;
    return data ? *data : empty;
}

unsigned int EventData::getArgCount() const
{
    const std::string& text = getData();
    return 1 + static_cast<unsigned int>(std::count(text.begin(), text.end(), ','));
}

} // namespace halvern::core::event
