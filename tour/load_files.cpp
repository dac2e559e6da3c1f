// Files: there and back, damaged ones, large ones.

#include "load_run.h"

#include "tables.h"

#include "exchange/corpus_table.h"

#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QThread>

#include <algorithm>
#include <iterator>
#include <vector>

namespace {

const QString csv_refused = QStringLiteral("导入: csv文件导入失败");

/// Writes Placemarks of so many points each into a file, and enters what it holds.
/// Its first tag is no XML if it is `damaged`: then the names are lost.
void write_kml_file(const QString& path, int placemarks, int points, bool damaged, ledger& holds)
{
    QFile file(path);
    check(file.open(QIODevice::WriteOnly), path);
    const QByteArray space = "http://www.opengis.net/kml/2.2";
    file.write("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<kml xmlns=" +
               (damaged ? space : '"' + space + '"') + ">\n<Document>\n");
    for (int i = 0; i < placemarks; ++i) {
        const QString name = QStringLiteral("Line %1").arg(i);
        QList<qint64> numbers;
        QByteArray text;
        for (int k = 0; k < points; ++k) {
            const qint64 longitude = 1'045'000'000 + i * 10'000LL + k;
            const qint64 latitude = 305'000'000 + k * 13LL;
            numbers << longitude << latitude;
            text += QByteArray::number(static_cast<double>(longitude) / 1e7, 'f', 7) + ',' +
                    QByteArray::number(static_cast<double>(latitude) / 1e7, 'f', 7) + ",500.1\n";
        }
        file.write("<Placemark>\n<name>" + name.toLatin1() +
                   "</name>\n<description>made elsewhere</description>\n<LineString>"
                   "<coordinates>\n" +
                   text + "</coordinates></LineString>\n</Placemark>\n");
        holds.add(mark::of(damaged ? QStringLiteral("0") : name, way_line, numbers));
    }
    file.write("</Document>\n</kml>\n");
}

} // namespace

/// A choice of the export dialog.
struct load_run::file_format
{
    format_index index;
    const char* suffix;
    bool folder;          ///< one file for each measurement
    const char* exported; ///< the box behind it
    const char* imported; ///< the box when its file is read back; null where that is not done
};

void load_run::open_import()
{
    m_at.click(QStringLiteral("data_input_file"));
    m_at.wait_for(QStringLiteral("the import window"),
                  [] { return window_of("input_window") != nullptr; });
    QThread::msleep(300); // until the window manager has placed it
}

/// Imports a file in the import window, which is open; the rows that came.
qsizetype load_run::import_file(const QString& path, const QString& box)
{
    const auto rows = [] { return held().table_list.size(); };
    const qsizetype before = m_at.see(rows);
    m_at.click(QStringLiteral("pushButton_2"));
    m_at.give_path(path);
    expect_boxes({box});
    return m_at.see(rows) - before;
}

/// Imports the one line of the small file.
void load_run::import_plain()
{
    open_import();
    check(import_file(m_at.file(QStringLiteral("plain.kml")),
                      QStringLiteral("导入: 自制kml文件导入成功")) >= 1,
          QStringLiteral("nothing was imported"));
    m_own.add(mark::of(QStringLiteral("One line"), way_line,
                       {1045000000, 305000000, 1046000000, 306000000}));
    close("input_window");
}

/// Exports what is ticked through the dialog.
void load_run::export_ticked(format_index format, const QString& path, const QString& box)
{
    m_at.click(QStringLiteral("data_output_file"));
    m_at.wait_for_dialog(QStringLiteral("outputWindow"));
    m_at.click_in_front(QStringLiteral("export_format"));
    QThread::msleep(200);
    m_at.press(QStringLiteral("Home"));
    for (int i = 0; i < format; ++i)
        m_at.press(QStringLiteral("Down"));
    m_at.press(QStringLiteral("Return"));
    m_at.wait_for(QStringLiteral("format %1").arg(format), [format] {
        const auto* list =
            stage::in_front()->findChild<QComboBox*>(QStringLiteral("export_format"));
        return list != nullptr && list->currentIndex() == format;
    });
    m_at.click_in_front(QStringLiteral("pushButton"));
    m_at.give_path(path);
    expect_boxes({box});
    m_at.close_dialog();
}

/// Enters what comes back from a file of these measurements.
void load_run::add_imported(format_index format, const QList<mark>& written)
{
    const bool has_staking_out = std::any_of(written.cbegin(), written.cend(), [](const mark& was) {
        return was.method == staking_out;
    });
    const bool drawing = format == one_dxf_format;
    const QList<mark> come = last_marks(written.size());
    // A Placemark without a figure has all of a KML file read as lines and points
    // without names.
    const bool nameless = format == kml_format && has_staking_out;
    const bool figures_only = format == kml_format || format == one_gpx_format;
    for (mark was : written) {
        if (figures_only && was.method == staking_out)
            continue;
        if (nameless)
            was.name = QStringLiteral("0");
        if (nameless || drawing)
            was.method = was.points == 1 ? way_point : drawing ? track : way_line;
        if (drawing) {
            // Its name is the time at which it was imported.
            const auto same = std::find_if(come.cbegin(), come.cend(), [&was](const mark& one) {
                return one.places == was.places && one.points == was.points;
            });
            check(same != come.cend(), QStringLiteral("not in the drawing: ") + was.name);
            was.name = same->name;
        }
        m_own.add(was);
    }
}

/// Imports a file of which nobody knows what can still be read, in the import window,
/// which is open. What cannot be read brings nothing.
void load_run::import_damaged(const QString& path)
{
    const auto rows = [] { return held().table_list.size(); };
    const qsizetype before = m_at.see(rows);
    m_at.click(QStringLiteral("pushButton_2"));
    m_at.give_path(path);
    const QString box = boxes(1).constFirst();
    const qsizetype come = m_at.see(rows) - before;
    const bool read = box.contains(QStringLiteral("成功")) || box.endsWith(u"successful");
    check(come == 0 || (read && come > 0),
          QStringLiteral("%1: %2 rows and \"%3\"").arg(path).arg(come).arg(box));
    for (const mark& one : last_marks(come))
        m_own.add(one);
    compare(QStringLiteral("the import of ") + path);
}

/// Saves the workbook that is filled in by hand, and imports it with its examples.
void load_run::import_template()
{
    const QString path = m_at.file(QStringLiteral("template.xlsx"));
    m_at.click(QStringLiteral("pushButton"));
    m_at.give_path(path);
    expect_boxes({m_english ? QStringLiteral("Excel: Excel file template has been downloaded")
                            : QStringLiteral("Excel: Excel文件模版已下载")});
    constexpr qsizetype examples = 13; // two of each kind, and three waypoints
    const qsizetype come = import_file(
        path, m_english ? QStringLiteral("import: Excel multi-data file import successful")
                        : QStringLiteral("导入: Excel多数据文件导入成功"));
    check(come == examples, QStringLiteral("%1 rows of the template").arg(come));
    for (const mark& one : last_marks(come))
        m_own.add(one);
    QFile::remove(path);
    compare(QStringLiteral("the import of the template"));
}

/// Exports what is ticked into a file and imports that, whole and then its first half.
void load_run::there_and_back(const file_format& one, const QString& path)
{
    const QList<mark> ticked = ticked_marks();
    export_ticked(one.index, path, QString::fromUtf8(one.exported));
    const qint64 size = QFileInfo(path).size();
    check(size > 0, path);
    if (one.index == picture_format) {
        QFile::remove(path);
        return;
    }
    open_import();
    if (one.index == excel_format) {
        // A sheet for each measurement, which no import takes.
        import_file(path, m_english ? QStringLiteral("import: Excel multi-data file import failed")
                                    : QStringLiteral("导入: Excel多数据文件导入失败"));
        import_template();
    } else if (one.index == one_csv_format && m_english) {
        import_file(path, QStringLiteral("导入: csv文件导入失败")); // its headings are English
    } else if (one.imported != nullptr) {
        import_file(path, QString::fromUtf8(one.imported));
        add_imported(one.index, ticked);
    }
    compare(QStringLiteral("an export and an import"));
    check(QFile::resize(path, size / 2), path);
    import_damaged(path);
    close("input_window");
    QFile::remove(path);
}

/// Exports what is ticked into a folder, a file for each measurement.
void load_run::into_a_folder(const file_format& one, const QString& folder)
{
    const qsizetype most = ticked_marks().size();
    QDir().mkpath(folder);
    export_ticked(one.index, folder, QString::fromUtf8(one.exported));
    const qsizetype files = QDir(folder).entryList(QDir::Files).size();
    check(files > 0 && files <= most,
          QStringLiteral("%1 files of %2 measurements").arg(files).arg(most));
    QDir(folder).removeRecursively();
    compare(QStringLiteral("an export"));
}

void load_run::files_there_and_back()
{
    static constexpr file_format formats[] = {
        {one_csv_format, "csv", false, "csv: csv多数据合并导出成功", "导入: csv多数据文件导入成功"},
        {one_dxf_format, "dxf", false, "dxf: dxf多数据合并导出成功", "导入: dxf文件导入成功"},
        {one_gpx_format, "gpx", false, "gpx: gpx多数据合并导出成功", "导入: gpx文件导入成功"},
        {excel_format, "xlsx", false, "Excel: Excel文件导出成功", nullptr},
        {kml_format, "kml", false, "kml: kml文件导出成功", "导入: kml文件导入成功"},
        {more_csv_format, "csv", true, "csv: csv单数据分开导出成功", nullptr},
        {more_dxf_format, "dxf", true, "dxf: dxf单数据分开导出成功", nullptr},
        {more_gpx_format, "gpx", true, "gpx: gpx单数据分开导出成功", nullptr},
        {picture_format, "png", false, "img: 图片文件导出成功", nullptr},
    };

    delete_all();
    detach_all();
    attach_adb(m_few);
    read({read_whole});
    m_own.add(deliveries({}, m_few, m_few.size()));
    compare(QStringLiteral("a read"));
    const int rows = m_at.see([] { return tables::rows(); });
    for (int i = 0; i < 3; ++i) {
        const file_format& one = formats[m_format_next++ % std::size(formats)];
        doing(QStringLiteral("export and import, ") +
              QLatin1String(export_formats[static_cast<size_t>(one.index)].label));
        tick_all(false);
        // The last delivery of the read has one measurement of each kind.
        for (int row = rows - 6; row < rows; ++row)
            tick(row);
        const QString path = m_at.file(QStringLiteral("%1-%2").arg(m_round).arg(one.index));
        if (one.folder)
            into_a_folder(one, path);
        else
            there_and_back(one, path + u'.' + QLatin1String(one.suffix));
    }
}

/// Foreign and damaged files, each with what is known of it.
void load_run::damaged_files()
{
    struct entry
    {
        QString path;
        QString box; ///< empty: whatever comes
        int records;
    };
    static const std::vector<entry> all = [] {
        std::vector<entry> found;
        const QString folder = QStringLiteral(VELMO_CORPUS "/");
        for (const kml_file& one : kml_corpus) {
            found.push_back({folder + QStringLiteral("kml/") + QLatin1String(one.file),
                             one.result == kml_failed ? QStringLiteral("导入: kml文件导入失败")
                             : one.result == kml_own ? QStringLiteral("导入: kml文件导入成功")
                                                     : QStringLiteral("导入: 自制kml文件导入成功"),
                             one.records - one.twice});
        }
        for (const gpx_file& one : gpx_corpus) {
            found.push_back({folder + QStringLiteral("gpx/") + QLatin1String(one.file),
                             one.read ? QStringLiteral("导入: gpx文件导入成功")
                                      : QStringLiteral("导入: gpx文件导入失败"),
                             one.read ? one.records : 0});
        }
        for (const char* const kind : {"csv", "dxf"}) {
            const QDir files(folder + QLatin1String(kind));
            for (const QString& name : files.entryList(QDir::Files))
                found.push_back({files.filePath(name), {}, 0});
        }
        return found;
    }();
    open_import();
    constexpr int at_a_time = 12;
    for (int i = 0; i < at_a_time; ++i) {
        const entry& one = all[m_corpus_next++ % all.size()];
        doing(QStringLiteral("import ") + QFileInfo(one.path).fileName());
        if (one.box.isEmpty()) {
            import_damaged(one.path);
            continue;
        }
        const qsizetype come = import_file(one.path, one.box);
        check(come == one.records,
              QStringLiteral("%1: %2 rows instead of %3").arg(one.path).arg(come).arg(one.records));
        for (const mark& has_come : last_marks(come))
            m_own.add(has_come);
        compare(QStringLiteral("the import of ") + one.path);
    }
    close("input_window");
}

void load_run::large_files()
{
    delete_all();
    open_import();
    const QString path = m_at.file(QStringLiteral("large.kml"));
    for (const bool damaged : {false, true}) {
        doing(damaged ? QStringLiteral("import a large file that is damaged")
                      : QStringLiteral("import a large file"));
        write_kml_file(path, 100, 2000, damaged, m_own);
        import_file(path, damaged ? QStringLiteral("导入: kml文件导入成功")
                                  : QStringLiteral("导入: 自制kml文件导入成功"));
        compare(QStringLiteral("a large file"));
    }
    QFile::remove(path);
    close("input_window");
    doing(QStringLiteral("tick large figures"));
    tick_all(true);
    tick_all(false);
}
