// QXlsx makes half a kilobyte of a cell and takes five times as long as the parser
// below it, so that the cells, of which there can be millions, are read here.

#include "exchange/excel_cells.h"

#include <QBuffer>
#include <QDateTime>
#include <QXmlStreamReader>

#include <algorithm>
#include <cmath>
#include <tuple>

namespace {

/// Days since the epoch of the workbook as text. The day before 1900-01-01 is 0,
/// and 1900 is taken for a leap year, as spreadsheets have it.
QString date_text(double days, bool date1904)
{
    const QDate epoch = date1904    ? QDate(1904, 1, 1)
                        : days < 60 ? QDate(1899, 12, 31)
                                    : QDate(1899, 12, 30);
    constexpr double seconds_per_day = 86'400;
    const auto seconds = static_cast<qint64>(std::round(days * seconds_per_day));
    return QDateTime(epoch, QTime(0, 0), Qt::UTC)
        .addSecs(seconds)
        .toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
}

/// A number with the 15 digits that spreadsheets show (they write 1.1 as
/// 1.1000000000000001), and never with an exponent: it may be an identity.
QString decimal_text(double number)
{
    constexpr int digits = 15;
    const QString text = QString::number(number, 'g', digits);
    const qsizetype mark = text.indexOf(QLatin1Char('e'));
    if (mark < 0)
        return text;
    const int exponent = QStringView(text).sliced(mark + 1).toInt();
    QString plain = QString::number(number, 'f', std::max(digits - 1 - exponent, 0));
    if (exponent < 0) {
        while (plain.endsWith(QLatin1Char('0')))
            plain.chop(1);
    }
    return plain;
}

/// A cell as it stands in the file.
struct raw_cell
{
    int row = 0, column = 0; ///< from 0
    int style = -1;
    QString type;
    std::optional<QString> value;
    bool has_formula = false;
};

/// Nothing if it refers to a shared string that is not there.
std::optional<QString> text_of(const raw_cell& cell, const excel_references& references)
{
    if (!cell.value || cell.value->isEmpty())
        return QString();
    const QString& value = *cell.value;
    if (cell.type == QStringLiteral("s")) {
        bool is_index = false;
        const qsizetype index = value.toInt(&is_index);
        if (!is_index || index < 0 || index >= references.strings.size())
            return {};
        return references.strings[index];
    }
    if (cell.type == QStringLiteral("str") || cell.type == QStringLiteral("inlineStr") ||
        cell.type == QStringLiteral("e"))
        return value;
    if (cell.type == QStringLiteral("b"))
        return value.toInt() != 0 ? QStringLiteral("true") : QStringLiteral("false");
    // A number, also where nothing says what it is.
    const bool is_date = references.date_styles.value(cell.style);
    bool is_number = false;
    const double number = value.toDouble(&is_number);
    if (!is_number && !is_date && cell.type != QStringLiteral("n"))
        return value;
    return is_date && number >= 0 ? date_text(number, references.date1904) : decimal_text(number);
}

/// Puts the place of a cell, such as B2, into \a cell; false if a sheet has none such.
bool take_place(raw_cell& cell, QStringView text)
{
    constexpr int most_columns = 16'384;
    constexpr int most_rows = 1'048'576;
    int column = 0;
    qsizetype at = 0;
    for (; at < text.size() && at < 3 && text[at] >= u'A' && text[at] <= u'Z'; ++at)
        column = column * 26 + (text[at].unicode() - u'A' + 1);
    int row = 0;
    const QStringView digits = text.sliced(at);
    if (digits.size() > 7)
        return false;
    for (const QChar digit : digits) {
        if (digit < u'0' || digit > u'9')
            return false;
        row = row * 10 + (digit.unicode() - u'0');
    }
    cell.row = row - 1;
    cell.column = column - 1;
    return column > 0 && column <= most_columns && row > 0 && row <= most_rows;
}

/// Walks the elements of a part. What is wrong with it is raised as an error of the
/// parser, which then reads no further.
class part_reader
{
public:
    part_reader(const QByteArray& xml, qint64& room) : m_room(room)
    {
        // From a device the parser takes some kilobytes at a time; of a byte array
        // it makes a string twice as long first.
        m_buffer.setData(xml);
        m_buffer.open(QIODevice::ReadOnly);
        m_xml.setDevice(&m_buffer);
    }

    /// Calls \a take in the element that is all of the part. One of another name is
    /// another kind of part: taken for an empty one, it would lose all without a word.
    template <typename Take>
    void root(QLatin1String name, Take take)
    {
        if (m_xml.readNextStartElement() && m_xml.name() == name)
            take();
        else
            m_xml.raiseError(QStringLiteral("another kind of part"));
    }

    /// Calls \a take in each child of the element in which the reader is, of that
    /// name, and skips the others.
    template <typename Take>
    void each(QLatin1String name, Take take)
    {
        while (m_xml.readNextStartElement()) {
            if (m_xml.name() != name)
                m_xml.skipCurrentElement();
            else if (--m_room < 0)
                m_xml.raiseError(QStringLiteral("too large"));
            else
                take();
        }
    }

    /// The text of a string, whole or in runs.
    QString string()
    {
        QString text;
        while (m_xml.readNextStartElement()) {
            if (m_xml.name() == QLatin1String("t"))
                text.append(m_xml.readElementText());
            else if (m_xml.name() == QLatin1String("r"))
                each(QLatin1String("t"), [&] { text.append(m_xml.readElementText()); });
            else
                m_xml.skipCurrentElement();
        }
        return text;
    }

    raw_cell cell()
    {
        raw_cell cell;
        {
            const QXmlStreamAttributes attributes = m_xml.attributes();
            cell.type = attributes.value(QLatin1String("t")).toString();
            const QStringView style = attributes.value(QLatin1String("s"));
            cell.style = style.isEmpty() ? -1 : style.toInt();
            if (!take_place(cell, attributes.value(QLatin1String("r"))) ||
                cell.type == QStringLiteral("d"))
                m_xml.raiseError(QStringLiteral("no sound cell"));
        }
        while (m_xml.readNextStartElement()) {
            if (m_xml.name() == QLatin1String("v"))
                cell.value = m_xml.readElementText();
            else if (m_xml.name() == QLatin1String("is"))
                cell.value = string();
            else {
                cell.has_formula = cell.has_formula || m_xml.name() == QLatin1String("f");
                m_xml.skipCurrentElement();
            }
        }
        return cell;
    }

    /// The part is not sound.
    void refuse(const QString& why) { m_xml.raiseError(why); }

    /// Reads to the end of the part; whether it was sound.
    bool finish()
    {
        while (!m_xml.atEnd())
            m_xml.readNext();
        return !m_xml.hasError();
    }

private:
    QBuffer m_buffer;
    QXmlStreamReader m_xml;
    qint64& m_room;
};

} // namespace

QString sheet_texts::text(qsizetype row, int column) const
{
    for (qsizetype at = m_rows[row]; at < m_rows[row + 1]; ++at) {
        if (m_texts[at].column == column)
            return m_texts[at].text;
    }
    return {};
}

QStringList sheet_texts::row(qsizetype row) const
{
    QStringList texts;
    for (qsizetype at = m_rows[row]; at < m_rows[row + 1]; ++at) {
        texts.resize(m_texts[at].column + 1);
        texts.last() = m_texts[at].text;
    }
    return texts;
}

std::optional<sheet_texts> read_sheet_texts(const QByteArray& xml,
                                            const excel_references& references, qint64& room)
{
    sheet_texts sheet;
    part_reader reader(xml, room);
    const auto take_cell = [&] {
        const raw_cell cell = reader.cell();
        sheet.m_valid = sheet.m_valid && (cell.value || !cell.has_formula);
        const std::optional<QString> text = text_of(cell, references);
        if (!text)
            reader.refuse(QStringLiteral("no such shared string"));
        else if (!text->isEmpty())
            sheet.m_texts.append({cell.row, cell.column, *text});
    };
    reader.root(QLatin1String("worksheet"), [&] {
        reader.each(QLatin1String("sheetData"), [&] {
            reader.each(QLatin1String("row"), [&] { reader.each(QLatin1String("c"), take_cell); });
        });
    });
    if (!reader.finish())
        return {};

    using placed_text = sheet_texts::placed_text;
    const auto place = [](const placed_text& one) { return std::tuple(one.row, one.column); };
    if (!std::ranges::is_sorted(sheet.m_texts, {}, place))
        std::ranges::sort(sheet.m_texts, {}, place);
    if (std::ranges::adjacent_find(sheet.m_texts, {}, place) != sheet.m_texts.end())
        return {};
    for (qsizetype at = 0; at < sheet.m_texts.size(); ++at) {
        while (sheet.m_rows.size() <= sheet.m_texts[at].row)
            sheet.m_rows.append(at);
    }
    if (!sheet.m_texts.isEmpty())
        sheet.m_rows.append(sheet.m_texts.size());
    return sheet;
}

std::optional<QStringList> read_shared_strings(const QByteArray& xml, qint64& room)
{
    QStringList strings;
    part_reader reader(xml, room);
    reader.root(QLatin1String("sst"), [&] {
        reader.each(QLatin1String("si"), [&] { strings.append(reader.string()); });
    });
    return reader.finish() ? std::optional(strings) : std::nullopt;
}
