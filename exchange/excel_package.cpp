#include "exchange/excel_package.h"

#include <QBuffer>
#include <QDebug>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>

#include <archive.h>
#include <archive_entry.h>
#include <xlsxcell.h>
#include <xlsxdocument.h>

#include <algorithm>
#include <memory>
#include <optional>

namespace {

/// Limits just above a workbook of a million points, which is a million rows of
/// six cells in 400 MB of XML with up to four million different texts. Without
/// limits a file of some megabytes could take all memory.
constexpr qint64 most_unpacked = 600'000'000;     // bytes
constexpr qint64 most_cells = 7'500'000;          // sheets, rows and cells
constexpr qint64 most_strings = 4'100'000;        // and their list
constexpr qint64 most_other_elements = 2'000'000; // of the workbook and its styles

using parts = QHash<QString, QByteArray>;

/// The data of the entry that the archive stands at, or nothing if it is damaged
/// or more than \a limit.
std::optional<QByteArray> entry_data(archive* source, qint64 limit)
{
    QByteArray data;
    const void* block = nullptr;
    size_t size = 0;
    la_int64_t offset = 0;
    int status = ARCHIVE_OK;
    while ((status = archive_read_data_block(source, &block, &size, &offset)) == ARCHIVE_OK) {
        if (offset != data.size() || static_cast<qint64>(size) > limit - data.size())
            return {};
        data.append(static_cast<const char*>(block), static_cast<qsizetype>(size));
    }
    return status == ARCHIVE_EOF ? std::optional(data) : std::nullopt;
}

/// The XML parts of a zip archive by their names; none if it is damaged.
parts unpack(const QByteArray& bytes)
{
    const std::unique_ptr<archive, decltype(&archive_read_free)> source(archive_read_new(),
                                                                        archive_read_free);
    archive_read_support_format_zip_seekable(source.get());
    if (archive_read_open_memory(source.get(), bytes.constData(),
                                 static_cast<size_t>(bytes.size())) != ARCHIVE_OK)
        return {};
    parts found;
    qint64 left = most_unpacked;
    archive_entry* entry = nullptr;
    int status = ARCHIVE_OK;
    while ((status = archive_read_next_header(source.get(), &entry)) == ARCHIVE_OK) {
        const char* name = archive_entry_pathname_utf8(entry);
        const QString path = QString::fromUtf8(name);
        if (!path.endsWith(QStringLiteral(".xml")) && !path.endsWith(QStringLiteral(".rels")))
            continue;
        if (archive_entry_size(entry) > left)
            return {};
        const std::optional<QByteArray> data = entry_data(source.get(), left);
        if (!data)
            return {};
        left -= data->size();
        found.insert(path, *data);
    }
    return status == ARCHIVE_EOF ? found : parts();
}

/// A relation of a part to another, whatever words its writer has for it.
struct relation
{
    QString id;
    QString type;   ///< the last word of the type
    QString target; ///< path of the part in the package
};

QList<relation> relations_of(const parts& all, const QString& part)
{
    const qsizetype name_at = part.lastIndexOf(QLatin1Char('/')) + 1;
    const QString folder = part.left(name_at);
    QXmlStreamReader reader(
        all.value(folder + QStringLiteral("_rels/") + part.mid(name_at) + QStringLiteral(".rels")));
    QList<relation> relations;
    while (!reader.atEnd()) {
        if (reader.readNext() != QXmlStreamReader::StartElement ||
            reader.name() != QLatin1String("Relationship"))
            continue;
        const auto attribute = [&reader](const char* name) {
            return reader.attributes().value(QLatin1String(name)).toString();
        };
        const QString target = attribute("Target");
        const QString path = target.startsWith(QLatin1Char('/')) ? target.mid(1) : folder + target;
        relations.append({attribute("Id"), attribute("Type").section(QLatin1Char('/'), -1),
                          QDir::cleanPath(path)});
    }
    return relations;
}

/// How many elements a part has; nothing if it is no sound XML or has more than
/// \a limit.
std::optional<qint64> elements_of(const QByteArray& xml, qint64 limit)
{
    QXmlStreamReader reader(xml);
    qint64 elements = 0;
    while (!reader.atEnd() && elements <= limit)
        elements += reader.readNext() == QXmlStreamReader::StartElement ? 1 : 0;
    return reader.hasError() || elements > limit ? std::nullopt : std::optional(elements);
}

/// Whether the workbook counts dates from 1904. Its part may say so or the
/// contrary.
bool counts_from_1904(const QByteArray& workbook)
{
    QXmlStreamReader reader(workbook);
    while (!reader.atEnd()) {
        if (reader.readNext() == QXmlStreamReader::StartElement &&
            reader.name() == QLatin1String("workbookPr")) {
            const QString value = reader.attributes().value(QLatin1String("date1904")).toString();
            return value == QStringLiteral("1") || value == QStringLiteral("true");
        }
    }
    return false;
}

/// A zip archive in memory, its entries stored as they are.
class stored_archive
{
public:
    stored_archive() : m_archive(archive_write_new(), archive_write_free)
    {
        archive_write_set_format_zip(m_archive.get());
        archive_write_zip_set_compression_store(m_archive.get());
        archive_write_set_bytes_in_last_block(m_archive.get(), 1);
        archive_write_open(m_archive.get(), &m_bytes, nullptr, append, nullptr);
    }

    void add(const QString& name, const QByteArray& data)
    {
        const std::unique_ptr<archive_entry, decltype(&archive_entry_free)> entry(
            archive_entry_new(), archive_entry_free);
        archive_entry_set_pathname_utf8(entry.get(), name.toUtf8().constData());
        archive_entry_set_filetype(entry.get(), AE_IFREG);
        archive_entry_set_perm(entry.get(), 0644);
        archive_entry_set_size(entry.get(), data.size());
        archive_write_header(m_archive.get(), entry.get());
        archive_write_data(m_archive.get(), data.constData(), static_cast<size_t>(data.size()));
    }

    QByteArray finish()
    {
        archive_write_close(m_archive.get());
        return m_bytes;
    }

private:
    static la_ssize_t append(archive* /*target*/, void* bytes, const void* data, size_t size)
    {
        static_cast<QByteArray*>(bytes)->append(static_cast<const char*>(data),
                                                static_cast<qsizetype>(size));
        return static_cast<la_ssize_t>(size);
    }

    QByteArray m_bytes;
    std::unique_ptr<archive, decltype(&archive_write_free)> m_archive;
};

/// A relations part in the words of QXlsx.
QByteArray relations_part(const QList<relation>& relations)
{
    QByteArray xml;
    QXmlStreamWriter writer(&xml);
    writer.writeStartDocument();
    writer.writeStartElement(QStringLiteral("Relationships"));
    for (const relation& one : relations) {
        writer.writeEmptyElement(QStringLiteral("Relationship"));
        writer.writeAttribute(QStringLiteral("Id"), one.id);
        writer.writeAttribute(
            QStringLiteral("Type"),
            QStringLiteral("http://schemas.openxmlformats.org/officeDocument/2006/relationships/") +
                one.type);
        writer.writeAttribute(QStringLiteral("Target"), one.target);
    }
    writer.writeEndElement();
    writer.writeEndDocument();
    return xml;
}

/// The number formats of a styles part and of its cells.
struct number_formats
{
    QByteArray xml; ///< a styles part with all of them marked as in use
    int cell_styles = 0;
};

number_formats number_formats_of(const QByteArray& styles)
{
    number_formats found;
    QXmlStreamWriter writer(&found.xml);
    writer.writeStartDocument();
    writer.writeStartElement(QStringLiteral("styleSheet"));
    QXmlStreamReader reader(styles);
    bool listed = false; // within one of the two lists
    while (!reader.atEnd()) {
        const QXmlStreamReader::TokenType token = reader.readNext();
        const QString name = reader.name().toString();
        const bool is_list = name == QStringLiteral("numFmts") || name == QStringLiteral("cellXfs");
        if (token == QXmlStreamReader::EndElement && is_list) {
            writer.writeEndElement();
            listed = false;
        } else if (token == QXmlStreamReader::StartElement && is_list) {
            writer.writeStartElement(name);
            writer.writeAttributes(reader.attributes());
            listed = true;
        } else if (token == QXmlStreamReader::StartElement && listed) {
            const bool is_cell = name == QStringLiteral("xf");
            if (!is_cell && name != QStringLiteral("numFmt"))
                continue;
            writer.writeEmptyElement(name);
            for (const char* attribute : {"numFmtId", "formatCode"}) {
                const QStringView value = reader.attributes().value(QLatin1String(attribute));
                if (!value.isNull())
                    writer.writeAttribute(QLatin1String(attribute), value.toString());
            }
            if (is_cell) {
                writer.writeAttribute(QStringLiteral("applyNumberFormat"), QStringLiteral("1"));
                ++found.cell_styles;
            }
        }
    }
    writer.writeEndElement();
    writer.writeEndDocument();
    return found;
}

/// The parts of a workbook, named by \a relations, as an archive that QXlsx reads.
QByteArray packed(const QByteArray& workbook, const QList<relation>& relations,
                  const parts& related)
{
    stored_archive stored;
    for (const relation& one : relations)
        stored.add(QStringLiteral("xl/") + one.target, related[one.target]);
    stored.add(QStringLiteral("xl/workbook.xml"), workbook);
    stored.add(QStringLiteral("xl/_rels/workbook.xml.rels"), relations_part(relations));
    stored.add(QStringLiteral("_rels/.rels"),
               relations_part({{QStringLiteral("rId1"), QStringLiteral("officeDocument"),
                                QStringLiteral("xl/workbook.xml")}}));
    stored.add(QStringLiteral("[Content_Types].xml"), QByteArrayLiteral("<Types/>"));
    return stored.finish();
}

/// Which of the cell styles of a styles part are those of dates: QXlsx is asked with
/// a sheet that has a cell in each.
QList<bool> date_styles(const QByteArray& styles)
{
    constexpr int most_styles = 65'536; // a spreadsheet has room for a few less
    const number_formats formats = number_formats_of(styles);
    const int count = std::min(formats.cell_styles, most_styles);
    QByteArray cells;
    for (int style = 0; style < count; ++style) {
        const QByteArray number = QByteArray::number(style);
        cells +=
            "<c r=\"A" + QByteArray::number(style + 1) + "\" s=\"" + number + "\"><v>1</v></c>";
    }
    const QString sheet = QStringLiteral("sheet.xml");
    const QString own = QStringLiteral("styles.xml");
    QByteArray bytes = packed(
        "<workbook xmlns:r=\"r\"><sheets><sheet name=\"a\" sheetId=\"1\" r:id=\"a\"/></sheets>"
        "</workbook>",
        {{QStringLiteral("a"), QStringLiteral("worksheet"), sheet},
         {QStringLiteral("b"), QStringLiteral("styles"), own}},
        {{sheet, "<worksheet><sheetData>" + cells + "</sheetData></worksheet>"},
         {own, formats.xml}});
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    const QXlsx::Document document(&buffer);
    QList<bool> are_dates;
    for (int style = 0; style < count; ++style) {
        const auto cell = document.cellAt(style + 1, 1);
        are_dates.append(cell && cell->isDateTime());
    }
    return are_dates;
}

QByteArray read_regular_file(const QString& path)
{
    QFile file(path);
    // A pipe, for instance, would never end.
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly) || file.size() > most_unpacked)
        return {};
    return file.readAll();
}

} // namespace

excel_package read_excel_package(const QString& path)
{
    parts all = unpack(read_regular_file(path));
    QString workbook;
    for (const relation& one : relations_of(all, QString())) {
        if (one.type == QStringLiteral("officeDocument"))
            workbook = one.target;
    }
    if (!all.contains(workbook)) {
        qDebug() << "no workbook in" << path;
        return {};
    }
    excel_references references;
    references.date1904 = counts_from_1904(all[workbook]);
    qint64 cells_left = most_cells;
    qint64 strings_left = most_strings;
    qint64 elements_left = most_other_elements;
    const auto is_sound = [&elements_left](const QByteArray& xml) {
        const std::optional<qint64> elements = elements_of(xml, elements_left);
        elements_left -= elements.value_or(0);
        return elements.has_value();
    };

    excel_package package;
    QList<relation> relations;
    parts related;
    /// Takes a part over; false if it cannot be read.
    const auto take = [&](const relation& one, const QByteArray& xml) {
        if (one.type == QStringLiteral("sharedStrings")) {
            const std::optional<QStringList> strings = read_shared_strings(xml, strings_left);
            references.strings = strings.value_or(QStringList());
            return strings.has_value();
        }
        if (one.type == QStringLiteral("styles")) {
            if (!is_sound(xml))
                return false;
            references.date_styles = date_styles(xml);
            return true;
        }
        const QString name = QStringLiteral("%1%2.xml").arg(one.type).arg(relations.size() + 1);
        relations.append({one.id, one.type, name});
        if (one.type == QStringLiteral("chartsheet")) {
            related[name] = xml;
            return is_sound(xml);
        }
        related[name] = QByteArrayLiteral("<worksheet/>");
        const std::optional<sheet_texts> sheet = read_sheet_texts(xml, references, cells_left);
        package.sheets[QStringLiteral("xl/") + name] = sheet.value_or(sheet_texts());
        return sheet.has_value();
    };
    // The cells refer to what stands in front of the sheets here.
    const QList<relation> of_workbook = relations_of(all, workbook);
    for (const char* type : {"sharedStrings", "styles", "worksheet", "chartsheet"}) {
        for (const relation& one : of_workbook) {
            if (one.type != QLatin1String(type))
                continue;
            if (!all.contains(one.target) || !take(one, all.take(one.target))) {
                qDebug() << "cannot be read:" << one.target;
                return {};
            }
        }
    }
    if (!is_sound(all[workbook])) {
        qDebug() << "cannot be read:" << workbook;
        return {};
    }
    package.bytes = packed(all[workbook], relations, related);
    return package;
}
