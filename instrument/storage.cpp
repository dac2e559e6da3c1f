#include "instrument/storage.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace instrument {

void storage::take(const received_measurement& one)
{
    stored.append(one.measured);
    received.append(one);
    if (on_received)
        on_received(one);
}

QByteArray to_json(const QList<received_measurement>& received)
{
    QJsonArray all;
    for (const received_measurement& one : received) {
        QJsonObject object = to_json_object(one.measured);
        object[u"name"] = one.name;
        object[u"packets"] = one.by_packets;
        all.append(object);
    }
    return QJsonDocument(all).toJson(QJsonDocument::Compact) + '\n';
}

} // namespace instrument
