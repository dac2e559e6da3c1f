#pragma once

#include "instrument/adb_message.h"
#include "instrument/byte_log.h"
#include "instrument/conversation.h"
#include "instrument/protocol.h"

#include <QObject>
#include <QQueue>
#include <QTcpSocket>

#include <memory>
#include <unordered_map>

namespace instrument {

/// The daemon's side of one connection from an adb server: answers its connect
/// message, opens a stream with a conversation of its own for each client of
/// the device port, and refuses every other service.
class adb_connection : public QObject
{
    Q_OBJECT

public:
    /// Takes the socket over. `service` is the only one offered, such as
    /// "tcp:12345". `log` may be null.
    adb_connection(QTcpSocket* socket, QByteArray service, protocol_factory make_protocol,
                   byte_log* log, QObject* parent = nullptr);
    ~adb_connection() override;

    /// Whether the host has introduced itself.
    [[nodiscard]] bool is_online() const { return m_online; }

signals:
    /// The host has introduced itself and now counts the device as present.
    void online();
    /// The connection has ended, by whichever side.
    void ended();

private:
    struct stream
    {
        std::uint32_t remote_id = 0;
        bool may_write = false; ///< the last write has been acknowledged
        QQueue<QByteArray> waiting;
        std::unique_ptr<conversation> talk;
    };

    void read();
    void handle(const adb_message& message);
    void connect_host(const adb_message& message);
    void open_stream(const adb_message& message);
    void take_bytes(const adb_message& message);
    void close_stream(const adb_message& message);
    /// Queues bytes of a stream in messages no larger than the host takes.
    void write(std::uint32_t local_id, const QByteArray& bytes);
    void write_next(std::uint32_t local_id);
    void send(adb_command command, std::uint32_t argument0, std::uint32_t argument1,
              const QByteArray& payload = {});

    QTcpSocket* m_socket;
    QByteArray m_service;
    protocol_factory m_make_protocol;
    byte_log* m_log;
    QByteArray m_buffer;
    bool m_online = false;
    bool m_check_sums = true;
    qsizetype m_largest_payload = 0;
    std::uint32_t m_next_id = 1;
    // Streams stay where they are: a conversation writes through its stream's id.
    std::unordered_map<std::uint32_t, stream> m_streams; ///< by local id
};

} // namespace instrument
