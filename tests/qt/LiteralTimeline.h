#pragma once

#include <QImage>
#include <QRect>

#include <cstdint>
#include <vector>

namespace halvern::test {

/// What an animation slider shows.
struct Timeline
{
    QSize size{500, 80};
    int minimum = 0;
    int maximum = 10000;
    int value = 0;
    int hoverValue = 0;
    bool hasManager = true;
    bool hasAnimation = true;
    std::vector<float> frameTimes; // seconds
    std::int64_t currentMicroseconds = 0;
};

/// The value under a column of it.
int valueLiterally(const Timeline& timeline, int x);

/// The picture of it, painted stroke by stroke without regard to cost. With a part, only that is painted, as
/// after an update of it.
QImage paintLiterally(const Timeline& timeline);
QImage paintLiterally(const Timeline& timeline, const QRect& part);

} // namespace halvern::test
