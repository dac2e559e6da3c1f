#include "instrument/faults.h"

#include "device/frame.h"
#include "instrument/measurement_frames.h"

#include <QtEndian>

#include <algorithm>
#include <random>

namespace instrument {

namespace {

/// Pause between the pieces of a split frame, so that they arrive as such.
constexpr std::chrono::milliseconds piece_pause{2};

void set_byte(QByteArray& data, qsizetype at, int value)
{
    if (at < data.size())
        data[at] = static_cast<char>(value);
}

/// A fault that puts its value into one byte of every head.
template <qsizetype Offset>
void set_in_head(const fault& what, frame_draft& draft)
{
    if (draft.command == frame::measurement_head)
        set_byte(draft.data, Offset, what.value);
}

/// A points frame cut or filled up to `count` points, its mode byte kept. What
/// is missing repeats the last point.
void set_point_count(frame_draft& draft, qsizetype count)
{
    const QByteArray mode = draft.data.last(1);
    const QByteArray point = draft.data.sliced(draft.data.size() - 1 - point_size, point_size);
    draft.data.chop(1);
    draft.data.truncate(points_begin + point_size * count);
    while (draft.data.size() < points_begin + point_size * count)
        draft.data.append(point);
    draft.data.append(mode);
}

qsizetype point_count(const frame_draft& draft)
{
    return (draft.data.size() - points_data_overhead) / point_size;
}

/// Noise that is the same in every run: a frame's number decides it.
QByteArray noise(int size, int number)
{
    std::mt19937 random(static_cast<std::uint32_t>(number) + 1U);
    QByteArray bytes;
    while (bytes.size() < size) {
        const char byte = static_cast<char>(random() & 0xFFU);
        if (byte != frame::header)
            bytes.append(byte);
    }
    return bytes;
}

// The draft of a frame.

void set_reply_status(const fault& what, frame_draft& draft, std::uint8_t answered)
{
    if (draft.command == frame::reply && frame::read_u8(draft.data, 4) == answered)
        set_byte(draft.data, 5, what.value);
}

void probe_status(const fault& what, frame_draft& draft)
{
    set_reply_status(what, draft, frame::reply);
}

void end_status(const fault& what, frame_draft& draft)
{
    set_reply_status(what, draft, frame::export_request);
}

void upload_probe_status(const fault& what, frame_draft& draft)
{
    set_reply_status(what, draft, frame::upload_probe);
}

void item_status(const fault& what, frame_draft& draft)
{
    set_reply_status(what, draft, frame::upload_item);
}

void points_status(const fault& what, frame_draft& draft)
{
    set_reply_status(what, draft, frame::upload_points);
}

void command(const fault& what, frame_draft& draft)
{
    draft.command = static_cast<std::uint8_t>(what.value);
}

void short_data(const fault& what, frame_draft& draft)
{
    draft.data.chop(std::min<qsizetype>(what.value, draft.data.size()));
}

void ignore_request(const fault& what, frame_draft& draft)
{
    // A probe does not count as repeated, so it would never be answered.
    const bool wanted = draft.number > 0 || what.only_frame.has_value();
    draft.drop = draft.drop || (wanted && draft.attempt == 0);
}

void silent_after(const fault& what, frame_draft& draft)
{
    draft.drop = draft.drop || draft.number > what.value;
}

void repeat_head(const fault&, frame_draft& draft)
{
    draft.hold = draft.hold || (draft.command == frame::measurement_head && draft.attempt == 0);
}

void points_first(const fault&, frame_draft& draft)
{
    if (draft.number != 1 || draft.attempt != 0)
        return;
    draft.command = frame::measurement_points;
    stored_measurement one;
    one.points.append(stored_point{});
    draft.data = points_data(one, 0, 1);
    draft.hold = true;
}

void point_total(const fault& what, frame_draft& draft)
{
    if (draft.command == frame::measurement_head)
        qToBigEndian(static_cast<std::uint32_t>(what.value), draft.data.data() + head_point_count);
}

void export_total(const fault& what, frame_draft& draft)
{
    if (draft.command == frame::measurement_head) {
        qToBigEndian(static_cast<std::uint16_t>(what.value),
                     draft.data.data() + head_measurement_count);
    }
}

void points_in_a_frame(const fault& what, frame_draft& draft)
{
    if (draft.command == frame::measurement_points && point_count(draft) > 0)
        set_point_count(draft, what.value);
}

void extra_points(const fault& what, frame_draft& draft)
{
    if (draft.command == frame::measurement_points && point_count(draft) == draft.points_left)
        set_point_count(draft, draft.points_left + what.value);
}

void status_byte(const fault& what, frame_draft& draft)
{
    // The last point of the frame: a reader that stores points as it tests
    // them would have kept all the others.
    if (draft.command == frame::measurement_points && point_count(draft) > 0)
        set_byte(draft.data, draft.data.size() - 1 - point_size + point_status, what.value);
}

void points_mode(const fault& what, frame_draft& draft)
{
    if (draft.command == frame::measurement_points)
        set_byte(draft.data, draft.data.size() - 1, what.value);
}

// Its bytes.

void length_field(const fault& what, frame_bytes& frame)
{
    qToBigEndian(static_cast<std::uint16_t>(what.value), frame.bytes.data() + 4);
}

void flip_bit(const fault& what, frame_bytes& frame)
{
    const qsizetype at = what.value / 8;
    if (at < frame.bytes.size())
        frame.bytes[at] = static_cast<char>(frame.bytes[at] ^ (0x80 >> (what.value % 8)));
}

void noise_before(const fault& what, frame_bytes& frame)
{
    frame.bytes.prepend(noise(what.value, frame.number));
}

void headers_before(const fault& what, frame_bytes& frame)
{
    frame.bytes.prepend(QByteArray(what.value, frame::header));
}

void split(const fault& what, frame_bytes& frame)
{
    frame.piece_size = what.value;
}

void delay(const fault& what, frame_bytes& frame)
{
    frame.delay += std::chrono::milliseconds(what.value);
}

// Faults act in this order, whatever the order they are asked for in: what sits
// in the data comes before what spoils the frame around it.
const QList<fault_kind> all_kinds{
    {"points-first", nullptr, 0, 0, 0, "a points frame before the first head", points_first,
     nullptr},
    {"repeat-head", nullptr, 0, 0, 0, "send each head twice", repeat_head, nullptr},
    {"point-total", "POINTS", 0, 2147483647, 0, "number of points that a head announces",
     point_total, nullptr},
    {"export-total", "COUNT", 0, 65535, 0, "number of measurements that a head announces",
     export_total, nullptr},
    {"kind", "KIND", 0, 255, 6, "kind of measurement in the head", set_in_head<head_kind>, nullptr},
    {"month", "BYTE", 0, 255, 0x13, "month byte of the start time in the head",
     set_in_head<head_start + 1>, nullptr},
    {"time-zone", "BYTE", 0, 255, 26, "time zone byte in the head", set_in_head<head_time_zone>,
     nullptr},
    {"currency", "BYTE", 0, 255, 5, "currency byte in the head", set_in_head<head_currency>,
     nullptr},
    {"mode", "BYTE", 0, 255, 2, "measurement mode byte in the head", set_in_head<head_mode>,
     nullptr},
    {"points-in-frame", "POINTS", 1, 3000, 52, "points in a points frame", points_in_a_frame,
     nullptr},
    {"extra-points", "POINTS", 1, 3000, 1, "points beyond the announced ones in the last frame",
     extra_points, nullptr},
    {"points-mode", "BYTE", 0, 255, 2, "measurement mode byte behind the points", points_mode,
     nullptr},
    {"status-byte", "BYTE", 0, 255, 10, "positioning status of the frame's last point", status_byte,
     nullptr},
    {"probe-status", "STATUS", 0, 255, 1, "status in the reply to the read probe", probe_status,
     nullptr},
    {"end-status", "STATUS", 0, 255, 1, "status in the reply at the end of the export", end_status,
     nullptr},
    {"upload-probe-status", "STATUS", 0, 255, 1, "status in the reply to the upload probe",
     upload_probe_status, nullptr},
    {"item-status", "STATUS", 0, 255, 2, "status in the reply to an uploaded head", item_status,
     nullptr},
    {"points-status", "STATUS", 0, 255, 1, "status in the reply to uploaded points", points_status,
     nullptr},
    {"short-data", "BYTES", 1, 65535, 1, "leave the last data bytes out, length and CRC in order",
     short_data, nullptr},
    {"command", "CODE", 0, 255, 0x7E, "command code of the frame", command, nullptr},
    {"ignore-request", nullptr, 0, 0, 0, "answer an export request only when it is repeated",
     ignore_request, nullptr},
    {"silent-after", "FRAME", 0, 1000000000, 1, "no frame after this one until the next read",
     silent_after, nullptr},
    {"length-field", "BYTES", 0, 65535, 1194, "another number in the length field", nullptr,
     length_field},
    {"flip-bit", "BIT", 0, 524343, 64, "turn over this bit, counted from the frame's first",
     nullptr, flip_bit},
    {"noise", "BYTES", 1, 65536, 16, "bytes of noise before the frame, none of them 0x5A", nullptr,
     noise_before},
    {"noise-headers", "BYTES", 1, 65536, 3, "false headers, bytes 0x5A, before the frame", nullptr,
     headers_before},
    {"split", "BYTES", 1, 65536, 5, "write the frame in pieces of so many bytes", nullptr, split},
    {"delay", "MS", 0, 600000, 200, "wait before the frame", nullptr, delay},
};

template <typename Frame>
void apply_in_order(const fault_list& faults, Frame& frame,
                    void (*fault_kind::*act)(const fault&, Frame&))
{
    for (const fault_kind& kind : all_kinds) {
        for (const fault& one : faults) {
            if (one.kind == &kind && kind.*act != nullptr && one.fits(frame.number))
                (kind.*act)(one, frame);
        }
    }
}

/// Decimal, or hexadecimal after 0x; \a otherwise if it is no number.
int number(QStringView text, int otherwise)
{
    bool good = false;
    const int value = text.toInt(&good, text.startsWith(u"0x") ? 16 : 10);
    return good ? value : otherwise;
}

} // namespace

const QList<fault_kind>& fault_kinds()
{
    return all_kinds;
}

std::optional<fault> parse_fault(const QString& text, QString& error)
{
    const QString before_frame = text.section(QLatin1Char('@'), 0, 0);
    const QString name = before_frame.section(QLatin1Char('='), 0, 0);
    const auto kind = std::find_if(all_kinds.cbegin(), all_kinds.cend(), [&name](const auto& one) {
        return name == QLatin1String(one.name);
    });
    if (kind == all_kinds.cend()) {
        error = QStringLiteral("there is no fault \"%1\"").arg(name);
        return std::nullopt;
    }
    fault result{.kind = &*kind, .value = kind->usual, .only_frame = std::nullopt};
    if (before_frame.contains(QLatin1Char('='))) {
        if (kind->argument == nullptr) {
            error = QStringLiteral("fault \"%1\" takes no value").arg(name);
            return std::nullopt;
        }
        const int none = kind->lowest - 1;
        result.value = number(before_frame.section(QLatin1Char('='), 1), none);
        if (result.value < kind->lowest || result.value > kind->highest) {
            error = QStringLiteral("fault \"%1\" takes a number from %2 to %3")
                        .arg(name)
                        .arg(kind->lowest)
                        .arg(kind->highest);
            return std::nullopt;
        }
    }
    if (text.contains(QLatin1Char('@'))) {
        const int frame = number(text.section(QLatin1Char('@'), 1), -1);
        if (frame < 0) {
            error = QStringLiteral("\"%1\" does not end with the number of a frame").arg(text);
            return std::nullopt;
        }
        result.only_frame = frame;
    }
    return result;
}

QString fault_help()
{
    QString text;
    for (const fault_kind& kind : all_kinds) {
        QString name = QString::fromLatin1(kind.name);
        QString help = QString::fromLatin1(kind.help);
        if (kind.argument != nullptr) {
            name += QLatin1Char('=') + QLatin1String(kind.argument);
            help += QStringLiteral(" (%1)").arg(kind.usual);
        }
        text += QStringLiteral("  %1  %2\n").arg(name, -22).arg(help);
    }
    return text;
}

void apply(const fault_list& faults, frame_draft& draft)
{
    apply_in_order(faults, draft, &fault_kind::on_draft);
}

void apply(const fault_list& faults, frame_bytes& frame)
{
    apply_in_order(faults, frame, &fault_kind::on_bytes);
}

QList<chunk> to_chunks(const frame_bytes& frame)
{
    const qsizetype size = frame.piece_size > 0 ? frame.piece_size : frame.bytes.size();
    QList<chunk> chunks;
    for (qsizetype at = 0; at < frame.bytes.size(); at += size)
        chunks.append({frame.bytes.mid(at, size), at == 0 ? frame.delay : piece_pause});
    return chunks;
}

} // namespace instrument
