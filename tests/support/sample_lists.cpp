#include "support/sample_lists.h"

QString sample_lists::coordinates_of(int number)
{
    const double longitude = 126.65 + number * 0.001;
    return QStringLiteral("%1,45.750000000000,%2,45.751000000000")
        .arg(longitude, 0, 'f', 12)
        .arg(longitude + 0.0005, 0, 'f', 12);
}

sample_lists sample_lists::of_methods(const QStringList& methods)
{
    sample_lists lists;
    for (const QString& method : methods) {
        const auto number = static_cast<int>(lists.table_list.size());
        measuringData record;
        record.method = method;
        record.numpoint = QStringLiteral("2");
        record.name = QStringLiteral("m%1").arg(number);
        record.time = QStringLiteral("2024-3-5 7:8:%1").arg(number % 60);
        record.areameter = QString::number(1000 + number);
        record.areamu = QStringLiteral("1.50");
        record.distance = QStringLiteral("130.5");
        lists.table_list.append(record);
        lists.data_msg.append(coordinates_of(number));
        QStringList parts = coordinates_of(number).split(QLatin1Char(','));
        lists.data_msg_altitude.append(QStringLiteral("%1,%2,120.50\n%3,%4,121.00\n")
                                           .arg(parts[0], parts[1], parts[2], parts[3]));
        lists.point_msg_all.append(QList<point_msg>(2));
    }
    return lists;
}

sample_lists sample_lists::named(const QStringList& names)
{
    sample_lists lists = of_methods(QStringList(names.size(), QStringLiteral("面积")));
    for (qsizetype at = 0; at < names.size(); ++at)
        lists.table_list[at].name = names[at];
    return lists;
}

sample_lists sample_lists::one_of_each()
{
    return of_methods({QStringLiteral("面积"), QStringLiteral("距离"), QStringLiteral("航点"),
                       QStringLiteral("航线"), QStringLiteral("航迹"), QStringLiteral("放样"),
                       QStringLiteral("自制"), QStringLiteral("雷达")});
}
