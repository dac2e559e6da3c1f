#pragma once

#include "instrument/protocol.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <cstdint>
#include <functional>
#include <memory>

namespace instrument {

/// A firmware image as the boot loader has taken it.
struct firmware
{
    QString name;
    QByteArray image;

    [[nodiscard]] QByteArray sha256() const; ///< in hexadecimal digits
};

/// How the boot loader behaves, also where it misbehaves.
struct boot_settings
{
    QByteArray version = "VELMO-SIM-1.0"; ///< empty: the question is not answered
    bool version_ends_with_zero = true;
    QList<int> refused{}; ///< data blocks, from 1, that are refused once each
    /// From this message of an upgrade on nothing is answered: 0 is "iapstart", 1
    /// the header, 2 the first block of data, and so on to the closing block; -1
    /// for never.
    int silent_from = -1;
    int silent_upgrades = 1; ///< upgrades that fall silent, 0 for all
};

/// The instrument's boot loader, in front of what the instrument speaks otherwise.
///
/// "version" brings the version text. "iapstart" begins an upgrade: the boot loader
/// asks for blocks, takes the header, the blocks of data and the end, which it
/// refuses the first time, and hands the image over once the closing block has
/// come. Blocks that are damaged or out of order are refused. A new
/// "iapstart" begins again. Everything else goes to the other protocol, and so
/// does the beginning of a text while it is nothing more: it may be the last byte of
/// a frame, which that protocol waits for.
class boot_loader final : public protocol
{
public:
    using receiver = std::function<void(const firmware&)>;

    boot_loader(std::unique_ptr<protocol> otherwise, boot_settings settings, receiver taken);

    [[nodiscard]] QList<chunk> receive(QByteArrayView bytes) override;

private:
    enum class stage
    {
        normal,
        header,
        data,
        end,     ///< has come once
        closing, ///< has come twice
    };

    [[nodiscard]] QList<chunk> take_text();
    [[nodiscard]] QList<chunk> take_upgrade();
    [[nodiscard]] QList<chunk> begin();
    /// Takes one message off the front of the buffer; false while it is not whole.
    [[nodiscard]] bool take_message(QList<chunk>& answers);
    [[nodiscard]] QList<chunk> take_block(std::uint8_t number, QByteArrayView data);
    [[nodiscard]] QList<chunk> take_header(QByteArrayView data);
    [[nodiscard]] QList<chunk> take_end();
    /// The answer to the next message of the upgrade, or silence.
    [[nodiscard]] QList<chunk> say(std::initializer_list<char> bytes);

    std::unique_ptr<protocol> m_otherwise;
    boot_settings m_settings;
    receiver m_taken;
    QByteArray m_buffer;
    qsizetype m_passed_on = 0;   ///< bytes of the buffer that the other protocol has heard
    bool m_line_end_due = false; ///< of a version text that came with one

    stage m_stage = stage::normal;
    int m_upgrade = 0; ///< counts those begun
    int m_message = 0; ///< of this upgrade
    int m_blocks = 0;  ///< of data, taken
    QList<int> m_to_refuse;
    firmware m_firmware;
    qsizetype m_length = 0; ///< of the image, as announced
};

} // namespace instrument
