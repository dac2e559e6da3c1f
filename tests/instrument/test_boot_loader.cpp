// The boot loader's texts and its place before the other protocol. Whole dialogues
// are in the sender's tests.

#include "instrument/boot_loader.h"

#include <QTest>

#include <memory>
#include <utility>

using instrument::boot_loader;
using instrument::boot_settings;

namespace {

/// Says what it has heard.
class echo final : public instrument::protocol
{
public:
    QList<instrument::chunk> receive(QByteArrayView bytes) override
    {
        return {{"<" + bytes.toByteArray() + ">"}};
    }
};

class loader
{
public:
    explicit loader(boot_settings settings = {})
        : m_loader(std::make_unique<echo>(), std::move(settings),
                   [this](const instrument::firmware& one) { taken.append(one); })
    {
    }
    QByteArray tell(const QByteArray& bytes)
    {
        QByteArray answer;
        for (const instrument::chunk& chunk : m_loader.receive(bytes))
            answer += chunk.bytes;
        return answer;
    }
    QList<instrument::firmware> taken;

private:
    boot_loader m_loader;
};

/// A short block with its CRC given, as the tables of XMODEM have it.
QByteArray short_block(const QByteArray& head, const QByteArray& data, const QByteArray& crc)
{
    return head + data + QByteArray(128 - data.size(), '\x1A') + crc;
}

} // namespace

class test_boot_loader : public QObject
{
    Q_OBJECT

private slots:
    void version_data();
    void version();
    void texts_in_pieces();
    void what_is_no_text_goes_on();
    void blocks_are_looked_at();
    void the_first_end_is_refused();
    void a_new_beginning_in_the_middle();
};

void test_boot_loader::version_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<bool>("with_zero");
    QTest::addColumn<QByteArray>("answer");
    QTest::newRow("with the zero byte") << QByteArray("G1") << true << QByteArray("G1\0", 3);
    QTest::newRow("without") << QByteArray("G1") << false << QByteArray("G1");
    QTest::newRow("silent") << QByteArray() << true << QByteArray();
}

void test_boot_loader::version()
{
    QFETCH(QByteArray, text);
    QFETCH(bool, with_zero);
    QFETCH(QByteArray, answer);
    loader one({.version = text, .version_ends_with_zero = with_zero});
    QCOMPARE(one.tell("version"), answer);
    QCOMPARE(one.tell("version\r\n"), answer);
    QCOMPARE(one.tell("versionversion"), answer + answer);
}

void test_boot_loader::texts_in_pieces()
{
    loader one({.version = "G1", .version_ends_with_zero = false});
    QCOMPARE(one.tell("ver"), QByteArray("<ver>")); // nothing is held back
    QCOMPARE(one.tell("s"), QByteArray("<s>"));
    QCOMPARE(one.tell("ion\r"), QByteArray("G1"));
    QCOMPARE(one.tell("\n"), QByteArray());
    QCOMPARE(one.tell("iap"), QByteArray("<iap>"));
    QCOMPARE(one.tell("start"), QByteArray("C"));
}

void test_boot_loader::what_is_no_text_goes_on()
{
    loader one;
    QCOMPARE(one.tell("~\r\n"), QByteArray("<~\r\n>"));
    QCOMPARE(one.tell("verb"), QByteArray("<verb>"));
    const QByteArray frame = QByteArray::fromHex("5A00FD000004FFFFFFFFE1");
    QCOMPARE(one.tell(frame), "<" + frame + ">");
    // The last byte of a frame may come alone, and may begin a text.
    for (const char* end : {"i", "v", "ver", "iapstar"}) {
        QCOMPARE(one.tell("\x5A"), QByteArray("<\x5A>"));
        QCOMPARE(one.tell(end), "<" + QByteArray(end) + ">");
        QCOMPARE(one.tell("\x5A again"), QByteArray("<\x5A again>"));
    }
    // A text inside something else is none.
    QCOMPARE(one.tell("a version"), QByteArray("<a version>"));
}

void test_boot_loader::blocks_are_looked_at()
{
    loader one;
    QCOMPARE(one.tell("iapstart"), QByteArray("C"));
    const QByteArray zeros = QByteArray::fromHex("0100ff") + QByteArray(130, '\0');
    QByteArray header = zeros;
    header[131] = 1; // a CRC of something else
    QCOMPARE(one.tell(header), QByteArray("\x15"));
    header = zeros;
    header[2] = '\x01'; // no complement
    QCOMPARE(one.tell(header), QByteArray("\x15"));
    QCOMPARE(one.tell(zeros), QByteArray("\x15")); // no length in it
    QCOMPARE(one.tell(zeros.left(100)), QByteArray());
    QCOMPARE(one.tell(zeros.mid(100)), QByteArray("\x15"));
    QCOMPARE(one.tell("noise"), QByteArray());
    QVERIFY(one.taken.isEmpty());
}

void test_boot_loader::the_first_end_is_refused()
{
    // "a" and 2 bytes; the CRCs come from Python's binascii.crc_hqx.
    QByteArray name_and_length("a\0"
                               "2\0",
                               4);
    const QByteArray header = QByteArray::fromHex("0100ff") + name_and_length +
                              QByteArray(124, '\0') + QByteArray::fromHex("7ab0");
    const QByteArray data =
        short_block(QByteArray::fromHex("0101fe"), "xy", QByteArray::fromHex("ef69"));
    const QByteArray closing = QByteArray::fromHex("0100ff") + QByteArray(130, '\0');
    loader one;
    QCOMPARE(one.tell("iapstart"), QByteArray("C"));
    QCOMPARE(one.tell("\x04"), QByteArray("\x15")); // nothing has come yet
    QCOMPARE(one.tell(header), QByteArray("\x06"
                                          "C"));
    QCOMPARE(one.tell(data), QByteArray("\x06"));
    QCOMPARE(one.tell(data), QByteArray("\x06")); // once more is once
    QCOMPARE(one.tell("\x04"), QByteArray("\x15"));
    QCOMPARE(one.tell("\x04"), QByteArray("\x06"
                                          "C"));
    QVERIFY(one.taken.isEmpty());
    QCOMPARE(one.tell(closing), QByteArray("\x06"));
    QCOMPARE(one.taken.size(), 1);
    QCOMPARE(one.taken[0].name, QStringLiteral("a"));
    QCOMPARE(one.taken[0].image, QByteArray("xy"));
    // Of "xy", as sha256sum says.
    QCOMPARE(one.taken[0].sha256(),
             QByteArray("769a4e6d0003189c7e96c5d9b7e810a0d11c3a12832527ec94b0f86d277f51ca"));
    // And it is an instrument again.
    QCOMPARE(one.tell("hello"), QByteArray("<hello>"));
}

void test_boot_loader::a_new_beginning_in_the_middle()
{
    loader one;
    QCOMPARE(one.tell("iapstart"), QByteArray("C"));
    QCOMPARE(one.tell("iapstart"), QByteArray("C"));
    QCOMPARE(one.tell("iap"), QByteArray());
    QCOMPARE(one.tell("start"), QByteArray("C"));
}

QTEST_GUILESS_MAIN(test_boot_loader)
#include "test_boot_loader.moc"
