#pragma once

#include "reference/scene/Importer.h"

#include <QByteArray>
#include <QString>

#include <vector>

namespace halvern::studio {

/// What --json tells.
struct Report
{
    QString file;
    scene::ImportCounts counts;
    double loadMilliseconds = 0;
    double firstFrameMilliseconds = 0; ///< since the process was started
    std::vector<double> frameMilliseconds;
};

/// One line of JSON without its line feed, the keys in the order of the documentation.
QByteArray toJson(const Report& report);

} // namespace halvern::studio
