#include "studio/Report.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>
#include <cmath>
#include <utility>

namespace halvern::studio {

namespace {

/// A JSON value alone; QJsonDocument writes only arrays and objects, and sorts the keys of the latter.
QByteArray toText(const QJsonValue& value)
{
    const QByteArray array = QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact);
    return array.mid(1, array.size() - 2);
}

double roundToMicroseconds(double milliseconds)
{
    return std::round(milliseconds * 1e3) / 1e3;
}

double median(std::vector<double> values)
{
    if (values.empty())
        return 0;
    const auto middle = values.begin() + values.size() / 2;
    std::nth_element(values.begin(), middle, values.end());
    if (values.size() % 2 == 1)
        return *middle;
    return (*middle + *std::max_element(values.begin(), middle)) / 2;
}

} // namespace

QByteArray toJson(const Report& report)
{
    const auto& counts = report.counts;
    const std::pair<const char*, QJsonValue> entries[] = {
        {"file", report.file},
        {"nodes", qint64(counts.nodes)},
        {"meshes", qint64(counts.meshes)},
        {"materials", qint64(counts.materials)},
        {"cameras", qint64(counts.cameras)},
        {"lights", qint64(counts.lights)},
        {"animations", qint64(counts.animations)},
        {"triangles", qint64(counts.triangles)},
        {"vertices", qint64(counts.vertices)},
        {"load_ms", roundToMicroseconds(report.loadMilliseconds)},
        {"first_frame_ms", roundToMicroseconds(report.firstFrameMilliseconds)},
        {"frame_ms_median", roundToMicroseconds(median(report.frameMilliseconds))},
    };
    QByteArrayList members;
    for (const auto& [key, value] : entries)
        members.append(toText(QString(key)) + ':' + toText(value));
    return '{' + members.join(',') + '}';
}

} // namespace halvern::studio
