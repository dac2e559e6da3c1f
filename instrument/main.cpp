#include "instrument/adb_daemon.h"
#include "instrument/boot_loader.h"
#include "instrument/byte_log.h"
#include "instrument/faults.h"
#include "instrument/frame_responder.h"
#include "instrument/mode_text_receiver.h"
#include "instrument/sample_memory.h"
#include "instrument/storage.h"
#include "instrument/text_responder.h"
#include "instrument/upload_receiver.h"
#ifdef Q_OS_UNIX
#include "console/quit_signals.h"
#include "instrument/pseudo_terminal.h"
#endif

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QSaveFile>

#include <cstdio>
#include <memory>
#include <optional>

namespace {

using namespace instrument;

/// The end of the program when it cannot do what the command line says.
[[noreturn]] void fail(const QString& message)
{
    std::fprintf(stderr, "velmo_instrument: %s\n", qPrintable(message));
    std::exit(1);
}

void say(const QString& line)
{
    std::printf("%s\n", qPrintable(line));
    std::fflush(stdout);
}

const QString description =
    QStringLiteral("A simulated land-measuring instrument with a memory full of measurements.\n"
                   "It is reached over adb like an Android instrument, over a pseudo-terminal\n"
                   "like one on a serial port, or both, and speaks the binary frame protocol or\n"
                   "the text protocol of older instruments. What it is sent joins its memory, and\n"
                   "a line is printed for each measurement. Its boot loader takes new firmware.\n"
                   "It runs until SIGINT or SIGTERM.\n"
                   "\n"
                   "  velmo_instrument --adb              the running adb server lists it\n"
                   "  velmo_instrument --pty --link tty   open ./tty at 115200 baud\n"
                   "  velmo_instrument --pty --text long  an older one, which speaks text\n"
                   "  velmo_instrument --list             what is in the memory\n");

QString fault_text()
{
    return QStringLiteral(
               "\nFaults, as NAME, NAME=VALUE, NAME@FRAME or NAME=VALUE@FRAME. Without @FRAME a\n"
               "fault strikes in every frame that it fits. Frames count from the beginning of a\n"
               "read: 0 answers the read probe, 1 is the first of the export. In an upload 0\n"
               "answers its probe, 1 the first head; what is not answered well is not kept.\n"
               "Text records count from 1.\n\n") +
           fault_help();
}

struct options
{
    QCommandLineOption help{{QStringLiteral("h"), QStringLiteral("help")},
                            QStringLiteral("Print this.")};
    QCommandLineOption adb{QStringLiteral("adb"), QStringLiteral("Be an Android instrument.")};
    QCommandLineOption adb_port{
        QStringLiteral("adb-port"),
        QStringLiteral("Port of the daemon on 127.0.0.1 (5555); 0 for any free one."),
        QStringLiteral("port"), QStringLiteral("5555")};
    QCommandLineOption server_port{
        QStringLiteral("adb-server-port"),
        QStringLiteral("Port of the adb server to announce to, 0 for none. Otherwise taken from "
                       "ANDROID_ADB_SERVER_PORT, or 5037."),
        QStringLiteral("port")};
    QCommandLineOption device_port{
        QStringLiteral("device-port"),
        QStringLiteral("The instrument's own port, the target of \"adb forward\" (12345)."),
        QStringLiteral("port"), QStringLiteral("12345")};
    QCommandLineOption detach_after{
        QStringLiteral("detach-after"),
        QStringLiteral("Be gone from adb so long after a server has connected."),
        QStringLiteral("ms")};
    QCommandLineOption pty{QStringLiteral("pty"),
                           QStringLiteral("Be an instrument on a serial port.")};
    QCommandLineOption link{QStringLiteral("link"),
                            QStringLiteral("Make a symbolic link to the pseudo-terminal."),
                            QStringLiteral("path")};
    QCommandLineOption baud{QStringLiteral("baud"),
                            QStringLiteral("Speed of the serial port (115200)."),
                            QStringLiteral("rate"), QStringLiteral("115200")};
    QCommandLineOption text{
        QStringLiteral("text"),
        QStringLiteral("Speak the text protocol, in \"short\" or \"long\" records."),
        QStringLiteral("form")};
    QCommandLineOption uploads{
        QStringLiteral("uploads"),
        QStringLiteral("How measurements can be sent to it: \"packets\", \"mode-text\" or "
                       "\"none\" (packets, or mode-text with --text)."),
        QStringLiteral("how")};
    QCommandLineOption received{
        QStringLiteral("received"),
        QStringLiteral("Write what it was sent to this file, as JSON, after each measurement."),
        QStringLiteral("file")};
    QCommandLineOption fault{
        QStringLiteral("fault"),
        QStringLiteral("Do this wrong; see below. May be given more than once."),
        QStringLiteral("fault")};
    QCommandLineOption token{
        QStringLiteral("token"),
        QStringLiteral("The instrument's token, eight hexadecimal digits (1A2B3C4D)."),
        QStringLiteral("hex"), QStringLiteral("1A2B3C4D")};
    QCommandLineOption device_type{QStringLiteral("device-type"),
                                   QStringLiteral("Device type in the frames, 0 to 255 (1)."),
                                   QStringLiteral("number"), QStringLiteral("1")};
    QCommandLineOption version{
        QStringLiteral("firmware-version"),
        QStringLiteral("Version text of the firmware (VELMO-SIM-1.0); empty to leave the question "
                       "for it unanswered."),
        QStringLiteral("text"), QStringLiteral("VELMO-SIM-1.0")};
    QCommandLineOption no_zero{QStringLiteral("version-without-zero"),
                               QStringLiteral("Send no zero byte behind the version text.")};
    QCommandLineOption keep_firmware{QStringLiteral("keep-firmware"),
                                     QStringLiteral("Write a firmware image that has come to this "
                                                    "file."),
                                     QStringLiteral("file")};
    QCommandLineOption refuse_block{
        QStringLiteral("refuse-block"),
        QStringLiteral("Refuse this block of an image once, 1 being the first. May be given more "
                       "than once."),
        QStringLiteral("number")};
    QCommandLineOption silent_from{
        QStringLiteral("silent-from"),
        QStringLiteral("Fall silent in the first upgrade at this message: 0 its beginning, 1 the "
                       "header, 2 the first block and so on."),
        QStringLiteral("message")};
    QCommandLineOption measurements{
        QStringLiteral("measurements"),
        QStringLiteral("Fill the memory with so many made-up measurements, 0 to 65535, instead "
                       "of the usual ones."),
        QStringLiteral("count")};
    QCommandLineOption points{QStringLiteral("points"),
                              QStringLiteral("Points of a made-up measurement, 1 to 65535 (60)."),
                              QStringLiteral("count"), QStringLiteral("60")};
    QCommandLineOption seed{QStringLiteral("seed"),
                            QStringLiteral("Seed of what is random in the memory."),
                            QStringLiteral("number"), QString::number(usual_seed)};
    QCommandLineOption list{QStringLiteral("list"),
                            QStringLiteral("Print the memory as a table, and end.")};
    QCommandLineOption json{QStringLiteral("json"),
                            QStringLiteral("Print the memory as JSON, and end.")};
    QCommandLineOption log{
        QStringLiteral("log"),
        QStringLiteral("Write every byte in both directions to this file, with time and hex."),
        QStringLiteral("file")};

    void add_to(QCommandLineParser& parser) const
    {
        parser.addOptions({help,         adb,      adb_port,      server_port,  device_port,
                           detach_after, pty,      link,          baud,         text,
                           uploads,      received, fault,         token,        device_type,
                           version,      no_zero,  keep_firmware, refuse_block, silent_from,
                           measurements, points,   seed,          list,         json,
                           log});
    }
};

/// A number from an option or the environment, or the end.
qint64 number(const QString& what, const QString& text, qint64 lowest, qint64 highest)
{
    bool good = false;
    const qint64 value = text.toLongLong(&good);
    if (!good || value < lowest || value > highest) {
        fail(QStringLiteral("%1 takes a number from %2 to %3, not \"%4\"")
                 .arg(what)
                 .arg(lowest)
                 .arg(highest)
                 .arg(text));
    }
    return value;
}

/// The command line with its values checked.
class command_line
{
public:
    explicit command_line(const QCoreApplication& application)
    {
        m_parser.setApplicationDescription(description);
        m_options.add_to(m_parser);
        if (!m_parser.parse(application.arguments()))
            fail(m_parser.errorText());
        if (m_parser.isSet(m_options.help)) {
            std::printf("%s%s", qPrintable(m_parser.helpText()), qPrintable(fault_text()));
            std::exit(0);
        }
        if (!m_parser.positionalArguments().isEmpty())
            fail(QStringLiteral("unexpected \"%1\"")
                     .arg(m_parser.positionalArguments().constFirst()));
    }

    [[nodiscard]] bool wants(QCommandLineOption options::*option) const
    {
        return m_parser.isSet(m_options.*option);
    }
    [[nodiscard]] QString text(QCommandLineOption options::*option) const
    {
        return m_parser.value(m_options.*option);
    }
    [[nodiscard]] qint64 number_of(QCommandLineOption options::*option, qint64 lowest,
                                   qint64 highest) const
    {
        const QString name = QStringLiteral("--") + (m_options.*option).names().constLast();
        return number(name, text(option), lowest, highest);
    }

    [[nodiscard]] instrument::memory stored() const
    {
        const auto seed = static_cast<std::uint32_t>(number_of(&options::seed, 0, 4294967295LL));
        const auto points = static_cast<int>(number_of(&options::points, 1, 65535));
        if (!wants(&options::measurements))
            return sample_memory(seed);
        return synthetic_memory(static_cast<int>(number_of(&options::measurements, 0, 65535)),
                                points, seed);
    }

    [[nodiscard]] frame_identity identity() const
    {
        const QByteArray digits = text(&options::token).toLatin1();
        const QByteArray token = QByteArray::fromHex(digits);
        if (token.size() != 4 || token.toHex() != digits.toLower())
            fail(QStringLiteral("--token takes eight hexadecimal digits"));
        return {token, static_cast<std::uint8_t>(number_of(&options::device_type, 0, 255))};
    }

    [[nodiscard]] boot_settings boot() const
    {
        boot_settings settings{.version = text(&options::version).toUtf8(),
                               .version_ends_with_zero = !wants(&options::no_zero)};
        const QString refuse = QStringLiteral("--refuse-block");
        for (const QString& one : m_parser.values(m_options.refuse_block))
            settings.refused.append(static_cast<int>(number(refuse, one, 1, 65535)));
        if (wants(&options::silent_from))
            settings.silent_from = static_cast<int>(number_of(&options::silent_from, 0, 65535));
        return settings;
    }

    [[nodiscard]] fault_list faults() const
    {
        fault_list list;
        for (const QString& one : m_parser.values(m_options.fault)) {
            QString error;
            const std::optional<instrument::fault> parsed = parse_fault(one, error);
            if (!parsed)
                fail(error);
            list.append(*parsed);
        }
        return list;
    }

    /// One of `words`, by its place, for an option that takes nothing else.
    [[nodiscard]] qsizetype word_of(QCommandLineOption options::*option,
                                    const QStringList& words) const
    {
        const qsizetype place = words.indexOf(text(option));
        if (place < 0) {
            fail(QStringLiteral("--%1 takes \"%2\"")
                     .arg((m_options.*option).names().constLast(),
                          words.join(QStringLiteral("\" or \""))));
        }
        return place;
    }

    /// What the instrument speaks on each line, from and into `where`, behind its boot
    /// loader, which hands firmware to `taken`.
    [[nodiscard]] protocol_factory spoken(storage& where, const boot_loader::receiver& taken) const
    {
        const bool speaks_text = wants(&options::text);
        const text_form form = speaks_text && word_of(&options::text, {"short", "long"}) == 0
                                   ? text_form::short_record
                                   : text_form::long_record;
        enum upload_form : qsizetype
        {
            packets,
            mode_text,
            none,
        };
        const qsizetype uploads = wants(&options::uploads)
                                      ? word_of(&options::uploads, {"packets", "mode-text", "none"})
                                      : qsizetype{speaks_text ? mode_text : packets};
        return [&where, speaks_text, form, uploads, who = identity(), wrong = faults(),
                loader = boot(), taken] {
            std::vector<std::unique_ptr<protocol>> all;
            if (speaks_text)
                all.push_back(std::make_unique<text_responder>(where.stored, form, wrong));
            else
                all.push_back(std::make_unique<frame_responder>(where.stored, who, wrong));
            if (uploads == packets)
                all.push_back(std::make_unique<upload_receiver>(where, who, wrong));
            else if (uploads == mode_text)
                all.push_back(std::make_unique<mode_text_receiver>(where));
            return std::make_unique<boot_loader>(
                std::make_unique<several_protocols>(std::move(all)), loader, taken);
        };
    }

    [[nodiscard]] adb_settings adb() const
    {
        const auto port = [](qint64 value) { return static_cast<std::uint16_t>(value); };
        adb_settings settings{.port = port(number_of(&options::adb_port, 0, 65535)),
                              .device_port = port(number_of(&options::device_port, 1, 65535))};
        constexpr const char* variable = "ANDROID_ADB_SERVER_PORT";
        if (wants(&options::server_port)) {
            settings.server_port = port(number_of(&options::server_port, 0, 65535));
        } else if (qEnvironmentVariableIsSet(variable)) {
            settings.server_port = port(
                number(QString::fromLatin1(variable), qEnvironmentVariable(variable), 1, 65535));
        }
        return settings;
    }

private:
    options m_options;
    QCommandLineParser m_parser;
};

/// Writes a file anew, unless there is no path.
void keep(const QString& path, const QByteArray& bytes)
{
    if (path.isEmpty())
        return;
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) < 0 || !file.commit())
        fail(QStringLiteral("cannot write %1: %2").arg(path, file.errorString()));
}

/// Says that an image has come, and keeps it where that is wanted.
void take_firmware(const firmware& taken, const QString& path)
{
    keep(path, taken.image);
    say(QStringLiteral("firmware: \"%1\", %2 bytes, SHA-256 %3")
            .arg(taken.name)
            .arg(taken.image.size())
            .arg(QString::fromLatin1(taken.sha256())));
}

std::unique_ptr<adb_daemon> start_adb(const command_line& command, const protocol_factory& factory,
                                      byte_log& log)
{
    const adb_settings settings = command.adb();
    auto daemon = std::make_unique<adb_daemon>(settings, factory, &log);
    QObject::connect(daemon.get(), &adb_daemon::announced,
                     [&daemon = *daemon, settings](bool reached) {
                         say(QStringLiteral("adb: %1 on 127.0.0.1:%2, %3 %4")
                                 .arg(daemon.serial_number())
                                 .arg(daemon.port())
                                 .arg(reached ? QStringLiteral("announced to server port")
                                              : QStringLiteral("waiting for a server at port"))
                                 .arg(settings.server_port));
                     });
    QObject::connect(daemon.get(), &adb_daemon::online,
                     [] { say(QStringLiteral("adb: connected")); });
    QObject::connect(daemon.get(), &adb_daemon::offline,
                     [] { say(QStringLiteral("adb: disconnected")); });
    if (command.wants(&options::detach_after)) {
        const auto after = static_cast<int>(command.number_of(&options::detach_after, 0, 86400000));
        QObject::connect(daemon.get(), &adb_daemon::online, daemon.get(),
                         [&daemon = *daemon, after] {
                             QTimer::singleShot(after, &daemon, &adb_daemon::detach);
                         });
    }
    QString error;
    if (!daemon->start(error)) {
        fail(QStringLiteral("cannot listen on 127.0.0.1:%1: %2").arg(settings.port).arg(error));
    }
    if (settings.server_port == 0) {
        say(QStringLiteral("adb: %1 on 127.0.0.1:%2, not announced")
                .arg(daemon->serial_number())
                .arg(daemon->port()));
    }
    return daemon;
}

#ifdef Q_OS_UNIX
std::unique_ptr<pseudo_terminal> start_serial(const command_line& command,
                                              const protocol_factory& factory, byte_log& log)
{
    const auto baud = static_cast<int>(command.number_of(&options::baud, 1, 921600));
    if (!pseudo_terminal::has_speed(baud))
        fail(QStringLiteral("a serial port has no speed of %1 baud").arg(baud));
    auto terminal = std::make_unique<pseudo_terminal>(baud, factory, &log);
    QString error;
    if (!terminal->start(command.text(&options::link), error))
        fail(QStringLiteral("cannot make a pseudo-terminal: %1").arg(error));
    say(QStringLiteral("serial: %1 at %2 baud").arg(terminal->path()).arg(baud));
    return terminal;
}
#endif

/// Prints what has just come in, and writes all that has into a file.
void tell_received(const storage& where, const received_measurement& one, const QString& path)
{
    keep(path, to_json(where.received));
    say(QStringLiteral("received:%1  %2")
            .arg(table_line(one.measured, where.received.size()),
                 one.by_packets ? QStringLiteral("packets")
                                : QStringLiteral("Mode text \"%1\"").arg(one.name)));
}

} // namespace

int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    const command_line command(application);
    storage where{.stored = command.stored(), .received = {}, .on_received = {}};

    if (command.wants(&options::list) || command.wants(&options::json)) {
        const QByteArray text =
            command.wants(&options::json) ? to_json(where.stored) : to_table(where.stored).toUtf8();
        std::fwrite(text.constData(), 1, static_cast<size_t>(text.size()), stdout);
        return 0;
    }
    if (!command.wants(&options::adb) && !command.wants(&options::pty))
        fail(QStringLiteral("say --adb, --pty or both; --help explains"));

    byte_log log;
    if (command.wants(&options::log)) {
        QString error;
        if (!log.open(command.text(&options::log), error))
            fail(QStringLiteral("cannot write %1: %2").arg(command.text(&options::log), error));
    }
    where.on_received = [&where, path = command.text(&options::received)](const auto& one) {
        tell_received(where, one, path);
    };
    const protocol_factory factory =
        command.spoken(where, [path = command.text(&options::keep_firmware)](const auto& image) {
            take_firmware(image, path);
        });

#ifdef Q_OS_UNIX
    quit_on_signals();
#endif
    std::unique_ptr<adb_daemon> daemon;
    if (command.wants(&options::adb))
        daemon = start_adb(command, factory, log);
#ifdef Q_OS_UNIX
    // Last, as a program that fails leaves no link behind then.
    std::unique_ptr<pseudo_terminal> terminal;
    if (command.wants(&options::pty))
        terminal = start_serial(command, factory, log);
#else
    if (command.wants(&options::pty))
        fail(QStringLiteral("this platform has no pseudo-terminals"));
#endif
    return QCoreApplication::exec();
}
