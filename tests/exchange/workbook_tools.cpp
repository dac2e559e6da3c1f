#include "workbook_tools.h"

#include <QDebug>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>

const QStringList kinds{"面积", "距离", "航点", "航线", "航迹", "放样"};
const QStringList english_kinds{"Area", "Distance", "Waypoint", "Route", "Track", "Staking Out"};

bool run_script(const QString& script, const QStringList& arguments, QByteArray* output)
{
    QProcess process;
    // Debian's own Python, which has Debian's modules.
    process.start("/usr/bin/python3",
                  QStringList{QStringLiteral(TEST_FILES "/") + script} + arguments);
    const bool ended = process.waitForFinished(500'000) && process.exitCode() == 0;
    if (!ended)
        qWarning() << script << process.errorString() << process.readAllStandardError();
    if (output != nullptr)
        *output = process.readAllStandardOutput();
    return ended;
}

QMap<QString, read_book> read_with_openpyxl(const QStringList& paths)
{
    QByteArray output;
    run_script("workbook.py", QStringList("dump") + paths, &output);
    const QJsonObject all = QJsonDocument::fromJson(output).object();
    const auto texts = [](const QJsonValue& values) {
        QStringList list;
        for (const QJsonValue& value : values.toArray())
            list.append(value.toString());
        return list;
    };
    QMap<QString, read_book> books;
    for (auto book = all.begin(); book != all.end(); ++book) {
        for (const QJsonValue& value : book.value().toArray()) {
            const QJsonObject sheet = value.toObject();
            read_sheet one{sheet["name"].toString(),   {},
                           texts(sheet["types"]),      texts(sheet["fonts"]),
                           sheet["height"].toDouble(), {}};
            for (const QJsonValue& row : sheet["rows"].toArray())
                one.rows.append(texts(row));
            for (const QJsonValue& width : sheet["widths"].toArray())
                one.widths.append(width.toDouble());
            books[book.key()].append(one);
        }
    }
    return books;
}

namespace {

/// One kind's heads as they stand in the files, blocks apart.
struct heads
{
    const char* summary[2];
    const char* points[2];
    const char* points_alone[2]; ///< where they differ from the points behind a summary
};

constexpr char chinese_points[] = "序号,定位时间,经度,纬度,海拔,精度因子（HDOP）";
constexpr char chinese_zoned[] = "序号,定位时间,带号,经度,纬度,海拔,精度因子（HDOP）";
constexpr char english_zoned[] =
    "No. ,Positioning Time,Zone Number,Longitude,Latitude,Altitude,Accuracy Factor (HDOP)";

const heads all_heads[] = {
    {{"序号,时区,开始时间,结束时间,设备ID,测量模式,参数,坡度,面积单位,面积,面积(平方米),距离单位,"
      "距离,货币单位,单价,总价,坐标系统,备注",
      "NO.,Time Zone,Start Time,End Time,Device ID,Measurement Mode,Parameters,Slope,Area Unit,"
      "Area,Area (Square Meters),Distance Unit,Distance,Currency Unit,Unit Price,Total Price,"
      "Coordinate System,Remarks"},
     {chinese_points, "NO.,Positioning Time,Longitude,Latitude,Altitude,Accuracy Factor (HDOP)"},
     {}},
    {{"序号,时区,开始时间,结束时间,设备ID,测量模式,距离单位,直线距离,曲线距离,货币单位,单价,总价,"
      "坐标系统,备注",
      "No.,Time Zone,Start Time,End Time,Device ID,Measurement Mode,Distance Unit,"
      "Straight-line Distance,Curved Distance,Currency Unit,Unit Price,Total Price,"
      "Coordinate System,Remarks"},
     {chinese_points, "No.,Positioning Time,Longitude,Latitude,Altitude,Accuracy Factor (HDOP)"},
     {}},
    {{"序号,时区,设备ID,坐标系统,定位时间,带号",
      "No.,Time Zone,Device ID,Coordinate System,Positioning Time,Zone Number"},
     {"经度,纬度,海拔,精度因子（HDOP）,速度,航向角,备注",
      "Longitude,Latitude,Altitude,Accuracy Factor (HDOP),Speed,Heading Angle,Remarks"},
     {"序号,定位时间,带号,经度,纬度,海拔,精度因子（HDOP）,速度,航向角",
      "No.,Positioning Time,Zone Number,Longitude,Latitude,Altitude,Accuracy Factor (HDOP),Speed,"
      "Heading Angle"}},
    {{"序号,时区,创建时间,设备ID,航点数量,距离单位,航线距离,面积单位,面积,坐标系统,备注",
      "No.,Time Zone,Creation Time,Device ID,Number of Waypoints,Distance Unit,Route Distance,"
      "Area Unit,Area,Coordinate System,Remarks"},
     {chinese_zoned, english_zoned},
     {}},
    {{"序号,时区,开始时间,结束时间,设备ID,航点数量,距离单位,曲线距离,坐标系统,备注",
      "No.,Time Zone,Start Time,End Time,Device ID,Number of Waypoints,Distance Unit,"
      "Curved Distance,Coordinate System,Remarks"},
     {chinese_zoned, english_zoned},
     {}},
    {{"序号,时区,创建时间,设备ID,样点数量,距离单位,放样距离,坐标系统,备注",
      "No.,Time Zone,Creation Time,Device ID,Number of Sample Points,Distance Unit,"
      "Staking Distance,Coordinate System,Remarks"},
     {chinese_zoned, english_zoned},
     {}},
};

const heads& heads_of(const QString& kind)
{
    return all_heads[kinds.indexOf(kind)];
}

QStringList split(const char* text)
{
    return QString(text).split(',');
}

} // namespace

QStringList full_heads(const QString& kind, int language)
{
    const heads& of_kind = heads_of(kind);
    return split(of_kind.summary[language]) + split(of_kind.points[language]);
}

int summary_columns(const QString& kind)
{
    return static_cast<int>(split(heads_of(kind).summary[0]).size());
}

QStringList point_heads(const QString& kind, int language)
{
    const heads& of_kind = heads_of(kind);
    const char* alone = of_kind.points_alone[language];
    return split(alone != nullptr ? alone : of_kind.points[language]);
}

QStringList plane_heads(QStringList heads)
{
    for (QString& head : heads) {
        if (head == "经度" || head == "Longitude")
            head = "X";
        if (head == "纬度" || head == "Latitude")
            head = "Y";
    }
    return heads;
}
