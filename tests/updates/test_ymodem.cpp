// Blocks and state table of the sender, and whole dialogues with the simulated
// instrument's boot loader.

#include "instrument/boot_loader.h"
#include "support/mutation.h"
#include "updates/ymodem.h"

#include <QRandomGenerator>
#include <QTest>

#include <memory>
#include <optional>

using sending = ymodem::sender;

namespace {

QByteArray image_of(qsizetype size)
{
    QByteArray image(size, '\0');
    QRandomGenerator random(static_cast<quint32>(size) + 1);
    for (char& byte : image)
        byte = static_cast<char>(random.generate());
    return image;
}

class nothing_else final : public instrument::protocol
{
public:
    QList<instrument::chunk> receive(QByteArrayView) override { return {}; }
};

/// A boot loader that has been told to start.
struct receiver
{
    std::optional<instrument::firmware> taken;
    instrument::boot_loader loader;

    explicit receiver(instrument::boot_settings settings = {})
        : loader(std::make_unique<nothing_else>(), std::move(settings),
                 [this](const instrument::firmware& one) { taken = one; })
    {
    }
    QByteArray tell(QByteArrayView bytes)
    {
        QByteArray answer;
        for (const instrument::chunk& chunk : loader.receive(bytes))
            answer += chunk.bytes;
        return answer;
    }
};

/// What a whole dialogue has come to.
struct dialogue
{
    bool finished = false; ///< the sender says so
    int blocks = 0;        ///< of data, without those sent again
    int sent = 0;          ///< messages
};

dialogue talk(sending& from, receiver& to)
{
    dialogue result;
    QByteArray pending = to.tell("iapstart");
    bool goes_on = true;
    while (goes_on && !pending.isEmpty()) {
        const sending::step step = from.take(pending.front());
        pending.remove(0, 1);
        goes_on = step.goes_on;
        result.finished = step.what == sending::event::finished;
        result.blocks += step.what == sending::event::data_sent ? 1 : 0;
        if (!step.send.isEmpty()) {
            ++result.sent;
            pending += to.tell(step.send);
        }
    }
    return result;
}

/// A sender of `image` led to `stage` by what a good receiver says.
sending at_stage(sending::stage stage, const QByteArray& image)
{
    sending one(QStringLiteral("image.bin"), image);
    for (const char byte : QByteArray("C\x06"
                                      "C\x06\x15\x06"
                                      "C")) {
        if (one.at() == stage)
            break;
        (void)one.take(byte);
    }
    return one;
}

} // namespace

class test_ymodem : public QObject
{
    Q_OBJECT

private slots:
    void crc_is_that_of_xmodem();
    void header_block_holds_name_and_length();
    void a_name_beyond_ascii_loses_its_tail();
    void a_long_name_leaves_room_for_the_length();
    void data_blocks_have_their_sizes_data();
    void data_blocks_have_their_sizes();
    void closing_block_is_all_zero();
    void state_table_data();
    void state_table();
    void a_refused_block_comes_again_byte_for_byte();
    void the_sequence_wraps();
    void images_arrive_whole_data();
    void images_arrive_whole();
    void refused_blocks_are_sent_again();
    void silence_ends_nothing();
    void mutated_dialogues();
};

void test_ymodem::crc_is_that_of_xmodem()
{
    // The check value of the catalogue of parametrised CRC algorithms.
    QCOMPARE(ymodem::crc16("123456789"), 0x31C3);
    QCOMPARE(ymodem::crc16(""), 0);
    QCOMPARE(ymodem::crc16(QByteArray(128, '\0')), 0);
    QCOMPARE(ymodem::crc16("A"), 0x58E5);
}

void test_ymodem::header_block_holds_name_and_length()
{
    const QByteArray block = ymodem::header_block(QStringLiteral("gps.bin"), 4194304);
    QCOMPARE(block.size(), 133);
    QCOMPARE(block.left(3), QByteArray::fromHex("0100ff"));
    QByteArray data("gps.bin\0"
                    "4194304\0",
                    16);
    data.append(QByteArray(112, '\0'));
    QCOMPARE(block.mid(3, 128), data);
    const unsigned crc = ymodem::crc16(data);
    QCOMPARE(block.mid(131).toHex(), QByteArray::number(crc, 16).rightJustified(4, '0'));
}

void test_ymodem::a_name_beyond_ascii_loses_its_tail()
{
    // Six characters, ten bytes: six bytes are copied.
    const QByteArray block = ymodem::header_block(QStringLiteral("固件.bin"), 5);
    QCOMPARE(block.mid(3, 9), QByteArray("\xE5\x9B\xBA\xE4\xBB\xB6\0"
                                         "5\0",
                                         9));
    const QByteArray three = ymodem::header_block(QStringLiteral("é.b"), 5);
    QCOMPARE(three.mid(3, 6), QByteArray("\xC3\xA9.\0"
                                         "5\0",
                                         6));
}

void test_ymodem::a_long_name_leaves_room_for_the_length()
{
    const QByteArray block = ymodem::header_block(QString(300, QLatin1Char('n')), 4194304);
    QCOMPARE(block.size(), 133);
    QCOMPARE(block.mid(3, 128), QByteArray(119, 'n') + QByteArray("\0"
                                                                  "4194304\0",
                                                                  9));
}

void test_ymodem::data_blocks_have_their_sizes_data()
{
    QTest::addColumn<int>("rest");
    QTest::addColumn<int>("kind");
    QTest::addColumn<int>("padding");
    QTest::newRow("1") << 1 << 1 << 127;
    QTest::newRow("127") << 127 << 1 << 1;
    QTest::newRow("128") << 128 << 1 << 0;
    QTest::newRow("129") << 129 << 2 << 895;
    QTest::newRow("1023") << 1023 << 2 << 1;
    QTest::newRow("1024") << 1024 << 2 << 0;
    QTest::newRow("1025") << 1025 << 2 << 0;
}

void test_ymodem::data_blocks_have_their_sizes()
{
    QFETCH(int, rest);
    QFETCH(int, kind);
    QFETCH(int, padding);
    const QByteArray image = image_of(rest);
    const QByteArray block = ymodem::data_block(0x7E, image);
    const qsizetype size = kind == 1 ? 128 : 1024;
    QCOMPARE(block.size(), size + 5);
    QCOMPARE(block.left(3), QByteArray::fromHex(kind == 1 ? "017e81" : "027e81"));
    const QByteArray data = image.left(size - padding) + QByteArray(padding, '\x1A');
    QCOMPARE(block.mid(3, size), data);
    QCOMPARE(block.right(2).toHex(),
             QByteArray::number(ymodem::crc16(data), 16).rightJustified(4, '0'));
}

void test_ymodem::closing_block_is_all_zero()
{
    QCOMPARE(ymodem::closing_block(), QByteArray::fromHex("0100ff") + QByteArray(130, '\0'));
}

void test_ymodem::state_table_data()
{
    QTest::addColumn<int>("stage");
    QTest::addColumn<QByteArray>("understood");
    QTest::newRow("0") << 0 << QByteArray("C");
    QTest::newRow("1") << 1 << QByteArray("\x06");
    QTest::newRow("2") << 2 << QByteArray("C");
    QTest::newRow("3") << 3 << QByteArray("\x06\x15");
    QTest::newRow("4") << 4 << QByteArray("\x15"); // 0x06 stops the machine here
    QTest::newRow("5") << 5 << QByteArray("\x06");
    QTest::newRow("6") << 6 << QByteArray("C");
    QTest::newRow("7") << 7 << QByteArray("\x06");
}

void test_ymodem::state_table()
{
    QFETCH(int, stage);
    QFETCH(QByteArray, understood);
    const auto from = static_cast<sending::stage>(stage);
    const QByteArray image = image_of(100); // one block
    const QByteArray end("\x04");
    const QMap<int, std::pair<int, QByteArray>> good{
        {0, {1, ymodem::header_block(QStringLiteral("image.bin"), 100)}},
        {1, {2, {}}},
        {2, {3, ymodem::data_block(1, image)}},
        {3, {4, end}},
        {4, {5, end}},
        {5, {6, {}}},
        {6, {7, ymodem::closing_block()}},
        {7, {0, {}}}};
    for (int value = 0; value < 256; ++value) {
        const char byte = static_cast<char>(value);
        sending one = at_stage(from, image);
        QCOMPARE(one.at(), from);
        const sending::step step = one.take(byte);
        if (stage == 3 && byte == '\x15') {
            QCOMPARE(step.send, ymodem::data_block(1, image));
            QCOMPARE(one.at(), from);
            QVERIFY(step.goes_on);
            QCOMPARE(step.what, sending::event::none);
        } else if (understood.contains(byte)) {
            QCOMPARE(static_cast<int>(one.at()), good[stage].first);
            QCOMPARE(step.send, good[stage].second);
            QCOMPARE(step.goes_on, stage != 7);
            const auto what = stage == 0   ? sending::event::header_sent
                              : stage == 2 ? sending::event::data_sent
                              : stage == 7 ? sending::event::finished
                                           : sending::event::none;
            QCOMPARE(step.what, what);
        } else {
            QCOMPARE(one.at(), from);
            QVERIFY(step.send.isEmpty());
            QCOMPARE(step.what, sending::event::none);
            QCOMPARE(step.goes_on, stage == 0);
        }
    }
}

void test_ymodem::a_refused_block_comes_again_byte_for_byte()
{
    const QByteArray image = image_of(3000);
    sending one = at_stage(sending::data_sent, image);
    const QByteArray second = one.take('\x06').send;
    const qint32 percent = one.percent();
    QCOMPARE(percent, 2048 * 100 / 3000);
    QCOMPARE(one.take('\x15').send, second);
    QCOMPARE(one.take('\x15').send, second);
    QCOMPARE(one.percent(), percent);
    QCOMPARE(one.take('\x06').send, ymodem::data_block(3, QByteArrayView(image).sliced(2048)));
    QCOMPARE(one.percent(), 100);
}

void test_ymodem::the_sequence_wraps()
{
    const QByteArray image = image_of(qsizetype{1024} * 258);
    sending one = at_stage(sending::data_sent, image);
    QByteArray numbers("\x01");
    for (int i = 1; i < 258; ++i)
        numbers += one.take('\x06').send.at(1);
    QCOMPARE(numbers.mid(253), QByteArray::fromHex("feff000102"));
}

void test_ymodem::images_arrive_whole_data()
{
    QTest::addColumn<int>("size");
    QTest::addColumn<int>("blocks");
    QTest::newRow("1") << 1 << 1;
    QTest::newRow("127") << 127 << 1;
    QTest::newRow("128") << 128 << 1;
    QTest::newRow("129") << 129 << 1;
    QTest::newRow("1023") << 1023 << 1;
    QTest::newRow("1024") << 1024 << 1; // the next acknowledgement brings the end
    QTest::newRow("1025") << 1025 << 2;
    QTest::newRow("1152") << 1152 << 2;
    QTest::newRow("1153") << 1153 << 2;
    QTest::newRow("4 MiB - 1") << 4194303 << 4096;
    QTest::newRow("4 MiB") << 4194304 << 4096;
}

void test_ymodem::images_arrive_whole()
{
    QFETCH(int, size);
    QFETCH(int, blocks);
    const QByteArray image = image_of(size);
    sending from(QStringLiteral("image.bin"), image);
    receiver to;
    const dialogue result = talk(from, to);
    QVERIFY(result.finished);
    QCOMPARE(result.blocks, blocks);
    QCOMPARE(result.sent, blocks + 4); // header, end twice, closing
    QVERIFY(to.taken.has_value());
    QCOMPARE(to.taken->name, QStringLiteral("image.bin"));
    QCOMPARE(to.taken->image, image);
    QCOMPARE(from.percent(), 100);
}

void test_ymodem::refused_blocks_are_sent_again()
{
    const QByteArray image = image_of(5000);
    sending from(QStringLiteral("image.bin"), image);
    receiver to({.refused = {1, 3, 5}});
    const dialogue result = talk(from, to);
    QVERIFY(result.finished);
    QCOMPARE(result.blocks, 5);
    QCOMPARE(result.sent, 5 + 3 + 4);
    QCOMPARE(to.taken->image, image);
}

void test_ymodem::silence_ends_nothing()
{
    const QByteArray image = image_of(2000);
    // The start, the header, two blocks, the end twice, the closing block.
    for (int message = 0; message < 7; ++message) {
        sending from(QStringLiteral("image.bin"), image);
        receiver to({.silent_from = message});
        QVERIFY(!talk(from, to).finished);
        QVERIFY(!to.taken.has_value());
        sending again(QStringLiteral("image.bin"), image);
        QVERIFY(talk(again, to).finished);
        QCOMPARE(to.taken->image, image);
    }
}

void test_ymodem::mutated_dialogues()
{
    std::mt19937 random(20240305);
    int finished = 0;
    for (int i = mutation_count(); i > 0; --i) {
        const QByteArray image = image_of(1 + static_cast<qsizetype>(random() % 300));
        sending from(QStringLiteral("image.bin"), image);
        receiver to;
        // Either direction is disturbed, now and then.
        const auto disturbed = [&random](const QByteArray& bytes) {
            return random() % 6 == 0 ? mutated(bytes, random) : bytes;
        };
        QByteArray pending = disturbed(to.tell("iapstart"));
        bool goes_on = true;
        int steps = 0;
        while (goes_on && !pending.isEmpty() && ++steps < 200) {
            const sending::step step = from.take(pending.front());
            pending.remove(0, 1);
            goes_on = step.goes_on;
            QVERIFY(from.offset() >= 0 && from.offset() <= image.size());
            QVERIFY(from.percent() >= 0 && from.percent() <= 100);
            if (!step.send.isEmpty())
                pending += disturbed(to.tell(disturbed(step.send)));
        }
        if (to.taken.has_value()) {
            ++finished;
            // A damaged block is refused, so that nothing but the image arrives.
            QVERIFY(to.taken->image.size() <= image.size() ||
                    to.taken->name != QStringLiteral("image.bin"));
        }
    }
    QVERIFY(finished > 0);
}

QTEST_GUILESS_MAIN(test_ymodem)
#include "test_ymodem.moc"
