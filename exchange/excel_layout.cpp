#include "exchange/excel_layout.h"

#include "exchange/coordinate_mode.h"

#include <algorithm>

namespace {

using enum excel_field;

// Small differences between the sheets are the format's: "NO." in the English
// sheets of areas, "No. " with a blank before the points of routes, tracks and
// stake-outs.

constexpr excel_column area_columns[] = {
    {number, u"序号", u"NO."},
    {time_zone, u"时区", u"Time Zone"},
    {time, u"开始时间", u"Start Time"},
    {end_time, u"结束时间", u"End Time"},
    {id, u"设备ID", u"Device ID"},
    {mode, u"测量模式", u"Measurement Mode"},
    {unused, u"参数", u"Parameters"},
    {slope, u"坡度", u"Slope"},
    {area_unit, u"面积单位", u"Area Unit"},
    {area, u"面积", u"Area"},
    {square_metres, u"面积(平方米)", u"Area (Square Meters)"},
    {length_unit, u"距离单位", u"Distance Unit"},
    {length, u"距离", u"Distance"},
    {currency, u"货币单位", u"Currency Unit"},
    {price, u"单价", u"Unit Price"},
    {total, u"总价", u"Total Price"},
    {system, u"坐标系统", u"Coordinate System"},
    {unused, u"备注", u"Remarks"},
    {point_number, u"序号", u"NO."},
    {point_time, u"定位时间", u"Positioning Time"},
    {first, u"经度", u"Longitude"},
    {second, u"纬度", u"Latitude"},
    {altitude, u"海拔", u"Altitude"},
    {hdop, u"精度因子（HDOP）", u"Accuracy Factor (HDOP)"},
};

constexpr excel_column distance_columns[] = {
    {number, u"序号", u"No."},
    {time_zone, u"时区", u"Time Zone"},
    {time, u"开始时间", u"Start Time"},
    {end_time, u"结束时间", u"End Time"},
    {id, u"设备ID", u"Device ID"},
    {mode, u"测量模式", u"Measurement Mode"},
    {length_unit, u"距离单位", u"Distance Unit"},
    {straight, u"直线距离", u"Straight-line Distance"},
    {length, u"曲线距离", u"Curved Distance"},
    {currency, u"货币单位", u"Currency Unit"},
    {price, u"单价", u"Unit Price"},
    {total, u"总价", u"Total Price"},
    {system, u"坐标系统", u"Coordinate System"},
    {unused, u"备注", u"Remarks"},
    {point_number, u"序号", u"No."},
    {point_time, u"定位时间", u"Positioning Time"},
    {first, u"经度", u"Longitude"},
    {second, u"纬度", u"Latitude"},
    {altitude, u"海拔", u"Altitude"},
    {hdop, u"精度因子（HDOP）", u"Accuracy Factor (HDOP)"},
};

constexpr excel_column waypoint_columns[] = {
    {number, u"序号", u"No."},
    {time_zone, u"时区", u"Time Zone"},
    {id, u"设备ID", u"Device ID"},
    {system, u"坐标系统", u"Coordinate System"},
    {time, u"定位时间", u"Positioning Time"},
    {zone, u"带号", u"Zone Number"},
    {first, u"经度", u"Longitude"},
    {second, u"纬度", u"Latitude"},
    {altitude, u"海拔", u"Altitude"},
    {hdop, u"精度因子（HDOP）", u"Accuracy Factor (HDOP)"},
    {speed, u"速度", u"Speed"},
    {angle, u"航向角", u"Heading Angle"},
    {unused, u"备注", u"Remarks"},
};

constexpr excel_column waypoint_points[] = {
    {number, u"序号", u"No."},
    {time, u"定位时间", u"Positioning Time"},
    {zone, u"带号", u"Zone Number"},
    {first, u"经度", u"Longitude"},
    {second, u"纬度", u"Latitude"},
    {altitude, u"海拔", u"Altitude"},
    {hdop, u"精度因子（HDOP）", u"Accuracy Factor (HDOP)"},
    {speed, u"速度", u"Speed"},
    {angle, u"航向角", u"Heading Angle"},
};

constexpr excel_column route_columns[] = {
    {number, u"序号", u"No."},
    {time_zone, u"时区", u"Time Zone"},
    {time, u"创建时间", u"Creation Time"},
    {id, u"设备ID", u"Device ID"},
    {points, u"航点数量", u"Number of Waypoints"},
    {length_unit, u"距离单位", u"Distance Unit"},
    {length, u"航线距离", u"Route Distance"},
    {area_unit, u"面积单位", u"Area Unit"},
    {area, u"面积", u"Area"},
    {system, u"坐标系统", u"Coordinate System"},
    {unused, u"备注", u"Remarks"},
    {point_number, u"序号", u"No. "},
    {point_time, u"定位时间", u"Positioning Time"},
    {zone, u"带号", u"Zone Number"},
    {first, u"经度", u"Longitude"},
    {second, u"纬度", u"Latitude"},
    {altitude, u"海拔", u"Altitude"},
    {hdop, u"精度因子（HDOP）", u"Accuracy Factor (HDOP)"},
};

constexpr excel_column track_columns[] = {
    {number, u"序号", u"No."},
    {time_zone, u"时区", u"Time Zone"},
    {time, u"开始时间", u"Start Time"},
    {end_time, u"结束时间", u"End Time"},
    {id, u"设备ID", u"Device ID"},
    {points, u"航点数量", u"Number of Waypoints"},
    {length_unit, u"距离单位", u"Distance Unit"},
    {length, u"曲线距离", u"Curved Distance"},
    {system, u"坐标系统", u"Coordinate System"},
    {unused, u"备注", u"Remarks"},
    {point_number, u"序号", u"No. "},
    {point_time, u"定位时间", u"Positioning Time"},
    {zone, u"带号", u"Zone Number"},
    {first, u"经度", u"Longitude"},
    {second, u"纬度", u"Latitude"},
    {altitude, u"海拔", u"Altitude"},
    {hdop, u"精度因子（HDOP）", u"Accuracy Factor (HDOP)"},
};

constexpr excel_column staking_columns[] = {
    {number, u"序号", u"No."},
    {time_zone, u"时区", u"Time Zone"},
    {time, u"创建时间", u"Creation Time"},
    {id, u"设备ID", u"Device ID"},
    {points, u"样点数量", u"Number of Sample Points"},
    {length_unit, u"距离单位", u"Distance Unit"},
    {length, u"放样距离", u"Staking Distance"},
    {system, u"坐标系统", u"Coordinate System"},
    {unused, u"备注", u"Remarks"},
    {point_number, u"序号", u"No. "},
    {point_time, u"定位时间", u"Positioning Time"},
    {zone, u"带号", u"Zone Number"},
    {first, u"经度", u"Longitude"},
    {second, u"纬度", u"Latitude"},
    {altitude, u"海拔", u"Altitude"},
    {hdop, u"精度因子（HDOP）", u"Accuracy Factor (HDOP)"},
};

template <std::size_t size>
constexpr std::size_t index_of(const excel_column (&columns)[size], excel_field field)
{
    return static_cast<std::size_t>(std::ranges::find(columns, field, &excel_column::field) -
                                    std::begin(columns));
}

/// A kind whose points stand behind its summary, from their number on.
template <std::size_t size>
constexpr excel_kind kind(QStringView method, QStringView english,
                          const excel_column (&columns)[size])
{
    const std::size_t summary = index_of(columns, point_number);
    const std::span full(columns);
    return {method, english, full, summary, full.subspan(summary), false};
}

} // namespace

constexpr std::array<excel_kind, 6> excel_kinds{{
    kind(u"面积", u"Area", area_columns),
    kind(u"距离", u"Distance", distance_columns),
    {u"航点", u"Waypoint", waypoint_columns, std::size(waypoint_columns), waypoint_points, true},
    kind(u"航线", u"Route", route_columns),
    kind(u"航迹", u"Track", track_columns),
    kind(u"放样", u"Staking Out", staking_columns),
}};

QString excel_kind::sheet_name(int language) const
{
    return (language == 0 ? method : english).toString();
}

int excel_kind::column_of(excel_field field) const
{
    const auto found = std::ranges::find(full, field, &excel_column::field);
    return found == full.end() ? -1 : static_cast<int>(found - full.begin());
}

std::span<const excel_column> excel_kind::columns(bool with_summary, bool with_points) const
{
    if (!with_summary)
        return points;
    return with_points ? full : full.first(summary);
}

QStringList excel_kind::heads(bool with_summary, bool with_points, int language, int mode) const
{
    QStringList texts;
    for (const excel_column& column : columns(with_summary, with_points)) {
        QStringView text = language == 0 ? column.chinese : column.english;
        if (column.field == number && language != 0 && !with_points)
            text = u"No."; // the summary alone is called the same in all sheets
        else if (column.field == first && is_plane(mode))
            text = u"X";
        else if (column.field == second && is_plane(mode))
            text = u"Y";
        texts.append(text.toString());
    }
    return texts;
}
