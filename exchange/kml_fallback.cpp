#include "exchange/kml.h"
#include "exchange/xml_text.h"
#include "presentation/quick_number.h"

#include <QDebug>
#include <QStringConverter>

#include <array>
#include <cmath>
#include <limits>
#include <optional>

// What is looked for are the matches of three regular expressions, which stand in
// the tests and are compared with this there. On a text that somebody damaged, or
// that is one line of 200 MB, the expressions take quadratic time, and PCRE gives
// up a block of more than ten million characters without a word; this takes each
// character a bounded number of times and gives up nothing.

namespace {

constexpr bool is_digit(char16_t unit)
{
    return unit >= u'0' && unit <= u'9';
}

/// The letter in lower case, as the expressions compare: the long s and the
/// Kelvin sign are an s and a k.
char16_t folded(char16_t unit)
{
    return QChar(unit).toCaseFolded().unicode();
}

bool is_prefix_start(char16_t unit)
{
    const char16_t letter = folded(unit);
    return (letter >= u'a' && letter <= u'z') || letter == u'_';
}

bool is_word(char16_t unit)
{
    return (unit < 0x80 && is_prefix_start(unit)) || is_digit(unit);
}

/// A text and a place in it. The functions `take_` advance over what they are
/// named after; where it is not there they return false and stay.
struct scanner
{
    QStringView text;
    qsizetype at = 0;

    [[nodiscard]] bool at_end() const { return at >= text.size(); }
    [[nodiscard]] char16_t here() const { return at_end() ? u'\0' : text[at].unicode(); }

    bool take(char16_t unit)
    {
        if (at_end() || here() != unit)
            return false;
        ++at;
        return true;
    }
    void take_blanks()
    {
        while (!at_end() && is_blank(here()))
            ++at;
    }
    bool take_digits()
    {
        const qsizetype begin = at;
        while (!at_end() && is_digit(here()))
            ++at;
        return at > begin;
    }
    bool take_word(QLatin1String word)
    {
        if (text.size() - at < word.size())
            return false;
        for (qsizetype i = 0; i < word.size(); ++i) {
            if (folded(text[at + i].unicode()) != word[i].unicode())
                return false;
        }
        at += word.size();
        return true;
    }
    /// A namespace prefix with its colon.
    bool take_prefix()
    {
        const qsizetype begin = at;
        if (!at_end() && is_prefix_start(here())) {
            while (!at_end() && (is_prefix_start(here()) || is_digit(here()) || here() == u'.' ||
                                 here() == u'-'))
                ++at;
            if (take(u':'))
                return true;
        }
        at = begin;
        return false;
    }
    /// The name of an element with or without a prefix, and `behind` it what that
    /// takes.
    template <typename Behind>
    bool take_name(QLatin1String name, Behind behind)
    {
        const qsizetype begin = at;
        if (take_prefix() && take_word(name) && behind())
            return true;
        at = begin;
        if (take_word(name) && behind())
            return true;
        at = begin;
        return false;
    }
    /// Between a character of a word and one that is none, as \b is. The long s
    /// and the Kelvin sign are none.
    [[nodiscard]] bool at_boundary() const
    {
        return is_word(text[at - 1].unicode()) != (!at_end() && is_word(here()));
    }
    /// "<" and the name; the end of the tag is not looked for.
    bool take_opening(QLatin1String name)
    {
        const qsizetype begin = at;
        if (take(u'<')) {
            take_blanks();
            if (take_name(name, [this] { return at_boundary(); }))
                return true;
        }
        at = begin;
        return false;
    }
    bool take_closing(QLatin1String name)
    {
        const qsizetype begin = at;
        if (take(u'<')) {
            take_blanks();
            if (take(u'/')) {
                take_blanks();
                if (take_name(name, [this] {
                        take_blanks();
                        return take(u'>');
                    }))
                    return true;
            }
        }
        at = begin;
        return false;
    }
    /// A decimal number with or without sign, fraction and exponent; "5." and
    /// ".5" are numbers.
    bool take_number()
    {
        const qsizetype begin = at;
        if (!take(u'+'))
            take(u'-');
        const bool whole = take_digits();
        const qsizetype point = at;
        if (take(u'.') && !take_digits() && !whole)
            at = point;
        if (!whole && at == point) {
            at = begin;
            return false;
        }
        const qsizetype exponent = at;
        if (take(u'e') || take(u'E')) {
            if (!take(u'+'))
                take(u'-');
            if (!take_digits())
                at = exponent;
        }
        return true;
    }
    /// The number as text, null where there is none.
    QStringView number()
    {
        const qsizetype begin = at;
        return take_number() ? text.sliced(begin, at - begin) : QStringView();
    }
};

using point_texts = std::array<QStringView, 3>;

/// Whether a number can be read and lies within -limit to limit.
bool is_within(QStringView number, double limit)
{
    // A plain decimal always can, and has a quicker way.
    if (number.size() < 100 && !number.contains(u'e', Qt::CaseInsensitive))
        return std::fabs(quick_to_double(number)) <= limit;
    bool good = false;
    const double value = number.toDouble(&good);
    return good && std::fabs(value) <= limit;
}

/// Degrees that can be, with an altitude or without: what else looks like a point
/// is dropped.
void append_point(const point_texts& point, exportRecord& record)
{
    constexpr double any = std::numeric_limits<double>::max();
    const auto& [longitude, latitude, altitude] = point;
    if (!is_within(longitude, 180.0) || !is_within(latitude, 90.0) ||
        !(altitude.isEmpty() || is_within(altitude, any)))
        return;
    record.coordinate_pairs.emplaceBack(exportRecord::shared(longitude),
                                        exportRecord::shared(latitude));
    record.altitudes.append(altitude.isEmpty() ? QStringLiteral("0")
                                               : exportRecord::shared(altitude));
}

/// Number, comma, number, and perhaps comma, number.
bool take_tuple(scanner& scan, point_texts& point)
{
    const auto take_comma = [&scan] {
        scan.take_blanks();
        if (!scan.take(u','))
            return false;
        scan.take_blanks();
        return true;
    };
    point = {};
    point[0] = scan.number();
    if (point[0].isNull() || !take_comma())
        return false;
    point[1] = scan.number();
    if (point[1].isNull())
        return false;
    const qsizetype end = scan.at;
    if (take_comma())
        point[2] = scan.number();
    if (point[2].isNull())
        scan.at = end;
    return true;
}

void append_tuples(QStringView block, exportRecord& record)
{
    scanner scan{block};
    point_texts point;
    while (!scan.at_end()) {
        const qsizetype begin = scan.at;
        if (take_tuple(scan, point)) {
            append_point(point, record);
            continue;
        }
        // From inside the same digits it would fail the same way.
        scan.at = begin;
        if (!scan.take_digits())
            ++scan.at;
    }
}

/// What stands between the tags of a track point: three numbers with blanks
/// between them.
bool take_track_point(scanner& scan, point_texts& point)
{
    for (std::size_t i = 0; i < point.size(); ++i) {
        const qsizetype begin = scan.at;
        scan.take_blanks();
        if (i > 0 && scan.at == begin)
            return false;
        point[i] = scan.number();
        if (point[i].isNull())
            return false;
    }
    scan.take_blanks();
    return scan.take_closing(QLatin1String("coord"));
}

void append_track_points(QStringView block, exportRecord& record)
{
    scanner scan{block};
    point_texts point;
    while ((scan.at = block.indexOf(u'<', scan.at)) >= 0) {
        if (!scan.take_opening(QLatin1String("coord"))) {
            ++scan.at;
            continue;
        }
        const qsizetype tag_end = block.indexOf(u'>', scan.at);
        if (tag_end < 0)
            return;
        scan.at = tag_end + 1;
        // Where this fails, each opening before the same ">" fails as well.
        if (take_track_point(scan, point))
            append_point(point, record);
        else
            scan.at = tag_end + 1;
    }
}

/// Where the closing tag from `begin` on begins and ends.
struct place
{
    qsizetype begin = 0, end = 0;
};

std::optional<place> find_closing(QStringView text, qsizetype begin, QLatin1String name)
{
    scanner scan{text, begin};
    while ((scan.at = text.indexOf(u'<', scan.at)) >= 0) {
        const qsizetype tag_begin = scan.at;
        if (scan.take_closing(name))
            return place{tag_begin, scan.at};
        ++scan.at;
    }
    return std::nullopt;
}

/// An element that holds points.
struct block_kind
{
    QLatin1String name;
    void (*append_points)(QStringView block, exportRecord& record);
    bool closed_again = true; ///< whether a closing tag may still follow
};

/// Reads the block that begins at `begin`, and gives the place behind it; nothing
/// if none begins there.
std::optional<qsizetype> read_block(const QString& text, qsizetype begin, block_kind& kind,
                                    QList<exportRecord>& records)
{
    scanner scan{text, begin};
    if (!kind.closed_again || !scan.take_opening(kind.name))
        return std::nullopt;
    const qsizetype tag_end = text.indexOf(u'>', scan.at);
    const std::optional<place> closing =
        tag_end < 0 ? std::nullopt : find_closing(text, tag_end + 1, kind.name);
    if (!closing) {
        kind.closed_again = false;
        return std::nullopt;
    }
    exportRecord record;
    record.kept_texts = {text};
    kind.append_points(QStringView(text).sliced(tag_end + 1, closing->begin - tag_end - 1), record);
    const qsizetype points = record.coordinate_pairs.size();
    if (points > 0) {
        record.numpoint = QString::number(points);
        record.method = points == 1 ? QStringLiteral("航点") : QStringLiteral("航线");
        records.append(record);
    }
    return closing->end;
}

} // namespace

QList<exportRecord> find_kml_coordinates(const QString& text)
{
    QList<exportRecord> records;
    block_kind kinds[] = {{QLatin1String("coordinates"), append_tuples},
                          {QLatin1String("track"), append_track_points}};
    qsizetype at = 0;
    while ((at = text.indexOf(u'<', at)) >= 0) {
        std::optional<qsizetype> behind;
        for (block_kind& kind : kinds) {
            if (!behind)
                behind = read_block(text, at, kind, records);
        }
        at = behind.value_or(at + 1);
    }
    return records;
}

bool parse_kml_fallback(QIODevice& file, QList<exportRecord>& records)
{
    records.clear();
    if (!file.open(QIODevice::ReadOnly)) {
        qDebug() << "Failed to open KML file for coordinates-only parsing:" << file.errorString();
        return false;
    }
    QByteArray bytes = file.readAll();
    file.close();
    const QStringConverter::Encoding encoding =
        QStringConverter::encodingForData(bytes).value_or(QStringConverter::Utf8);
    const QString text = QStringDecoder(encoding).decode(bytes);
    bytes.clear();
    records = find_kml_coordinates(text);
    return !records.isEmpty();
}
