#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <cstdint>

/// YMODEM from the sender's side, as the instrument's boot loader speaks it:
/// blocks of 128 or 1024 bytes, each with a number, its complement and a
/// CRC-16.
namespace ymodem {

inline constexpr char short_block = 0x01;         ///< SOH: 128 bytes of data follow
inline constexpr char long_block = 0x02;          ///< STX: 1024 bytes of data follow
inline constexpr char end_of_transmission = 0x04; ///< EOT
inline constexpr char acknowledged = 0x06;        ///< ACK
inline constexpr char refused = 0x15;             ///< NAK
inline constexpr char asked = 'C';                ///< the receiver wants a block with a CRC
inline constexpr char padding = 0x1A;             ///< fills the last block of data

inline constexpr qsizetype short_size = 128; ///< bytes of data in a short block
inline constexpr qsizetype long_size = 1024; ///< bytes of data in a long block

/// CRC-16/XMODEM: polynomial 0x1021, initial value 0, most significant bit first.
[[nodiscard]] std::uint16_t crc16(QByteArrayView data);

/// Block 0: the name of the file and its length in bytes. As many bytes of the
/// UTF-8 name are copied as the name has characters, so that a name beyond ASCII
/// loses its tail; a name that leaves no room for the length is cut.
[[nodiscard]] QByteArray header_block(const QString& name, qint32 length);
/// A block with the beginning of `rest`: a short one when all of it fits, else a
/// long one.
[[nodiscard]] QByteArray data_block(std::uint8_t sequence, QByteArrayView rest);
/// The block that says that no further file comes.
[[nodiscard]] QByteArray closing_block();

/// The conversation that sends one image, byte by byte of the receiver's. Does
/// no input or output of its own and knows no clock.
class sender
{
public:
    /// What the receiver's byte has led to.
    enum class event
    {
        none,
        header_sent,
        data_sent, ///< not for a block sent again
        finished,
    };
    struct step
    {
        QByteArray send{};
        event what = event::none;
        bool goes_on = true; ///< false: no further byte is expected
    };
    enum stage : std::uint8_t
    {
        idle,
        header_sent,
        header_taken,
        data_sent,
        end_sent,
        end_refused,
        end_taken,
        closing_sent,
    };

    sender() = default;
    /// `image` must outlive the sender and hold at least one byte.
    sender(QString name, QByteArrayView image);

    /// Takes one byte of the receiver. A byte that the stage has no use for leaves
    /// the stage as it is and, but for the first stage, ends the conversation.
    [[nodiscard]] step take(char byte);

    [[nodiscard]] stage at() const { return m_stage; }
    /// Bytes of the image put into blocks so far.
    [[nodiscard]] qint32 offset() const { return m_offset; }
    /// The same in percent of the image, 0 to 100.
    [[nodiscard]] qint32 percent() const;

private:
    [[nodiscard]] step begin();
    [[nodiscard]] step next_data();

    QString m_name;
    QByteArrayView m_image;
    stage m_stage = idle;
    std::uint8_t m_sequence = 0;
    qint32 m_offset = 0;
    QByteArray m_last_block;
};

} // namespace ymodem
