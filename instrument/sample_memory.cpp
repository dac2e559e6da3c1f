#include "instrument/sample_memory.h"

#include "instrument/land_geometry.h"

#include <QTimeZone>

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <random>

namespace instrument {

namespace {

constexpr std::uint8_t beijing_time = 9;

// The measurement mode bytes used here.
enum mode : std::uint8_t
{
    intelligent_slope = 0x00,
    common_area = 0x10,
    circling_airborne = 0x11,
    fixed_width_area = 0x12,
    fixed_point_area = 0x13,
    length_and_width_area = 0x14,
    ordinary_distance = 0x30,
    fixed_point_distance = 0x31,
    common_slant_distance = 0x32,
    automatic_collection = 0x40,
    manual_input = 0x41,
};

constexpr double walking = 1.3;  // m/s
constexpr double tractor = 2.6;  // m/s
constexpr double standing = 0.0; // somebody stops at each point

/// Numbers that are the same on every platform for one seed.
class dice
{
public:
    explicit dice(std::uint32_t seed) : m_engine(seed) {}

    /// Evenly spread in [-half_width, half_width).
    double around_zero(double half_width)
    {
        return (static_cast<double>(m_engine()) / 4294967296.0 * 2.0 - 1.0) * half_width;
    }

    int below(int bound)
    {
        return static_cast<int>(static_cast<double>(m_engine()) / 4294967296.0 * bound);
    }

private:
    std::mt19937 m_engine;
};

/// Ground on which something is measured.
struct ground
{
    position origin;
    double altitude; ///< metres at the origin
    double rise;     ///< metres of altitude for each metre to the north
};

constexpr ground songnen_plain{{126.65, 45.75}, 141.6, 0.001};
constexpr ground songnen_north{{126.7012, 45.7794}, 138.2, -0.0005};
constexpr ground sanjiang_plain{{132.5108, 47.2466}, 61.3, 0.0002};
constexpr ground zhengzhou_terraces{{113.6, 34.7}, 187.5, 0.11};
constexpr ground turpan_basin{{89.2011, 42.6502}, -152.7, 0.0};

/// What a measurement is made of; the rest follows.
struct plan
{
    measurement_kind kind;
    mode how;
    ground where;
    QList<offset> points; ///< as measured, metres from the ground's origin
    double pace;          ///< m/s
    const char* start;
    std::uint8_t width = not_set;
    std::uint8_t price = not_set;
    std::uint8_t currency = not_set;
    std::uint8_t status = 1;
    std::uint8_t time_zone = beijing_time;
};

/// `count` points at equal distances along the line through `corners`, the
/// first on the first corner; a closed line ends one step before it.
QList<offset> spread(const QList<offset>& corners, bool closed, int count)
{
    QList<offset> line = corners;
    if (closed)
        line.append(corners.constFirst());
    QList<double> reached{0.0};
    for (qsizetype i = 1; i < line.size(); ++i) {
        reached.append(reached.constLast() + std::hypot(line[i].east - line[i - 1].east,
                                                        line[i].north - line[i - 1].north));
    }
    const double step = reached.constLast() / (closed ? count : std::max(count - 1, 1));
    QList<offset> points;
    points.reserve(count);
    qsizetype leg = 1;
    for (int i = 0; i < count; ++i) {
        const double along = i * step;
        while (leg + 1 < line.size() && reached[leg] < along)
            ++leg;
        const double part = (along - reached[leg - 1]) / (reached[leg] - reached[leg - 1]);
        points.append({std::lerp(line[leg - 1].east, line[leg].east, part),
                       std::lerp(line[leg - 1].north, line[leg].north, part)});
    }
    return points;
}

/// Up and down a field in rows, as a machine works it.
QList<offset> rows(double row_length, double row_width, int count)
{
    QList<offset> corners;
    for (int row = 0; row < count; ++row) {
        const bool up = row % 2 == 0;
        corners.append({row * row_width, up ? 0.0 : row_length});
        corners.append({row * row_width, up ? row_length : 0.0});
    }
    return corners;
}

std::int32_t to_wire_degrees(double degrees)
{
    return static_cast<std::int32_t>(std::lround(degrees * 1e7));
}

stored_measurement carry_out(const plan& work, dice& random)
{
    stored_measurement measured;
    measured.identity = own_identity;
    measured.kind = work.kind;
    measured.mode = work.how;
    measured.width = work.width;
    measured.price = work.price;
    measured.currency = work.currency;
    measured.time_zone = work.time_zone;
    measured.start = QDateTime::fromString(QLatin1String(work.start), Qt::ISODate);
    measured.start.setTimeZone(QTimeZone::utc());

    // Places are rounded to the wire before anything is computed from them.
    QList<position> places;
    places.reserve(work.points.size());
    measured.points.reserve(work.points.size());
    for (const offset& step : work.points) {
        const position place = moved(work.where.origin, {step.east + random.around_zero(0.12),
                                                         step.north + random.around_zero(0.12)});
        stored_point point;
        point.longitude = to_wire_degrees(place.longitude);
        point.latitude = to_wire_degrees(place.latitude);
        point.altitude = static_cast<std::int32_t>(std::lround(
                             (work.where.altitude + work.where.rise * step.north) * 100)) +
                         random.below(31) - 15;
        point.hdop = static_cast<std::uint8_t>(6 + random.below(9));
        point.status = work.status;
        measured.points.append(point);
        places.append({point.longitude / 1e7, point.latitude / 1e7});
    }

    double seconds = 0;
    for (qsizetype i = 0; i < places.size(); ++i) {
        stored_point& point = measured.points[i];
        const double step = i > 0 ? distance_between(places[i - 1], places[i]) : 0.0;
        if (i > 0)
            seconds += work.pace > 0 ? step / work.pace : step / walking + 6 + random.below(5);
        point.seconds = static_cast<std::uint16_t>(std::min(std::lround(seconds), 65535L));
        if (work.pace > 0) {
            const double speed = work.pace * 36.0 + random.around_zero(4);
            point.speed = static_cast<std::uint8_t>(std::clamp(std::lround(speed), 0L, 255L));
        }
        if (i + 1 < places.size())
            point.heading = static_cast<std::uint16_t>(heading_between(places[i], places[i + 1]));
        else if (i > 0)
            point.heading = measured.points[i - 1].heading;
    }
    const std::uint16_t last =
        places.isEmpty() ? std::uint16_t{0} : measured.points.constLast().seconds;
    measured.end = measured.start.addSecs(last);

    const bool ring = work.kind == measurement_kind::area && work.how != fixed_width_area;
    const double length = line_length(places, ring);
    if (work.kind == measurement_kind::area) {
        const double area = ring ? ring_area(places) : length * work.width / 10.0;
        measured.area = static_cast<std::uint32_t>(std::lround(area));
    }
    measured.length = static_cast<std::uint32_t>(std::lround(length * 10));
    return measured;
}

QList<plan> season()
{
    const QList<offset> strip{{0, 0}, {212, 4}, {209, 96}, {-3, 91}};
    const QList<offset> bent{{0, 0}, {180, -12}, {264, 70}, {231, 205}, {96, 226}, {-18, 141}};
    const QList<offset> wide{{0, 0}, {1540, 22}, {1588, 640}, {1195, 1010}, {310, 985}, {-42, 430}};
    const QList<offset> terrace{{0, 0}, {64, 9}, {118, 31}, {109, 58}, {52, 40}, {-6, 27}};
    const QList<offset> ditch{{0, 0}, {85, 40}, {160, 44}, {290, 110}};
    const QList<offset> lane{{0, 0}, {310, 15}, {340, 420}, {1210, 455}};
    const QList<offset> crossing{{0, 0}, {0, 900}, {750, 900}, {750, 1800}};

    return {
        {measurement_kind::area, fixed_point_area, songnen_plain, strip, standing,
         "2024-04-18T08:12:41", not_set, 65, 0, 4},
        {measurement_kind::area, common_area, songnen_plain, spread(bent, true, 40), walking,
         "2024-04-18T09:03:05", not_set, 65, 0, 4},
        {measurement_kind::area, circling_airborne, sanjiang_plain, spread(wide, true, 1200),
         tractor, "2024-05-02T06:30:00", not_set, 58, 0, 5},
        {measurement_kind::area, intelligent_slope, zhengzhou_terraces, spread(terrace, true, 24),
         walking, "2024-05-21T15:47:59", not_set, 90, 0, 1},
        {measurement_kind::area, fixed_width_area, songnen_north,
         spread(rows(160, 3.2, 9), false, 60), tractor, "2024-05-24T10:20:33", 32, 70, 0, 4},
        {measurement_kind::area,
         length_and_width_area,
         songnen_north,
         {{0, 0}, {80, 0}, {80, 45}, {0, 45}},
         standing,
         "2024-05-24T11:41:07",
         not_set,
         12,
         1,
         4},
        {measurement_kind::distance, ordinary_distance, songnen_plain, spread(ditch, false, 12),
         walking, "2024-06-03T07:08:09", not_set, 4, 0, 4},
        {measurement_kind::distance,
         fixed_point_distance,
         songnen_plain,
         {{0, 0}, {268, 121}},
         standing,
         "2024-06-03T07:31:50",
         not_set,
         4,
         3,
         4},
        {measurement_kind::distance,
         common_slant_distance,
         zhengzhou_terraces,
         {{0, 0}, {11, 47}, {25, 96}},
         standing,
         "2024-06-11T16:02:14",
         not_set,
         6,
         2,
         1},
        {measurement_kind::waypoint,
         automatic_collection,
         songnen_plain,
         {{412, 77}},
         standing,
         "2024-06-20T05:59:59"},
        {measurement_kind::waypoint,
         manual_input,
         zhengzhou_terraces,
         {{-35, 210}},
         standing,
         "2024-06-22T12:00:00",
         not_set,
         not_set,
         not_set,
         not_set,
         not_set},
        {measurement_kind::waypoint,
         automatic_collection,
         turpan_basin,
         {{0, 0}},
         standing,
         "2024-07-08T21:15:30",
         not_set,
         not_set,
         4,
         9,
         4},
        {measurement_kind::track, automatic_collection, sanjiang_plain,
         spread(rows(310, 6, 48), false, 2500), tractor, "2024-08-14T04:45:10", not_set, not_set,
         not_set, 5},
        {measurement_kind::track, automatic_collection, songnen_north, spread(lane, false, 51),
         walking, "2024-08-30T17:26:45", not_set, not_set, not_set, 0},
        {measurement_kind::route, manual_input, songnen_plain, spread(lane, false, 6), standing,
         "2024-09-09T09:09:09", not_set, not_set, not_set, not_set},
        {measurement_kind::route, manual_input, songnen_north, spread(crossing, false, 52),
         standing, "2024-09-12T13:37:02", not_set, not_set, not_set, 2},
        {measurement_kind::staking_out, manual_input, songnen_plain,
         spread({{0, 0}, {0, 240}}, false, 9), standing, "2024-12-31T23:58:20", not_set, not_set,
         not_set, 3},
    };
}

} // namespace

memory sample_memory(std::uint32_t seed)
{
    dice random(seed);
    memory stored;
    for (const plan& work : season())
        stored.append(carry_out(work, random));
    return stored;
}

memory synthetic_memory(int measurements, int points, std::uint32_t seed)
{
    static constexpr std::array modes{common_area,          ordinary_distance, automatic_collection,
                                      automatic_collection, manual_input,      manual_input};
    dice random(seed);
    memory stored;
    stored.reserve(measurements);
    const QDateTime first(QDate(2024, 1, 1), QTime(6, 0), QTimeZone::utc());
    for (int i = 0; i < measurements; ++i) {
        const int number = i % static_cast<int>(modes.size());
        const int count =
            static_cast<measurement_kind>(number) == measurement_kind::waypoint ? 1 : points;
        // A ring around a place of its own on a grid of 250 m.
        const offset centre{(i % 256) * 250.0, static_cast<int>(i / 256) * 250.0};
        QList<offset> ring;
        ring.reserve(count);
        for (int k = 0; k < count; ++k) {
            const double angle = 2.0 * std::numbers::pi * k / count;
            ring.append({90.0 * std::cos(angle), 90.0 * std::sin(angle)});
        }
        ground where = songnen_plain;
        where.origin = moved(where.origin, centre);
        const QByteArray start =
            first.addSecs(600LL * i).toString(u"yyyy-MM-ddTHH:mm:ss").toLatin1();
        stored.append(carry_out({.kind = static_cast<measurement_kind>(number),
                                 .how = modes[static_cast<std::size_t>(number)],
                                 .where = where,
                                 .points = ring,
                                 .pace = walking,
                                 .start = start.constData()},
                                random));
    }
    return stored;
}

} // namespace instrument
