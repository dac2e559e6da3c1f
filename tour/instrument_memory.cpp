#include "instrument_memory.h"

#include "stage.h"

#include "core/code_tables.h"
#include "support/instrument_process.h"

#include <QDateTime>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace {

constexpr int points_in_a_frame = 51;

} // namespace

contents contents_of(int measurements, int points)
{
    contents all;
    all.options = {QStringLiteral("--measurements"), QString::number(measurements),
                   QStringLiteral("--points"), QString::number(points)};
    const QByteArray json =
        instrument_process::run(QStringList{QStringLiteral("--json")} + all.options).output;
    int frame = 0;
    for (const auto& one : QJsonDocument::fromJson(json).array()) {
        const int number = one[u"kind"].toInt();
        const auto kind = std::find_if(measurement_kinds.begin(), measurement_kinds.end(),
                                       [number](const auto& row) { return row.number == number; });
        check(kind != measurement_kinds.end(),
              QStringLiteral("a measurement of kind %1").arg(number));
        const QString method = kind->method.toString();
        QList<qint64> numbers;
        for (const auto& point : one[u"points"].toArray())
            numbers << point[0].toInteger() << point[1].toInteger();
        const auto start = QDateTime::fromString(one[u"start"].toString(), Qt::ISODate);
        all.by_frames.append(
            mark::of(start.toString(QStringLiteral("yyyy-M-d H:m:s")), method, numbers));
        // Staking-out lines have no short form, and the long one brings no name.
        all.by_text.append(mark::of(method == staking_out ? QStringLiteral("0")
                                                          : start.toString(u"yyyyMMddHHmmss"),
                                    method, numbers));
        const auto frames = (numbers.size() / 2 + points_in_a_frame - 1) / points_in_a_frame;
        frame += 1 + static_cast<int>(frames);
        all.last_frames.append(frame);
    }
    check(all.size() == measurements, QStringLiteral("the instrument tells of no memory"));
    return all;
}

ledger deliveries(const ledger& before, const contents& memory, qsizetype whole)
{
    ledger come;
    come.add(before, whole);
    for (qsizetype i = 0; i < whole; ++i)
        come.add(memory.by_frames[i], whole - i);
    return come;
}
