// The CSV reader under libFuzzer. The size of the input says which coordinate
// format the file is taken to have, so that every CSV file is a seed as it is.

#include "coordinates/json_file_manager.h"
#include "exchange/csv.h"
#include "exchange/file_import_thread.h"

#include <QByteArray>
#include <QLoggingCategory>

#include <algorithm>
#include <cstdint>
#include <cstdlib>

namespace {

void check(bool holds)
{
    if (!holds)
        std::abort();
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/)
{
    QLoggingCategory::setFilterRules(QStringLiteral("*=false"));
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static file_import_thread importer;
    constexpr std::size_t modes = 5;
    importer.import_file({}, static_cast<int>(size % modes), nullptr, 0); // empties the results
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    if (!importer.take_csv_rows(csv_rows(bytes)))
        return 0;

    // What is taken is whole: the four lists in step, a line for each point.
    const qsizetype records = importer.table_list.size();
    check(importer.data_msg.size() == records);
    check(importer.data_msg_altitude.size() == records);
    check(importer.point_msg_all.size() == records);
    for (qsizetype at = 0; at < records; ++at) {
        const qsizetype points = importer.point_msg_all[at].size();
        check(importer.data_msg_altitude[at].count(u'\n') == points);
        check(importer.data_msg[at].count(u',') == std::max<qsizetype>(2 * points - 1, 0));
    }
    return 0;
}
