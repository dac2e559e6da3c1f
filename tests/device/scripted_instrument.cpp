#include "scripted_instrument.h"

#include <QtGlobal>

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <termios.h>
#include <unistd.h>

namespace {

/// Takes one request off the front of `bytes`: the text command, or a host frame
/// of a read.
QByteArray take_request(QByteArray& bytes)
{
    const qsizetype size = bytes.startsWith('~') ? 3 : 11;
    if (bytes.size() < size)
        return {};
    const QByteArray request = bytes.left(size);
    bytes.remove(0, size);
    return request;
}

} // namespace

scripted_instrument::scripted_instrument(script answer) : m_answer(std::move(answer))
{
    termios raw{};
    cfmakeraw(&raw);
    cfsetspeed(&raw, B115200);
    std::array<char, 128> name{};
    if (openpty(&m_instrument_end, &m_program_end, name.data(), &raw, nullptr) != 0)
        qFatal("no pseudo-terminal");
    fcntl(m_instrument_end, F_SETFL, O_NONBLOCK);
    m_path = QString::fromLocal8Bit(name.data());
    m_thread = std::thread([this] { play(); });
}

scripted_instrument::~scripted_instrument()
{
    vanish();
    close(m_program_end);
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
    tcgetattr(m_instrument_end, &settings);
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
        std::array<char, 256> bytes{};
        const ssize_t size = read(m_instrument_end, bytes.data(), bytes.size());
        if (size <= 0)
            continue;
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
