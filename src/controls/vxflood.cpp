#include "controls/vxflood.h"

#include <algorithm>
#include <cmath>

#include <QTime>

#include "controls/controlproperties.h"

namespace valtrona {

double secondsSinceMidnight()
{
    return QTime::currentTime().msecsSinceStartOfDay() / 1000.0;
}

FloodState::Type FloodState::typeOf(int floodType)
{
    return enumFromCode(floodType, Type::None);
}

std::optional<int> FloodState::percentFor(int floodType, int floodPercent, int value, int min, int max)
{
    double p = 0.0;
    switch (typeOf(floodType)) {
    case Type::Percent:
        p = floodPercent;
        break;
    case Type::Range:
        if (max != min)
            p = (double(value) - double(min)) / (double(max) - double(min)) * 100.0;
        if (value == 0)
            p = 0.0;
        break;
    case Type::None:
        return std::nullopt;
    }
    // nearbyint rounds in the default mode: to nearest, halves to even.
    return int(std::clamp(std::nearbyint(p), 0.0, 100.0));
}

bool FloodState::update(int floodType, int floodPercent, int value, int min, int max, bool force,
                        double now)
{
    const std::optional<int> p = percentFor(floodType, floodPercent, value, min, max);
    if (!p)
        return false;
    const bool redraw = force || *p != m_shownPercent;
    m_lastUpdateTime = now;
    m_shownPercent = *p;
    return redraw;
}

void FloodState::initStartTime(double now)
{
    m_startTime = now;
    m_lastUpdateTime = 0.0;
}

int FloodState::shownPercent() const
{
    return m_shownPercent;
}

double FloodState::elapsed() const
{
    return m_lastUpdateTime - m_startTime;
}

double FloodState::remaining() const
{
    if (m_shownPercent == 0)
        return 0.0;
    const double spent = elapsed();
    return 100.0 / m_shownPercent * spent - spent;
}

} // namespace valtrona
