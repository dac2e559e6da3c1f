#include "instrument/adb_connection.h"

#include <algorithm>
#include <utility>

namespace instrument {

namespace {

/// How the device introduces itself. No features: the oldest forms of all
/// services are enough.
const QByteArray banner = QByteArrayLiteral("device::ro.product.name=velmo_instrument;"
                                            "ro.product.model=Instrument;"
                                            "ro.product.device=instrument;");
/// Hosts refuse to be told that less than this fits into a message.
constexpr std::uint32_t smallest_payload = 4096;

} // namespace

adb_connection::adb_connection(QTcpSocket* socket, QByteArray service,
                               protocol_factory make_protocol, byte_log* log, QObject* parent)
    : QObject(parent), m_socket(socket), m_service(std::move(service)),
      m_make_protocol(std::move(make_protocol)), m_log(log)
{
    m_socket->setParent(this);
    m_socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    connect(m_socket, &QTcpSocket::readyRead, this, &adb_connection::read);
    connect(m_socket, &QTcpSocket::disconnected, this, &adb_connection::ended);
}

adb_connection::~adb_connection()
{
    m_socket->disconnect(this);
    m_socket->abort();
}

void adb_connection::read()
{
    m_buffer += m_socket->readAll();
    adb_message message;
    for (;;) {
        switch (take_adb_message(m_buffer, m_check_sums, message)) {
        case adb_parse::incomplete: return;
        case adb_parse::broken:
            if (m_log != nullptr)
                m_log->note(QStringLiteral("adb"), QStringLiteral("a broken message, closing"));
            m_buffer.clear();
            m_socket->abort();
            return;
        case adb_parse::whole: handle(message); break;
        }
    }
}

void adb_connection::handle(const adb_message& message)
{
    if (message.command == adb_command::connect) {
        connect_host(message);
        return;
    }
    if (!m_online)
        return;
    switch (message.command) {
    case adb_command::open: open_stream(message); break;
    case adb_command::write: take_bytes(message); break;
    case adb_command::close: close_stream(message); break;
    case adb_command::okay: {
        const auto found = m_streams.find(message.argument1);
        if (found != m_streams.end() && found->second.remote_id == message.argument0) {
            found->second.may_write = true;
            write_next(message.argument1);
        }
        break;
    }
    default: break; // authentication and encryption are never asked for
    }
}

void adb_connection::connect_host(const adb_message& message)
{
    m_streams.clear();
    const std::uint32_t version =
        std::clamp(message.argument0, adb_oldest_version, adb_version_without_checksum);
    m_check_sums = version < adb_version_without_checksum;
    m_largest_payload = std::clamp(message.argument1, smallest_payload, adb_largest_payload);
    m_online = true;
    send(adb_command::connect, version, adb_largest_payload, banner);
    emit online();
}

void adb_connection::open_stream(const adb_message& message)
{
    const std::uint32_t remote_id = message.argument0;
    QByteArray service = message.payload;
    if (service.endsWith('\0'))
        service.chop(1);
    if (remote_id == 0 || service != m_service) {
        send(adb_command::close, 0, remote_id);
        return;
    }
    const std::uint32_t local_id = m_next_id++;
    stream& opened = m_streams[local_id];
    opened.remote_id = remote_id;
    opened.may_write = true;
    opened.talk =
        std::make_unique<conversation>(QStringLiteral("adb-%1").arg(local_id), m_make_protocol(),
                                       m_log, [this, local_id](const QByteArray& bytes) {
                                           write(local_id, bytes);
                                           return true;
                                       });
    send(adb_command::okay, local_id, remote_id);
}

void adb_connection::take_bytes(const adb_message& message)
{
    const auto found = m_streams.find(message.argument1);
    if (found == m_streams.end() || found->second.remote_id != message.argument0)
        return;
    send(adb_command::okay, message.argument1, message.argument0);
    found->second.talk->receive(message.payload);
}

void adb_connection::close_stream(const adb_message& message)
{
    // A host that gives up before the stream is open does not know our id.
    const auto found = m_streams.find(message.argument1);
    if (found == m_streams.end() || found->second.remote_id != message.argument0)
        return;
    m_streams.erase(found);
    send(adb_command::close, message.argument1, message.argument0);
}

void adb_connection::write(std::uint32_t local_id, const QByteArray& bytes)
{
    stream& to = m_streams.at(local_id);
    for (qsizetype at = 0; at < bytes.size(); at += m_largest_payload)
        to.waiting.enqueue(bytes.mid(at, m_largest_payload));
    write_next(local_id);
}

void adb_connection::write_next(std::uint32_t local_id)
{
    stream& to = m_streams.at(local_id);
    if (!to.may_write || to.waiting.isEmpty())
        return;
    to.may_write = false;
    send(adb_command::write, local_id, to.remote_id, to.waiting.dequeue());
}

void adb_connection::send(adb_command command, std::uint32_t argument0, std::uint32_t argument1,
                          const QByteArray& payload)
{
    m_socket->write(to_bytes({command, argument0, argument1, payload}));
}

} // namespace instrument
