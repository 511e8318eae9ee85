#pragma once

#include <functional>
#include <optional>

#include <QObject>

namespace valtrona {

/// Seconds since midnight, as a clock for the flood times.
using FloodClock = std::function<double()>;

/// The system clock: seconds since local midnight, with milliseconds.
double secondsSinceMidnight();

/// The percentage, rounding and timing rules of a progress flood, apart from
/// any drawing, so they can be checked and reused on their own.
class FloodState
{
    Q_GADGET

public:
    /// Where the flood takes its percentage from (the FloodType code).
    enum class Type {
        None = -1,   ///< no flood; also every code not listed here
        Percent = 3, ///< FloodPercent given directly
        Range = 4,   ///< computed from Value, Min and Max
    };
    Q_ENUM(Type)

    /// The type a FloodType code stands for.
    static Type typeOf(int floodType);

    /// The whole percentage a flood of `floodType` shows, rounded half to
    /// even and clamped to 0..100; nothing for a type without a flood.
    /// With type 4 a Value of 0 always shows 0 %, whatever Min is.
    static std::optional<int> percentFor(int floodType, int floodPercent, int value, int min, int max);

    /// Updates the flood at time `now` (seconds since midnight) from the
    /// given inputs. Returns true when the bar must be drawn again: the
    /// shown percentage changed, or `force` was set. An unchanged
    /// percentage only moves the last update time.
    bool update(int floodType, int floodPercent, int value, int min, int max, bool force, double now);

    /// Starts the time measurement: start time = `now`, last update time = 0.
    void initStartTime(double now);

    /// The percentage shown last.
    int shownPercent() const;
    /// Last update time minus start time, in seconds (negative across midnight).
    double elapsed() const;
    /// (100 / p) × elapsed − elapsed for the shown percentage p; 0 at 0 %.
    double remaining() const;

private:
    int m_shownPercent = 0;
    double m_startTime = 0.0;
    double m_lastUpdateTime = 0.0;
};

} // namespace valtrona
