#pragma once

#include <QString>
#include <QStringView>

#include <array>
#include <cstdint>

/// One kind of measurement.
struct measurement_kind
{
    int number;           ///< what the binary protocol sends
    QStringView method;   ///< the word in a record, always Chinese
    QStringView english;  ///< the word in the main table under the English interface
    QStringView exchange; ///< the word in exchanged files; empty where there is none
    QStringView map_kind; ///< how the map draws it: "1" area, "2" line, "3" waypoint
};

/// The six kinds in the order of the tables, which runs route before track
/// although their numbers are 4 and 3.
inline constexpr std::array<measurement_kind, 6> measurement_kinds{{
    {0, u"面积", u"area", u"area", u"1"},
    {1, u"距离", u"distance", u"distance", u"2"},
    {2, u"航点", u"point", u"point", u"3"},
    {4, u"航线", u"airline", u"airline", u"2"},
    {3, u"航迹", u"track", u"airtrack", u"2"},
    {5, u"放样", u"example", u"", u"2"},
}};

/// A record of the instrument's own making: in the main table only, without a
/// kind number and without a map kind.
inline constexpr QStringView self_made_method = u"自制";
inline constexpr QStringView self_made_english = u"self";

/// Index in measurement_kinds of a record's `method`, or -1.
[[nodiscard]] int kind_index(QStringView method);

// Codes and texts. A language of 0 is Chinese, any other English. Texts are
// compared exactly, row by row from the top, the Chinese word of a row first.

/// Text of a time zone code "1" to "27"; empty for any other, "0" among them.
[[nodiscard]] QString timezone_code_to_text(const QString& code);
/// Code of a time zone text; "11" (UTC+08:00) for an unknown one.
[[nodiscard]] QString timezone_text_to_code(const QString& text);
/// Text of an area unit; "亩" or "MU" for an unknown code.
[[nodiscard]] QString area_unit_code_to_text(const QString& code, int language);
[[nodiscard]] QString area_unit_text_to_code(const QString& text);
/// Text of a length unit; "米" or "Meter" for an unknown code.
[[nodiscard]] QString length_unit_code_to_text(const QString& code, int language);
[[nodiscard]] QString length_unit_text_to_code(const QString& text);
/// Text of a currency; "元" or "YUAN" for an unknown code.
[[nodiscard]] QString currency_code_to_text(const QString& code, int language);
[[nodiscard]] QString currency_text_to_code(const QString& text);
/// Text of a measurement mode "1" to "16"; empty for any other code.
[[nodiscard]] QString mode_code_to_text(const QString& code, int language);
/// Code of a measurement mode text; "0" for an unknown one.
[[nodiscard]] QString mode_text_to_code(const QString& text);

// Device bytes of the binary protocol.

/// Device byte of a mode code, which is trimmed first; 0xFF (-1) for an unknown one.
[[nodiscard]] std::int8_t mode_code_to_device(const QString& code);
/// Mode code of a device byte; "0" for 255, empty for a byte outside the table.
[[nodiscard]] QString mode_device_to_code(std::uint8_t byte);
/// Device byte of a currency code, which is trimmed first; 255 for an unknown one.
[[nodiscard]] std::uint8_t currency_code_to_device(const QString& code);
/// Currency code of a device byte; "0" for 255, empty for a byte outside the table.
[[nodiscard]] QString currency_device_to_code(std::uint8_t byte);
/// Time zone code of a device byte: byte + 2, and "0" for 255; empty for 26 to 254.
[[nodiscard]] QString timezone_device_to_code(std::uint8_t byte);
/// Kind number 0 to 5 of a record's `method`; 255 for an unknown one.
[[nodiscard]] std::uint8_t method_to_kind(const QString& method);

// Units. Values are decimal texts.

/// Square metres in the unit of `code`, 'f' with six decimals. Code "2" gives
/// the text unchanged; an unknown code divides by 667.0.
[[nodiscard]] QString area_to_unit(const QString& code, const QString& square_metres);
/// Metres in the unit of `code`, 'f' with six decimals. An unknown code leaves
/// the value undivided.
[[nodiscard]] QString length_to_unit(const QString& code, const QString& metres);
/// Square metres of a value in the unit of `unit_text` (either language), 'f'
/// with eight decimals. "平方米", "Square Meter" and a text that is no unit give
/// the value text unchanged.
[[nodiscard]] QString area_to_square_meter(const QString& unit_text, const QString& value);
/// Metres of a value in the unit of `unit_text` (either language), 'f' with
/// eight decimals. "米", "Meter" and a text that is no unit give the value text
/// unchanged.
[[nodiscard]] QString length_to_meter(const QString& unit_text, const QString& value);

/// The text itself, or "0" where it is empty.
[[nodiscard]] QString zero_if_empty(const QString& text);
