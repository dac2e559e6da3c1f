#include "scripted_instrument.h"

#include <QtGlobal>

#include <array>
#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <pty.h>
#include <sys/socket.h>
#include <termios.h>
#include <unistd.h>

namespace {

/// Takes one request off the front of `bytes`: the text command, a host frame, or
/// all that is neither.
QByteArray take_request(QByteArray& bytes)
{
    qsizetype size = bytes.size();
    if (bytes.startsWith('~')) {
        size = 3;
    } else if (bytes.startsWith('Z')) {
        const auto byte = [&bytes](qsizetype at) { return static_cast<unsigned char>(bytes[at]); };
        size = bytes.size() < 6 ? 7 : byte(4) * 256 + byte(5) + 7;
    }
    if (bytes.size() < size)
        return {};
    const QByteArray request = bytes.left(size);
    bytes.remove(0, size);
    return request;
}

} // namespace

scripted_instrument::scripted_instrument(script answer, line kind) : m_answer(std::move(answer))
{
    if (kind == line::terminal)
        open_terminal();
    else
        open_tcp();
    m_thread = std::thread([this] {
        if (accept_program())
            play();
    });
}

void scripted_instrument::open_terminal()
{
    termios raw{};
    cfmakeraw(&raw);
    cfsetspeed(&raw, B115200);
    std::array<char, 128> name{};
    int instrument_end = -1;
    if (openpty(&instrument_end, &m_program_end, name.data(), &raw, nullptr) != 0)
        qFatal("no pseudo-terminal");
    fcntl(instrument_end, F_SETFL, O_NONBLOCK);
    m_instrument_end = instrument_end;
    m_path = QString::fromLocal8Bit(name.data());
}

void scripted_instrument::open_tcp()
{
    m_listening = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    if (bind(m_listening, reinterpret_cast<sockaddr*>(&address), size) != 0 ||
        listen(m_listening, 1) != 0 ||
        getsockname(m_listening, reinterpret_cast<sockaddr*>(&address), &size) != 0)
        qFatal("no socket");
    m_tcp_port = ntohs(address.sin_port);
}

bool scripted_instrument::accept_program()
{
    while (m_instrument_end < 0 && !m_stop) {
        pollfd waiting{m_listening, POLLIN, 0};
        if (poll(&waiting, 1, 10) <= 0)
            continue;
        const int accepted = accept(m_listening, nullptr, nullptr);
        fcntl(accepted, F_SETFL, O_NONBLOCK);
        m_instrument_end = accepted;
    }
    return !m_stop;
}

scripted_instrument::~scripted_instrument()
{
    vanish();
    for (const int descriptor : {m_program_end, m_listening}) {
        if (descriptor >= 0)
            close(descriptor);
    }
}

void scripted_instrument::vanish()
{
    m_stop = true;
    if (m_thread.joinable())
        m_thread.join();
    if (m_instrument_end >= 0)
        close(m_instrument_end);
    m_instrument_end = -1;
}

QList<scripted_instrument::request> scripted_instrument::requests() const
{
    const std::lock_guard lock(m_mutex);
    return m_requests;
}

int scripted_instrument::baud() const
{
    termios settings{};
    if (tcgetattr(m_instrument_end, &settings) != 0)
        return 0;
    switch (cfgetospeed(&settings)) {
    case B9600: return 9600;
    case B115200: return 115200;
    default: return 0;
    }
}

bool scripted_instrument::say(const QByteArray& bytes) const
{
    qsizetype done = 0;
    while (done < bytes.size()) {
        const ssize_t written =
            write(m_instrument_end, bytes.data() + done, static_cast<size_t>(bytes.size() - done));
        if (written > 0) {
            done += written;
            continue;
        }
        pollfd writable{m_instrument_end, POLLOUT, 0};
        if (poll(&writable, 1, 50) == 0)
            return false;
    }
    return true;
}

void scripted_instrument::play()
{
    QByteArray unread;
    while (!m_stop) {
        pollfd readable{m_instrument_end, POLLIN, 0};
        if (poll(&readable, 1, 10) <= 0)
            continue;
        std::array<char, 4096> bytes{};
        const ssize_t size = read(m_instrument_end, bytes.data(), bytes.size());
        if (size <= 0) {
            // A line without a program reads as ended, again and again.
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
            continue;
        }
        unread.append(bytes.data(), size);
        for (QByteArray taken = take_request(unread); !taken.isEmpty();
             taken = take_request(unread)) {
            const request asked{taken, baud()};
            {
                const std::lock_guard lock(m_mutex);
                m_requests.append(asked);
            }
            if (m_answer)
                say(m_answer(asked));
        }
    }
}
