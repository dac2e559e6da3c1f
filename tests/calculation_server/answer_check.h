#pragma once

#include "calculation_server/datagrams.h"

#include <QList>

#include <cmath>

/// What holds for the answer to any datagram: seven finite numbers, or a refusal
/// that has not seven parts, or nothing to a refusal. Returns what does not hold,
/// empty when all does.
inline QString fault_of_answer(const QByteArray& datagram)
{
    QString summary;
    const QByteArray reply = calculation::answer(datagram, summary);
    if (summary.isEmpty() || summary.contains(u'\n'))
        return QStringLiteral("no line for the log");
    if (datagram.startsWith('!'))
        return reply.isEmpty() ? QString() : QStringLiteral("a refusal was answered");
    if (reply.size() < 3 || !reply.endsWith('*'))
        return QStringLiteral("no whole answer");
    const QByteArrayList parts = reply.sliced(1, reply.size() - 2).split(',');
    if (reply.startsWith('!'))
        return parts.size() == 1 ? QString() : QStringLiteral("a refusal of several parts");
    if (!reply.startsWith('$') || parts.size() != 7)
        return QStringLiteral("not seven parts");
    for (const QByteArray& part : parts) {
        bool good = false;
        if (!std::isfinite(part.toDouble(&good)) || !good)
            return QStringLiteral("a part that is no number");
    }
    return {};
}
