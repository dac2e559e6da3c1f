#pragma once

#include "exchange/file_import_thread.h"

#include <QByteArray>
#include <QFile>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdlib>

/// Imports \a bytes as a file with that suffix and checks that what is taken is
/// whole: the four lists in step, a line for each point.
inline void fuzz_import(const QByteArray& bytes, const char* suffix)
{
    static const QTemporaryDir folder;
    static const QString path = folder.filePath(QStringLiteral("x.") + QLatin1String(suffix));
    const auto check = [](bool holds) {
        if (!holds)
            std::abort();
    };
    QFile file(path);
    check(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
    file.close();

    // The size says which format, so that every file is a seed as it is.
    constexpr int modes = 5;
    file_import_thread importer;
    importer.import_file(path, static_cast<int>(bytes.size() % modes), nullptr, 0);
    const qsizetype records = importer.table_list.size();
    check(importer.data_msg.size() == records);
    check(importer.data_msg_altitude.size() == records);
    check(importer.point_msg_all.size() == records);
    for (qsizetype at = 0; at < records; ++at) {
        const qsizetype points = importer.point_msg_all[at].size();
        check(importer.table_list[at].numpoint == QString::number(points));
        check(importer.data_msg_altitude[at].count(u'\n') == points);
        check(importer.data_msg[at].count(u',') == std::max<qsizetype>(2 * points - 1, 0));
    }
}
