#include "device/data_to_device.h"
#include "device/frame.h"
#include "device/serial_thread.h"
#include "device/upload_records.h"
#include "instrument_frames.h"

#include <QTest>

#include <random>

namespace {

constexpr int rounds = 200'000;

/// Numbers that are the same in every run.
class dice
{
public:
    explicit dice(unsigned seed) : m_engine(seed) {}
    int below(int bound) { return static_cast<int>(m_engine() % static_cast<unsigned>(bound)); }

private:
    std::mt19937 m_engine;
};

/// Some bytes changed, moved, doubled, cut out or put in.
QByteArray mutated(QByteArray bytes, dice& random, const QList<QByteArray>& words)
{
    const int changes = 1 + random.below(3);
    for (int change = 0; change < changes && !bytes.isEmpty(); ++change) {
        const int at = random.below(static_cast<int>(bytes.size()));
        const int size = 1 + random.below(12);
        switch (random.below(6)) {
        case 0: bytes[at] = static_cast<char>(random.below(256)); break;
        case 1: bytes.remove(at, size); break;
        case 2:
            bytes.insert(at, bytes.mid(random.below(static_cast<int>(bytes.size())), size));
            break;
        case 3: bytes.insert(at, words[random.below(static_cast<int>(words.size()))]); break;
        case 4: bytes.truncate(at); break;
        default:
            bytes.replace(at, size, words[random.below(static_cast<int>(words.size()))]);
            break;
        }
    }
    return bytes;
}

const QList<QByteArray> text_words{
    "9223372036854775808",
    "18446744073709551616",
    "-1",
    "0",
    "00000",
    "99999999",
    "n",
    "N",
    "!",
    ",t",
    ";",
    "d",
    "'",
    "\"",
    "\r\n",
    "+",
    "-",
    ",",
    "180d0'0.0\"",
    "\xE4\xB8\xAD",
    QByteArray(1, '\0'),
    "t20241332256199",
    "time",
    "hdop",
    "n1,m1,l1;t202403050708,N0001",
    "1d2'3.4\",5d6'7.8\",9;",
};

const QList<QByteArray> records{
    "n2,m1334,l1235;t202403050708,N0001,               "
    "104d3'12.5\",-30d30'0.0\",123;-104d3'12.5\",30d30'0.0\",0;!",
    "n1,p1,p2;t20240305070809,N0001,                     104d3'12.5\",30d30'0.0\",123;!",
    "\r\nn2,m1334,l1239;t20240305070809,N0001,time11,t20240305080910,id20240017,mode3,md1,jd2,hd4,"
    "slope7,width35,price12,total24,-104d3'12.5\",30d30'0.0\",5,hdop8,speed15,angle359,"
    "t20240305070812;!",
    "n2,l1239,m1334;t20240305070809,N0001,time11,t20240305080910,id20240017,mode9,jd2,hd4,zj1119,"
    "price12,total24,104d3'12.5\",30d30'0.0\",hdop8,speed15,angle359,t20240305070812;!",
    "n1,p1,p2;t20240305070809,N0001,time11,id20240017,sd1,h2,104d3'12.5\",30d30'0.0\",5,hdop8,"
    "speed15,angle359,t20240305070812;!",
    "n2,e1239,m1334;t20240305070809,N0001,time11,id20240017,jd2,104d3'12.5\",30d30'0.0\",5,hdop8,"
    "speed15,angle359,t202403050708;!",
    "n2,k1334,l1239;t20240305070809,N0001,time11,t20240305080910,id20240017,jd2,!",
    "n2,f1239,l1334;t20240305070809,N0001,time11,id20240017,jd2,104d3'12.5\",30d30'0.0\",5,hdop8,"
    "speed15,angle359,t20240305070812;!",
};

/// A line that has said all and is cut then.
class bytes_then_cut : public QIODevice
{
public:
    explicit bytes_then_cut(QList<QByteArray> pieces) : m_pieces(std::move(pieces))
    {
        open(QIODevice::ReadWrite | QIODevice::Unbuffered);
    }
    bool waitForReadyRead(int) override
    {
        if (m_ready.isEmpty() && m_pieces.isEmpty())
            close();
        else if (m_ready.isEmpty())
            m_ready = m_pieces.takeFirst();
        return !m_ready.isEmpty();
    }
    [[nodiscard]] qint64 bytesAvailable() const override
    {
        return m_ready.size() + QIODevice::bytesAvailable();
    }

private:
    qint64 readData(char* data, qint64 size) override
    {
        const qint64 taken = qMin(size, m_ready.size());
        std::copy_n(m_ready.constData(), taken, data);
        m_ready.remove(0, taken);
        return taken;
    }
    qint64 writeData(const char*, qint64 size) override { return size; }

    QList<QByteArray> m_pieces;
    QByteArray m_ready;
};

/// The first answer to `command`, found the long way: offset by offset.
int status_of(const QByteArray& stream, std::uint8_t command)
{
    qsizetype at = 0;
    while (at < stream.size()) {
        if (stream[at] != 'Z') {
            ++at;
            continue;
        }
        if (stream.size() - at < 7)
            return -1;
        const qsizetype size = frame::read_u16(stream, at + 4) + 7;
        if (stream.size() - at < size)
            return -1;
        const QByteArray one = stream.mid(at, size);
        const bool whole = frame::crc8(one.chopped(1)) == frame::read_u8(one, size - 1);
        if (whole && size >= 13 && one[1] == 0 && frame::read_u8(one, 10) == command)
            return frame::read_u8(one, 11);
        at += size;
    }
    return -1;
}

void say_nothing(QtMsgType, const QMessageLogContext&, const QString&) {}

} // namespace

/// What a broken instrument or a bad line may send: nothing crashes, and the four
/// lists stay in step.
class test_device_noise : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();

    void mutated_text_records();
    void mutated_text_streams();
    void hostile_numbers_data();
    void hostile_numbers();
    void mutated_acknowledgements();
    void mutated_coordinate_texts();

private:
    QtMessageHandler previous = nullptr;
};

void test_device_noise::initTestCase()
{
    qputenv("PATH", ""); // no adb in this test
    previous = qInstallMessageHandler(say_nothing);
}

void test_device_noise::cleanupTestCase()
{
    qInstallMessageHandler(previous);
}

void test_device_noise::mutated_text_records()
{
    serial_thread reader;
    dice random(1);
    int added = 0;
    for (int round = 0; round < rounds; ++round) {
        const QByteArray& record = records[random.below(static_cast<int>(records.size()))];
        reader.parse_record(QString::fromUtf8(mutated(record, random, text_words)));
        const qsizetype size = reader.table_list.size();
        QCOMPARE(reader.data_msg.size(), size);
        QCOMPARE(reader.data_msg_altitude.size(), size);
        QCOMPARE(reader.point_msg_all.size(), size);
        if (size == 0)
            continue;
        const qsizetype points = reader.point_msg_all.constLast().size();
        QCOMPARE(reader.data_msg_altitude.constLast().count(u'\n'), points);
        QCOMPARE(reader.data_msg.constLast().split(u',', Qt::SkipEmptyParts).size(), 2 * points);
        if (size == 4) { // so that few are dropped for being there already
            added += 4;
            reader.recv_cmd_from_key(0, {}, {}, {}, {});
        }
    }
    // The mutations leave enough to be read, and not all.
    QVERIFY2(added > rounds / 20 && added < rounds * 9 / 10, qPrintable(QString::number(added)));
}

/// The same through the loop that gathers and cuts, which waits for more each time.
void test_device_noise::mutated_text_streams()
{
    serial_thread reader;
    dice random(2);
    for (int round = 0; round < 12; ++round) {
        QByteArray stream;
        for (int count = 0; count < 500; ++count)
            stream += records[random.below(static_cast<int>(records.size()))];
        stream = mutated(stream, random, text_words);
        reader.recv_cmd_from_key(0, {}, {}, {}, {});
        reader.text_loop(stream);
        QCOMPARE(reader.data_msg.size(), reader.table_list.size());
        QCOMPARE(reader.data_msg_altitude.size(), reader.table_list.size());
        QCOMPARE(reader.point_msg_all.size(), reader.table_list.size());
    }
}

void test_device_noise::hostile_numbers_data()
{
    QTest::addColumn<QString>("number");
    QTest::newRow("64 bits overflown") << "9223372036854775808";
    QTest::newRow("far overflown") << "99999999999999999999999";
    QTest::newRow("10,000 digits") << QString(10000, '9');
    QTest::newRow("10,000 zeros") << QString(10000, '0');
}

/// In every place of a record that takes a number of any length.
void test_device_noise::hostile_numbers()
{
    QFETCH(QString, number);
    serial_thread reader;
    const QRegularExpression digits("\\d+");
    // The search for points goes over long digits again from each of them.
    const QList<QByteArray> some{records[0], records[2]};
    for (const QByteArray& record : number.size() > 100 ? some : records) {
        const QString text = QString::fromUtf8(record);
        for (auto all = digits.globalMatch(text); all.hasNext();) {
            const QRegularExpressionMatch match = all.next();
            QString hostile = text;
            hostile.replace(match.capturedStart(), match.capturedLength(), number);
            reader.parse_record(hostile);
            QCOMPARE(reader.data_msg.size(), reader.table_list.size());
        }
    }
    // What does not fit into 64 bits counts as 0; a long record keeps the digits.
    reader.recv_cmd_from_key(0, {}, {}, {}, {});
    QString area = QString::fromUtf8(records[0]);
    reader.parse_record(area.replace("m1334,l1235", "m" + number + ",l" + number));
    QCOMPARE(reader.table_list[0].areameter, "0");
    QCOMPARE(reader.table_list[0].areamu, "0");
    QCOMPARE(reader.table_list[0].distance, "0");
    area = QString::fromUtf8(records[2]);
    reader.parse_record(area.replace("m1334,l1239", "m" + number + ",l" + number));
    QCOMPARE(reader.table_list[1].areameter, number);
    QCOMPARE(reader.table_list[1].distance, "0");
}

void test_device_noise::mutated_acknowledgements()
{
    const QList<QByteArray> words{"Z",    QByteArray("Z\0\1\0\0\6", 6),      QByteArray(6, '\xFF'),
                                  "ZZZZ", instrument_frames::reply(0x32, 0), QByteArray(1, '\0')};
    const QByteArray stream = "noise" + instrument_frames::reply(0x32, 0) +
                              instrument_frames::reply(0x31, 0) + "Z" +
                              instrument_frames::reply(0x31, 2);
    data_to_device upload;
    dice random(3);
    int answered = 0;
    for (int round = 0; round < rounds; ++round) {
        const QByteArray noisy = mutated(stream, random, words);
        const int expected = status_of(noisy, 0x31);

        QList<QByteArray> pieces;
        for (qsizetype at = 0; at < noisy.size();) {
            const int size = 1 + random.below(30);
            pieces += noisy.mid(at, size);
            at += size;
        }
        bytes_then_cut device(pieces);
        QString error;
        std::uint8_t type = 0;
        std::uint8_t status = 0;
        const bool good = upload.wait_ack(&device, 0x31, 60000, error, type, status);
        QCOMPARE(good, expected == 0);
        QCOMPARE(int{status}, expected < 0 ? 0xFF : expected);
        answered += good ? 1 : 0;
    }
    QVERIFY2(answered > rounds / 20 && answered < rounds, qPrintable(QString::number(answered)));
}

/// What an import from a file may have left in the lists.
void test_device_noise::mutated_coordinate_texts()
{
    const QList<QByteArray> words{
        "nan", "inf", "-inf",         "1e400",    "180.0000001",        ";",
        "\n",  ",",   "\xE4\xB8\xAD", "21474836", QByteArray(400, '9'), "0x10",
        "-0"};
    const QByteArray lines = "126.650000000000,45.750000000000,141.60\n"
                             "-0.000000100000,-90,-152.70\n";
    dice random(4);
    int good = 0;
    for (int round = 0; round < rounds / 4; ++round) {
        QList<QByteArray> texts{"2024-3-5 7:8:9", "1334.5", "3.5", "12", lines};
        QByteArray& one = texts[random.below(static_cast<int>(texts.size()))];
        one = mutated(one, random, words);
        measuringData record;
        record.method = QStringLiteral("面积");
        record.time = QString::fromUtf8(texts[0]);
        record.areameter = QString::fromUtf8(texts[1]);
        record.width = QString::fromUtf8(texts[2]);
        record.price = QString::fromUtf8(texts[3]);
        const QString text = QString::fromUtf8(texts[4]);
        upload_records::UploadItem item;
        QString error;
        if (upload_records::build_upload_item(record, text, item, error)) {
            ++good;
            QCOMPARE(upload_records::item_data(item, 1).size(), 36);
            QCOMPARE(upload_records::points_data(item, 0, item.points.size()).size(),
                     5 + 19 * item.points.size());
        } else {
            QVERIFY(!error.isEmpty());
        }
        QString mode_text;
        QVERIFY(upload_records::append_mode_text(mode_text, record, text, error));
    }
    QVERIFY2(good > rounds / 20 && good < rounds / 4, qPrintable(QString::number(good)));
}

QTEST_MAIN(test_device_noise)
#include "test_device_noise.moc"
