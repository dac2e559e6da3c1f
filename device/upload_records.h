#pragma once

#include "core/records.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QList>
#include <QString>

#include <cstdint>

/// What an upload sends for a measurement: the data of the frames 0x31 (item) and
/// 0x32 (points), which have the layout of those that the instrument sends, or
/// the Mode text of older instruments; and the acknowledgement that comes back.
///
/// Where a function returns false, `error` is the text for the user, in Chinese
/// in either language of the program, and the other outputs are as they were.
namespace upload_records {

struct UploadPoint
{
    std::int32_t longitude; ///< degrees x 10 000 000
    std::int32_t latitude;  ///< degrees x 10 000 000
    std::int32_t altitude;  ///< centimetres

    bool operator==(const UploadPoint&) const = default;
};

/// One measurement in the units of the wire. A byte of 255 stands for a value that
/// the record does not have.
struct UploadItem
{
    std::uint8_t kind = 255;   ///< 0 to 5
    QString old_mode;          ///< the kind in Mode text, "1" to "6"
    std::uint32_t area = 0;    ///< square metres
    std::uint32_t length = 0;  ///< tenths of a metre
    QString start_digits;      ///< "yyyyMMddHHmmss"
    QByteArray start_bcd;      ///< year - 2000 to second, 6 packed-decimal bytes
    QByteArray end_bcd;        ///< as start_bcd; the start where there is no end
    std::uint8_t timezone = 0; ///< code of the time zone table - 2
    std::uint8_t mode = 0;     ///< measurement mode byte
    std::uint8_t width = 0;    ///< tenths of a metre, 1 to 254
    std::uint8_t price = 0;    ///< 1 to 254
    std::uint8_t currency = 0;
    QList<UploadPoint> points;
};

/// Number of a kind in Mode text; empty for a `method` that cannot be uploaded.
[[nodiscard]] QString method_to_old_mode(const QString& method);

/// A time of six parts between any of "-", " ", ":", "." and "/" with all parts
/// behind the year padded to two digits and nothing between: "20240305070809".
/// Empty for another number of parts. The parts themselves are not judged.
[[nodiscard]] QString normalize_time_text(const QString& text);

/// A time of the years 2000 to 2099 as 6 packed-decimal bytes, year - 2000 first,
/// and as 14 digits. Legal: six parts as in normalize_time_text, or any text with
/// 12 digits (a time without seconds) or at least 14 in it, of which the first 14
/// count.
[[nodiscard]] bool time_to_bcd(const QString& text, QByteArray& bytes, QString& digits);

/// A decimal number times `scale`, rounded; 0 for an empty text. False for what
/// is no number, is negative, or does not fit.
[[nodiscard]] bool text_to_u32(const QString& text, double scale, std::uint32_t& out);

/// A decimal number from `lower` to `upper`, both included, times `scale`, rounded
/// half away from zero. False for what is no number, lies outside or does not fit.
[[nodiscard]] bool text_to_i32(const QString& text, double scale, double lower, double upper,
                               std::int32_t& out);

/// The points of a "longitude,latitude,altitude" text, degrees and metres, one
/// line each, with or without a ";" at the end. Lines without content are passed
/// over; no line with content is an error.
[[nodiscard]] bool parse_upload_points(const QString& lines, QList<UploadPoint>& out,
                                       QString& error);

/// `lines` are the record's points, as in parse_upload_points.
[[nodiscard]] bool build_upload_item(const measuringData& record, const QString& lines,
                                     UploadItem& out, QString& error);

/// Data of a frame 0x31, 36 bytes. `records` counts the measurements of this
/// upload; its low 16 bits are sent.
[[nodiscard]] QByteArray item_data(const UploadItem& item, qsizetype records);

/// Data of a frame 0x32 with `count` points from index `first` on, which `item`
/// must hold.
[[nodiscard]] QByteArray points_data(const UploadItem& item, qsizetype first, qsizetype count);

/// Adds the Mode text of a measurement to `text`:
///
///     Mode:5,A:1334,D:123.5,n:2,T:20240305070809,N:name\r\n
///     104.053472222222,30.500000000000,12.30\r\n
///     104.053472222223,30.500000000000,12.30;
///
/// with the record's texts as they stand and no line end behind the last point.
/// A line of other than three parts is left out.
[[nodiscard]] bool append_mode_text(QString& text, const measuringData& record,
                                    const QString& lines, QString& error);

/// The instrument's answer to a frame of an upload.
struct acknowledgement
{
    std::uint8_t device_type;
    std::uint8_t status; ///< 0 for good, 2 for a kind that it does not know
};

/// Takes the first answer to `command` out of `buffer`, and with it all before it.
/// What has the length of a frame goes as a whole, also with a wrong CRC and
/// whatever its length; bytes before a header go one by one.
///
/// False when more bytes are needed; `out` is untouched then.
[[nodiscard]] bool take_acknowledgement(QByteArray& buffer, std::uint8_t command,
                                        acknowledgement& out);

} // namespace upload_records
