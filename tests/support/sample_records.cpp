#include "support/sample_records.h"

namespace {

struct sample_point
{
    const char* longitude;
    const char* latitude;
    const char* altitude;
};

struct sample
{
    const char* method;
    const char* name;
    QList<sample_point> points;
};

void append(sample_lists& lists, const sample& one)
{
    const auto number = static_cast<int>(lists.table_list.size());
    // 10.01 for the first field of record 0, 11.01 of record 1, 10.02 for the
    // second field and so on.
    const auto value = [number](int field) {
        return QStringLiteral("%1.%2").arg(10 + number).arg(field, 2, 10, QLatin1Char('0'));
    };
    measuringData record;
    record.numpoint = QString::number(one.points.size());
    record.method = QString::fromUtf8(one.method);
    record.slope = value(1);
    record.price = value(2);
    record.distance = value(3);
    record.jd = QString::number(1 + (number + 1) % 6);
    record.areamu = value(4);
    record.areameter = value(5);
    record.md = QString::number(1 + (number + 2) % 5);
    record.hd = QString::number(1 + number % 5);
    record.totalprices = value(6);
    record.time = QStringLiteral("2024-03-%1 07:08:09").arg(10 + number);
    record.endtime = QStringLiteral("2024-03-%1 07:18:19").arg(10 + number);
    record.numrecord = QString::number(301 + number);
    record.name = QString::fromUtf8(one.name);
    record.timezone = QString::number(11 + number);
    record.mode = QString::number(1 + number);
    record.width = value(7);
    record.id = QString::number(20240001 + number);
    record.zj = value(8);
    lists.table_list.append(record);

    QStringList pairs;
    QString lines;
    QList<point_msg> points;
    for (const sample_point& point : one.points) {
        const QString pair =
            QLatin1String(point.longitude) + QLatin1Char(',') + QLatin1String(point.latitude);
        pairs.append(pair);
        lines += pair + QLatin1Char(',') + QLatin1String(point.altitude) + QLatin1Char('\n');
        const auto k = static_cast<int>(points.size());
        points.append({QStringLiteral("0.%1").arg(k + 5), QStringLiteral("1.%1").arg(k),
                       QString::number(90 + k), QStringLiteral("2024-03-10 07:08:1%1").arg(k),
                       QStringLiteral("1")});
    }
    lists.data_msg.append(pairs.join(QLatin1Char(',')));
    lists.data_msg_altitude.append(lines);
    lists.point_msg_all.append(points);
}

} // namespace

sample_lists sample_records()
{
    const sample samples[] = {
        {"面积",
         "North field, 2",
         {{"104.020575123456", "30.611316987654", "512.30"},
          {"104.021575000001", "30.611416000002", "512.40"},
          {"104.021675999999", "30.612416500000", "513.05"},
          {"104.020475250000", "30.612316750000", "511.95"}}},
        {"距离",
         "He said \"far\"",
         {{"104.000000000000", "30.000000000000", "500.00"},
          {"104.500000000000", "30.250000000000", "501.50"},
          {"104.999999999999", "30.999999999999", "502.00"}}},
        {"航点", "<well> & gate", {{"113.264385000000", "23.129112000000", "21.00"}}},
        {"航线",
         "a]]>b",
         {{"126.650000000000", "45.750000000000", "120.50"},
          {"126.650500000000", "45.751000000000", "121.00"}}},
        {"航迹",
         "  two blanks  ",
         {{"2.294481000000", "48.858370000000", "35.00"},
          {"2.295481000000", "48.859370000000", "36.00"},
          {"2.296481000000", "48.860370000000", "37.00"}}},
        {"放样",
         "东边的地块",
         {{"151.209300000000", "-33.868800000000", "58.00"},
          {"151.210300000000", "-33.869800000000", "57.00"}}},
        {"自制",
         "🌾🚜",
         {{"-122.419416000000", "37.774929000000", "16.00"},
          {"-122.420416000000", "37.775929000000", "17.00"}}},
        {"面积",
         "",
         {{"116.391300000000", "39.907500000000", "43.50"},
          {"116.392300000000", "39.907500000000", "43.60"},
          {"116.391800000000", "39.908500000000", "43.70"}}},
        {"航点", "O'Brien's 'tree'", {{"-70.669300000000", "-33.448900000000", "-3.00"}}},
        {"距离", "nothing measured", {}},
    };
    sample_lists lists;
    for (const sample& one : samples)
        append(lists, one);
    return lists;
}
