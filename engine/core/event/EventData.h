#pragma once

#include "engine/Export.h"

#include <boost/shared_ptr.hpp>

#include <string>

namespace halvern::core::event {

/// The arguments of an event: one text whose pieces are separated by commas.
///
/// A piece ends at every ","; exactly one blank directly after a comma belongs to the separator and is
/// dropped. Everything else stays: line feeds, tabs, further blanks. Empty pieces count, so
/// ", , , 5, 6, TAG" has the pieces "", "", "", "5", "6" and "TAG". The empty text has one piece, "".
/// An immutable value: copies share the text and may be used from any thread.
class HALVERN_CORE_API EventData
{
public:
    /// The empty text.
    EventData();

    /// The whole text, arguments joined with ", ". Not explicit: a text is an event's data.
    EventData(std::string data);

    /// Piece n, the first piece being number 1. 0 gives the whole text; a number out of range gives "".
    /// Costs one scan up to the end of the piece and allocates nothing but the result.
    std::string getArg(int n) const;

    /// The whole text. The reference lasts as long as this object.
    const std::string& getData() const;

    /// Number of pieces, at least 1.
    unsigned int getArgCount() const;

private:
    boost::shared_ptr<const std::string> data;
};

} // namespace halvern::core::event
