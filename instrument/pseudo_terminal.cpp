#include "instrument/pseudo_terminal.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <utility>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

namespace instrument {

namespace {

const QString log_line = QStringLiteral("serial");

constexpr std::array<std::pair<speed_t, int>, 11> speeds{{{B1200, 1200},
                                                          {B2400, 2400},
                                                          {B4800, 4800},
                                                          {B9600, 9600},
                                                          {B19200, 19200},
                                                          {B38400, 38400},
                                                          {B57600, 57600},
                                                          {B115200, 115200},
                                                          {B230400, 230400},
#ifdef B460800
                                                          {B460800, 460800},
#endif
#ifdef B921600
                                                          {B921600, 921600}
#endif
}};

QString last_error()
{
    return QString::fromLocal8Bit(std::strerror(errno));
}

} // namespace

pseudo_terminal::pseudo_terminal(int baud, protocol_factory make_protocol, byte_log* log,
                                 QObject* parent)
    : QObject(parent), m_baud(baud), m_log(log), m_noted_baud(baud),
      m_talk(log_line, make_protocol(), log,
             [this](const QByteArray& bytes) { return write(bytes); })
{
}

pseudo_terminal::~pseudo_terminal()
{
    m_readable.reset();
    m_writable.reset();
    if (!m_link.isEmpty() && QFile::symLinkTarget(m_link) == m_path)
        QFile::remove(m_link);
    for (const int descriptor : {m_slave, m_master}) {
        if (descriptor >= 0)
            ::close(descriptor);
    }
}

bool pseudo_terminal::start(const QString& link, QString& error)
{
    m_master = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (m_master < 0 || ::grantpt(m_master) != 0 || ::unlockpt(m_master) != 0) {
        error = last_error();
        return false;
    }
    m_path = QFile::decodeName(::ptsname(m_master));
    m_slave = ::open(QFile::encodeName(m_path).constData(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    termios settings{};
    if (m_slave < 0 || ::tcgetattr(m_slave, &settings) != 0) {
        error = last_error();
        return false;
    }
    // Raw, so that no byte is echoed or changed before a host has set the line up.
    ::cfmakeraw(&settings);
    if (::tcsetattr(m_slave, TCSANOW, &settings) != 0 ||
        ::fcntl(m_master, F_SETFL, ::fcntl(m_master, F_GETFL) | O_NONBLOCK) != 0) {
        error = last_error();
        return false;
    }
    if (!link.isEmpty() && !make_link(link, error))
        return false;

    m_readable = std::make_unique<QSocketNotifier>(m_master, QSocketNotifier::Read);
    connect(m_readable.get(), &QSocketNotifier::activated, this, &pseudo_terminal::read);
    m_writable = std::make_unique<QSocketNotifier>(m_master, QSocketNotifier::Write);
    m_writable->setEnabled(false);
    connect(m_writable.get(), &QSocketNotifier::activated, this, &pseudo_terminal::write_waiting);
    return true;
}

bool pseudo_terminal::make_link(const QString& link, QString& error)
{
    const QFileInfo there(link);
    if (there.isSymLink()) {
        QFile::remove(link);
    } else if (there.exists()) {
        error = QStringLiteral("%1 exists and is no symbolic link").arg(link);
        return false;
    }
    if (!QFile::link(m_path, link)) {
        error = QStringLiteral("cannot make the link %1: %2").arg(link, last_error());
        return false;
    }
    m_link = link;
    return true;
}

bool pseudo_terminal::has_speed(int baud)
{
    return std::any_of(speeds.begin(), speeds.end(),
                       [baud](const auto& speed) { return speed.second == baud; });
}

bool pseudo_terminal::is_understood()
{
    const int baud = host_baud();
    if (std::exchange(m_noted_baud, baud) != baud && m_log != nullptr)
        m_log->note(log_line, QStringLiteral("host at %1 baud").arg(baud));
    return baud == m_baud;
}

int pseudo_terminal::host_baud() const
{
    termios settings{};
    if (::tcgetattr(m_slave, &settings) != 0)
        return 0;
    for (const auto& [code, baud] : speeds) {
        if (code == ::cfgetospeed(&settings))
            return baud;
    }
    return 0;
}

void pseudo_terminal::read()
{
    std::array<char, 4096> bytes{};
    const ssize_t count = ::read(m_master, bytes.data(), bytes.size());
    if (count <= 0)
        return;
    // A host that ended without closing leaves its exclusive use behind.
    ::ioctl(m_slave, TIOCNXCL);
    const QByteArrayView arrived(bytes.data(), count);
    if (is_understood()) {
        m_talk.receive(arrived);
    } else if (m_log != nullptr) {
        m_log->in(log_line, arrived);
        m_log->note(log_line, QStringLiteral("not understood at %1 baud").arg(host_baud()));
    }
}

bool pseudo_terminal::write(const QByteArray& bytes)
{
    if (!is_understood()) {
        if (m_log != nullptr) {
            m_log->note(
                log_line,
                QStringLiteral("%1 bytes lost at %2 baud").arg(bytes.size()).arg(m_noted_baud));
        }
        return false;
    }
    m_waiting += bytes;
    write_waiting();
    return true;
}

void pseudo_terminal::write_waiting()
{
    const ssize_t count =
        ::write(m_master, m_waiting.constData(), static_cast<size_t>(m_waiting.size()));
    if (count > 0)
        m_waiting.remove(0, count);
    m_writable->setEnabled(!m_waiting.isEmpty());
}

} // namespace instrument
