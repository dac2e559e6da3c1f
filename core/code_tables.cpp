#include "core/code_tables.h"

#include <cstddef>

namespace {

// Every table runs from code 1 upwards without a gap, so that row i holds code
// i + 1; the static_asserts below keep it so.

struct time_zone
{
    int code;
    QStringView text; ///< the same in both languages
};

struct unit
{
    int code;
    QStringView chinese;
    QStringView english;
    double factor; ///< base units (square metres, metres) in one unit
};

struct device_word
{
    int code;
    std::uint8_t device; ///< the byte of the binary protocol
    QStringView chinese;
    QStringView english;
};

constexpr std::array<time_zone, 27> time_zones{{
    {1, u"UTC±00:00"},  {2, u"UTC+00:00"},  {3, u"UTC+01:00"},  {4, u"UTC+02:00"},
    {5, u"UTC+03:00"},  {6, u"UTC+04:00"},  {7, u"UTC+05:00"},  {8, u"UTC+05:30"},
    {9, u"UTC+06:00"},  {10, u"UTC+07:00"}, {11, u"UTC+08:00"}, {12, u"UTC+09:00"},
    {13, u"UTC+10:00"}, {14, u"UTC+11:00"}, {15, u"UTC+12:00"}, {16, u"UTC-01:00"},
    {17, u"UTC-02:00"}, {18, u"UTC-03:00"}, {19, u"UTC-04:00"}, {20, u"UTC-05:00"},
    {21, u"UTC-06:00"}, {22, u"UTC-07:00"}, {23, u"UTC-08:00"}, {24, u"UTC-09:00"},
    {25, u"UTC-10:00"}, {26, u"UTC-11:00"}, {27, u"UTC-12:00"},
}};

/// Square metres in one unit. "大亩" has the factor of the hectare: that is the
/// value in force, by which the instruments and existing files go.
constexpr std::array<unit, 5> area_units{{
    {1, u"亩", u"MU", 667.0},
    {2, u"平方米", u"Square Meter", 1.0},
    {3, u"公顷", u"Hectare", 10000.0},
    {4, u"英亩", u"Acres", 4046.8564224},
    {5, u"大亩", u"DAMU", 10000.0},
}};

/// Metres in one unit. "Code" is the word of the interface for the yard, and
/// codes 2 and 6 share their English word, which therefore always reads as 2.
constexpr std::array<unit, 6> length_units{{
    {1, u"米", u"Meter", 1.0},
    {2, u"公里", u"Kilometers", 1000.0},
    {3, u"英里", u"Miles", 1609.344},
    {4, u"码", u"Code", 0.9144},
    {5, u"英尺", u"Foot", 0.3048},
    {6, u"千米", u"Kilometers", 1000.0},
}};

/// The instrument numbers the last four the other way round.
constexpr std::array<device_word, 5> currencies{{
    {1, 0, u"元", u"YUAN"},
    {2, 4, u"法郎", u"Franc"},
    {3, 3, u"欧元", u"Euro"},
    {4, 2, u"英镑", u"Pound"},
    {5, 1, u"美元", u"Dollar"},
}};

constexpr std::array<device_word, 16> modes{{
    {1, 0x10, u"普通面积", u"Common Area"},
    {2, 0x14, u"长宽面积", u"Length And Width Area"},
    {3, 0x12, u"定宽面积", u"Fixed Width Area"},
    {4, 0x13, u"定点面积", u"Fixed Point Area"},
    {5, 0x11, u"转圈机载", u"Circling Airborne"},
    {6, 0x15, u"来回机载", u"Round Trip Airborne"},
    {7, 0x00, u"智能坡地", u"Intelligent Slope"},
    {8, 0x01, u"智能山地", u"Intelligent Mountain"},
    {9, 0x30, u"普通距离", u"Ordinary Distance"},
    {10, 0x31, u"定点距离", u"Fixed Point Distance"},
    {11, 0x32, u"普通斜距", u"Common Slant Distance"},
    {12, 0x33, u"定点斜距", u"Fixed Point Slant Distance"},
    {13, 0x16, u"智能机载", u"Intelligent Airborne"},
    {14, 0x20, u"坡面测量(定坡度)", u"Slope Measurement (Fixed Slope)"},
    {15, 0x40, u"自动采集", u"Automatic Collection"},
    {16, 0x41, u"手动输入", u"Manual Input"},
}};

/// The device byte of a value that the instrument does not know.
constexpr std::uint8_t unknown_byte = 255;

template <typename Table>
constexpr bool codes_run_from_one(const Table& table)
{
    for (std::size_t i = 0; i < table.size(); ++i) {
        if (table[i].code != static_cast<int>(i) + 1)
            return false;
    }
    return true;
}

template <typename Table>
constexpr bool device_bytes_are_unique(const Table& table)
{
    for (std::size_t i = 0; i < table.size(); ++i) {
        if (table[i].device == unknown_byte)
            return false;
        for (std::size_t k = 0; k < i; ++k) {
            if (table[i].device == table[k].device)
                return false;
        }
    }
    return true;
}

static_assert(codes_run_from_one(time_zones));
static_assert(codes_run_from_one(area_units));
static_assert(codes_run_from_one(length_units));
static_assert(codes_run_from_one(currencies));
static_assert(codes_run_from_one(modes));
static_assert(device_bytes_are_unique(currencies));
static_assert(device_bytes_are_unique(modes));

/// The row of a code, or null outside the table.
template <typename Table>
auto row_of(const Table& table, int code)
{
    const bool inside = code >= 1 && code <= static_cast<int>(table.size());
    return inside ? &table[static_cast<std::size_t>(code) - 1] : nullptr;
}

/// The row whose code reads exactly as `code`: "1" is a code, "01" and " 1" are
/// none.
template <typename Table>
auto row_of_text(const Table& table, const QString& code)
{
    const int number = code.toInt();
    return row_of(table, QString::number(number) == code ? number : 0);
}

/// The first row whose word in either language is `text`, or null.
template <typename Table>
auto row_of_word(const Table& table, const QString& text)
{
    for (const auto& row : table) {
        if (row.chinese == text || row.english == text)
            return &row;
    }
    return static_cast<decltype(table.data())>(nullptr);
}

/// The row of a device byte, or null.
template <typename Table>
auto row_of_device(const Table& table, std::uint8_t byte)
{
    for (const auto& row : table) {
        if (row.device == byte)
            return &row;
    }
    return static_cast<decltype(table.data())>(nullptr);
}

template <typename Row>
QString word(const Row& row, int language)
{
    return (language == 0 ? row.chinese : row.english).toString();
}

template <typename Row>
QString code_or(const Row* row, const char* otherwise)
{
    return row != nullptr ? QString::number(row->code) : QString::fromLatin1(otherwise);
}

template <typename Table>
QString device_to_code(const Table& table, std::uint8_t byte)
{
    return byte == unknown_byte ? QStringLiteral("0") : code_or(row_of_device(table, byte), "");
}

/// `value` in the base unit; unchanged where the unit is the base unit or none.
template <typename Table>
QString to_base_unit(const Table& table, const QString& unit_text, const QString& value)
{
    const unit* row = row_of_word(table, unit_text);
    if (row == nullptr || row->factor == 1.0)
        return value;
    return QString::number(value.toDouble() * row->factor, 'f', 8);
}

} // namespace

int kind_index(QStringView method)
{
    for (std::size_t i = 0; i < measurement_kinds.size(); ++i) {
        if (measurement_kinds[i].method == method)
            return static_cast<int>(i);
    }
    return -1;
}

QString timezone_code_to_text(const QString& code)
{
    const time_zone* row = row_of(time_zones, code.toInt());
    return row != nullptr ? row->text.toString() : QString();
}

QString timezone_text_to_code(const QString& text)
{
    for (const time_zone& row : time_zones) {
        if (row.text == text)
            return QString::number(row.code);
    }
    return QStringLiteral("11");
}

QString area_unit_code_to_text(const QString& code, int language)
{
    const unit* row = row_of_text(area_units, code);
    return word(row != nullptr ? *row : area_units.front(), language);
}

QString area_unit_text_to_code(const QString& text)
{
    return code_or(row_of_word(area_units, text), "1");
}

QString length_unit_code_to_text(const QString& code, int language)
{
    const unit* row = row_of(length_units, code.toInt());
    return word(row != nullptr ? *row : length_units.front(), language);
}

QString length_unit_text_to_code(const QString& text)
{
    return code_or(row_of_word(length_units, text), "1");
}

QString currency_code_to_text(const QString& code, int language)
{
    const device_word* row = row_of_text(currencies, code);
    return word(row != nullptr ? *row : currencies.front(), language);
}

QString currency_text_to_code(const QString& text)
{
    return code_or(row_of_word(currencies, text), "1");
}

QString mode_code_to_text(const QString& code, int language)
{
    const device_word* row = row_of(modes, code.toInt());
    return row != nullptr ? word(*row, language) : QString();
}

QString mode_text_to_code(const QString& text)
{
    return code_or(row_of_word(modes, text), "0");
}

std::int8_t mode_code_to_device(const QString& code)
{
    const device_word* row = row_of(modes, code.trimmed().toInt());
    return static_cast<std::int8_t>(row != nullptr ? row->device : unknown_byte);
}

QString mode_device_to_code(std::uint8_t byte)
{
    return device_to_code(modes, byte);
}

std::uint8_t currency_code_to_device(const QString& code)
{
    const device_word* row = row_of_text(currencies, code.trimmed());
    return row != nullptr ? row->device : unknown_byte;
}

QString currency_device_to_code(std::uint8_t byte)
{
    return device_to_code(currencies, byte);
}

QString timezone_device_to_code(std::uint8_t byte)
{
    if (byte == unknown_byte)
        return QStringLiteral("0");
    return code_or(row_of(time_zones, byte + 2), "");
}

std::uint8_t method_to_kind(const QString& method)
{
    const int index = kind_index(method);
    return index >= 0 ? static_cast<std::uint8_t>(
                            measurement_kinds[static_cast<std::size_t>(index)].number)
                      : std::uint8_t{255};
}

QString area_to_unit(const QString& code, const QString& square_metres)
{
    const unit* row = row_of_text(area_units, code);
    if (row == nullptr)
        row = &area_units.front();
    if (row->factor == 1.0)
        return square_metres;
    return QString::number(square_metres.toDouble() / row->factor, 'f', 6);
}

QString length_to_unit(const QString& code, const QString& metres)
{
    const unit* row = row_of_text(length_units, code);
    return QString::number(metres.toDouble() / (row != nullptr ? row->factor : 1.0), 'f', 6);
}

QString area_to_square_meter(const QString& unit_text, const QString& value)
{
    return to_base_unit(area_units, unit_text, value);
}

QString length_to_meter(const QString& unit_text, const QString& value)
{
    return to_base_unit(length_units, unit_text, value);
}

QString zero_if_empty(const QString& text)
{
    return text.isEmpty() ? QStringLiteral("0") : text;
}
