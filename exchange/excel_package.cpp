#include "exchange/excel_package.h"

#include <QDebug>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QList>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>

#include <archive.h>
#include <archive_entry.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <memory>
#include <optional>

namespace {

/// Limits just above a workbook of a million points, which is a million rows of
/// six cells in 400 MB of XML with up to four million different texts. QXlsx takes
/// half a kilobyte for a cell and half of that for a text: without limits a file
/// of some megabytes could take all memory.
constexpr qint64 most_unpacked = 600'000'000;     // bytes
constexpr qint64 most_cells = 7'500'000;          // rows and cells
constexpr qint64 most_other_elements = 8'000'000; // two for a text

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

/// What a look at the tags of a sheet finds. A sheet can be large, and QXlsx is
/// about to parse it anyway.
struct sheet_tags
{
    qint64 rows = 0;
    qint64 cells = 0;
    bool sound = true; ///< it has its end, and every cell a place and a value that QXlsx can read
};

/// The value of an attribute of a tag, which is given from its name to its end.
QByteArrayView value_of(QByteArrayView tag, QByteArrayView name)
{
    for (qsizetype at = tag.indexOf(name); at > 0; at = tag.indexOf(name, at + 1)) {
        const qsizetype value = at + name.size() + 2; // behind =" or ='
        if (std::isspace(static_cast<unsigned char>(tag[at - 1])) == 0 || value >= tag.size() ||
            tag[value - 2] != '=')
            continue;
        return tag.sliced(value,
                          std::max<qsizetype>(tag.indexOf(tag[value - 1], value), value) - value);
    }
    return {};
}

/// Whether a text is the place of a cell, such as B2, that a sheet has.
bool is_place(QByteArrayView text)
{
    constexpr int most_columns = 16'384;
    constexpr int most_rows = 1'048'576;
    int column = 0;
    qsizetype at = 0;
    for (; at < text.size() && at < 3 && text[at] >= 'A' && text[at] <= 'Z'; ++at)
        column = column * 26 + (text[at] - 'A' + 1);
    int row = 0;
    const QByteArrayView digits = text.sliced(at);
    if (digits.size() > 7)
        return false;
    for (const char digit : digits) {
        if (digit < '0' || digit > '9')
            return false;
        row = row * 10 + (digit - '0');
    }
    return column > 0 && column <= most_columns && row > 0 && row <= most_rows;
}

sheet_tags look_at_tags(const QByteArray& xml)
{
    constexpr qsizetype enough_for_the_root = 4096;
    QXmlStreamReader root(xml.left(enough_for_the_root));
    root.readNextStartElement();
    const QByteArray prefix = root.prefix().isEmpty() ? QByteArray() : root.prefix().toUtf8() + ':';
    const auto ends_name = [](char c) {
        return c == ' ' || c == '>' || c == '/' || c == '\t' || c == '\n' || c == '\r';
    };
    sheet_tags found;
    found.sound = QByteArrayView(xml).trimmed().endsWith("</" + prefix + "worksheet>");
    const char* const end = xml.constData() + xml.size();
    const char* at = xml.constData();
    while ((at = static_cast<const char*>(
                std::memchr(at, '<', static_cast<std::size_t>(end - at)))) != nullptr) {
        ++at;
        if (std::strncmp(at, prefix.constData(), static_cast<std::size_t>(prefix.size())) != 0)
            continue;
        const char* name = at + prefix.size();
        if (name[0] == 'c' && ends_name(name[1])) {
            ++found.cells;
            const auto* close = static_cast<const char*>(
                std::memchr(name, '>', static_cast<std::size_t>(end - name)));
            const QByteArrayView tag(name, close == nullptr ? end : close);
            if (!is_place(value_of(tag, "r")) || value_of(tag, "t") == "d")
                found.sound = false;
        } else if (name[0] == 'r' && ends_name(name[1]))
            found.sound = false; // a text in pieces
        else if (std::strncmp(name, "row", 3) == 0 && ends_name(name[3]))
            ++found.rows;
    }
    return found;
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

/// The number formats of a styles part and of its cells, all marked as in use.
QByteArray number_styles(const QByteArray& styles)
{
    QByteArray xml;
    QXmlStreamWriter writer(&xml);
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
            if (is_cell)
                writer.writeAttribute(QStringLiteral("applyNumberFormat"), QStringLiteral("1"));
        }
    }
    writer.writeEndElement();
    writer.writeEndDocument();
    return xml;
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
    excel_package package;
    qint64 rows_and_cells = 0;
    qint64 other_elements = 0;
    stored_archive stored;
    const auto take = [&](const relation& from, const QString& name) {
        const QByteArray xml = all.take(from.target);
        bool readable = false;
        if (from.type == QStringLiteral("worksheet")) {
            const sheet_tags tags = look_at_tags(xml);
            package.cells += tags.cells;
            rows_and_cells += tags.rows + tags.cells;
            readable = tags.sound && rows_and_cells <= most_cells;
        } else {
            const std::optional<qint64> elements =
                elements_of(xml, most_other_elements - other_elements);
            readable = elements.has_value();
            other_elements += elements.value_or(0);
        }
        if (!readable)
            qDebug() << "cannot be read:" << from.target;
        else
            stored.add(name, from.type == QStringLiteral("styles") ? number_styles(xml) : xml);
        return readable;
    };

    QList<relation> relations;
    const QList<relation> of_workbook = relations_of(all, workbook);
    for (const relation& one : of_workbook) {
        if (one.type != QStringLiteral("worksheet") && one.type != QStringLiteral("chartsheet") &&
            one.type != QStringLiteral("styles") && one.type != QStringLiteral("sharedStrings"))
            continue;
        const QString name = QStringLiteral("%1%2.xml").arg(one.type).arg(relations.size() + 1);
        relations.append({one.id, one.type, name});
        if (!all.contains(one.target) || !take(one, QStringLiteral("xl/") + name))
            return {};
    }
    package.date1904 = counts_from_1904(all[workbook]);
    if (!take({{}, {}, workbook}, QStringLiteral("xl/workbook.xml")))
        return {};
    stored.add(QStringLiteral("xl/_rels/workbook.xml.rels"), relations_part(relations));
    stored.add(QStringLiteral("_rels/.rels"),
               relations_part({{QStringLiteral("rId1"), QStringLiteral("officeDocument"),
                                QStringLiteral("xl/workbook.xml")}}));
    stored.add(QStringLiteral("[Content_Types].xml"), QByteArrayLiteral("<Types/>"));
    package.bytes = stored.finish();
    return package;
}
