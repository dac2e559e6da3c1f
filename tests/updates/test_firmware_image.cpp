// Firmware files: binary and Intel HEX, sizes, bad files, the fixed buffer.

#include "support/mutation.h"
#include "updates/firmware_image.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <vector>

using firmware_image::outcome;

namespace {

/// A buffer with a guard behind it, filled with a pattern.
class guarded_buffer
{
public:
    explicit guarded_buffer(std::size_t size) : m_bytes(size + 64, pattern), m_size(size) {}
    [[nodiscard]] std::span<char> span() { return std::span(m_bytes).first(m_size); }
    [[nodiscard]] QByteArray first(qint32 length) const { return {m_bytes.data(), length}; }
    [[nodiscard]] bool guard_stands() const
    {
        for (std::size_t i = m_size; i < m_bytes.size(); ++i) {
            if (m_bytes[i] != pattern)
                return false;
        }
        return true;
    }

private:
    static constexpr char pattern = '\x5C';
    std::vector<char> m_bytes;
    std::size_t m_size;
};

QByteArray bytes_of(qsizetype size)
{
    QByteArray bytes(size, '\0');
    for (qsizetype i = 0; i < size; ++i)
        bytes[i] = static_cast<char>(i * 7 + i / 256);
    return bytes;
}

/// One line of Intel HEX with a true checksum.
QByteArray record(int address, int type, const QByteArray& data)
{
    QByteArray body;
    body.append(static_cast<char>(data.size()));
    body.append(static_cast<char>(address >> 8));
    body.append(static_cast<char>(address));
    body.append(static_cast<char>(type));
    body.append(data);
    int sum = 0;
    for (const char byte : body)
        sum += byte;
    body.append(static_cast<char>(-sum));
    return ":" + body.toHex().toUpper() + "\r\n";
}

QByteArray hex_file(const QByteArray& data)
{
    QByteArray text = record(0, 4, QByteArray::fromHex("0800"));
    for (qsizetype at = 0; at < data.size(); at += 16) {
        if (at > 0 && at % 65536 == 0)
            text += record(0, 4, QByteArray::fromHex("0801"));
        text += record(static_cast<int>(at % 65536), 0, data.mid(at, 16));
    }
    return text + record(0, 5, QByteArray::fromHex("08000131")) + record(0, 1, {});
}

} // namespace

class test_firmware_image : public QObject
{
    Q_OBJECT

private slots:
    void sizes_data();
    void sizes();
    void too_large();
    void not_opened();
    void endless_files_are_too_large();
    void segments_are_closed_up();
    void other_records_are_skipped();
    void checksums_and_addresses_do_not_matter();
    void any_case_and_any_line_end();
    void malformed_data();
    void malformed();
    void hex_that_decodes_to_too_much();
    void hex_file_limit();
    void mutated_hex();

private:
    QString write(const QString& name, const QByteArray& content);

    QTemporaryDir m_folder;
};

QString test_firmware_image::write(const QString& name, const QByteArray& content)
{
    QFile file(m_folder.filePath(name));
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("cannot write %s", qPrintable(file.fileName()));
    return file.fileName();
}

void test_firmware_image::sizes_data()
{
    QTest::addColumn<int>("size");
    for (const int size : {0, 1, 127, 128, 129, 1023, 1024, 1025, 4194303, 4194304})
        QTest::addRow("%d", size) << size;
}

void test_firmware_image::sizes()
{
    QFETCH(int, size);
    const QByteArray bytes = bytes_of(size);
    guarded_buffer image(firmware_image::image_limit);
    const auto binary = firmware_image::load_binary(write("f.bin", bytes), image.span());
    QCOMPARE(binary.what, outcome::loaded);
    QCOMPARE(binary.length, size);
    QCOMPARE(image.first(size), bytes);
    QVERIFY(image.guard_stands());

    guarded_buffer decoded(firmware_image::image_limit);
    const auto hex = firmware_image::load_hex(write("f.hex", hex_file(bytes)), decoded.span());
    QCOMPARE(hex.what, outcome::loaded);
    QCOMPARE(hex.length, size);
    QCOMPARE(decoded.first(size), bytes);
    QVERIFY(decoded.guard_stands());
}

void test_firmware_image::too_large()
{
    guarded_buffer image(firmware_image::image_limit);
    const QString path = write("large.bin", QByteArray(4194305, 'x'));
    QCOMPARE(firmware_image::load_binary(path, image.span()).what, outcome::too_large);
    QVERIFY(image.guard_stands());
}

void test_firmware_image::not_opened()
{
    guarded_buffer image(16);
    for (const QString& path : {m_folder.filePath("missing.bin"), m_folder.path()}) {
        QCOMPARE(firmware_image::load_binary(path, image.span()).what, outcome::not_opened);
        QCOMPARE(firmware_image::load_hex(path, image.span()).what, outcome::not_opened);
    }
}

void test_firmware_image::endless_files_are_too_large()
{
#ifdef Q_OS_UNIX
    guarded_buffer image(firmware_image::image_limit);
    QCOMPARE(firmware_image::load_binary("/dev/zero", image.span()).what, outcome::too_large);
    QCOMPARE(firmware_image::load_hex("/dev/zero", image.span()).what, outcome::too_large);
#else
    QSKIP("no file without an end here");
#endif
}

void test_firmware_image::segments_are_closed_up()
{
    guarded_buffer image(64);
    const QByteArray text = record(0x0000, 0, "first") + record(0, 4, QByteArray::fromHex("0900")) +
                            record(0xF000, 0, "second") + record(0x0010, 0, "third") +
                            record(0, 1, {});
    const auto result = firmware_image::decode_hex(text, image.span());
    QCOMPARE(result.what, outcome::loaded);
    QCOMPARE(image.first(result.length), QByteArray("firstsecondthird"));
}

void test_firmware_image::other_records_are_skipped()
{
    guarded_buffer image(64);
    QByteArray text = "; a comment\n\n:000000\n";
    for (const int type : {1, 2, 3, 4, 5, 6, 0xFF})
        text += record(0, type, "no");
    text += record(0, 0, {}) + record(0, 0, "yes");
    // Behind the end record as well: the file is read to its end.
    text += record(0, 1, {}) + record(0, 0, "!");
    const auto result = firmware_image::decode_hex(text, image.span());
    QCOMPARE(result.what, outcome::loaded);
    QCOMPARE(image.first(result.length), QByteArray("yes!"));
}

void test_firmware_image::checksums_and_addresses_do_not_matter()
{
    guarded_buffer image(64);
    const auto result =
        firmware_image::decode_hex(":02FFFF004142\n:01zzzz0043FF\n:010000004400", image.span());
    QCOMPARE(result.what, outcome::loaded);
    QCOMPARE(image.first(result.length), QByteArray("ABCD"));
}

void test_firmware_image::any_case_and_any_line_end()
{
    guarded_buffer image(64);
    const auto result =
        firmware_image::decode_hex(":03000000abCdEf95\n:01000000ff00\r\n:01000000FE", image.span());
    QCOMPARE(result.what, outcome::loaded);
    QCOMPARE(image.first(result.length), QByteArray::fromHex("abcdeffffe"));
}

void test_firmware_image::malformed_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("nothing but the mark") << record(0, 0, "good") + ":";
    QTest::newRow("half a count") << QByteArray(":1\n");
    QTest::newRow("a count of no digits") << QByteArray(":zz00000041FF\n");
    QTest::newRow("cut off before the type") << QByteArray(":010000\n");
    QTest::newRow("a type of no digits") << QByteArray(":010000zz41FF\n");
    QTest::newRow("too few digits") << QByteArray(":1000000041424344\n");
    QTest::newRow("half a byte") << QByteArray(":02000000414");
    QTest::newRow("no digit") << QByteArray(":0200000041G2FF\n");
    QTest::newRow("a sign") << QByteArray(":0200000041+2FF\n");
    QTest::newRow("a blank") << QByteArray(":0200000041 2FF\n");
    QTest::newRow("a zero byte") << QByteArray(":0200000041\0"
                                               "2FF\n",
                                               16);
    QTest::newRow("after good ones") << record(0, 0, "good") + ":0200000041\n";
}

void test_firmware_image::malformed()
{
    QFETCH(QByteArray, text);
    guarded_buffer image(64);
    QCOMPARE(firmware_image::decode_hex(text, image.span()).what, outcome::malformed);
    QVERIFY(image.guard_stands());
}

void test_firmware_image::hex_that_decodes_to_too_much()
{
    guarded_buffer image(firmware_image::image_limit);
    // 5.3 million bytes in a file within its own limit.
    QByteArray text;
    const QByteArray line = record(0, 0, QByteArray(255, 'x'));
    while (text.size() + line.size() <= firmware_image::hex_file_limit)
        text += line;
    QVERIFY(text.size() / line.size() * 255 > firmware_image::image_limit);
    const QString path = write("long.hex", text);
    QCOMPARE(firmware_image::load_hex(path, image.span()).what, outcome::too_large);
    QVERIFY(image.guard_stands());
    // One byte more than the buffer holds.
    guarded_buffer small(4);
    QCOMPARE(firmware_image::decode_hex(record(0, 0, "abcd"), small.span()).length, 4);
    QCOMPARE(firmware_image::decode_hex(record(0, 0, "abcde"), small.span()).what,
             outcome::too_large);
    QVERIFY(small.guard_stands());
}

void test_firmware_image::hex_file_limit()
{
    guarded_buffer image(firmware_image::image_limit);
    const QByteArray one = record(0, 0, "x");
    const auto padded = [&](qsizetype size) { return one + QByteArray(size - one.size(), '\n'); };
    const auto at_limit =
        firmware_image::load_hex(write("limit.hex", padded(12582912)), image.span());
    QCOMPARE(at_limit.what, outcome::loaded);
    QCOMPARE(at_limit.length, 1);
    QCOMPARE(firmware_image::load_hex(write("over.hex", padded(12582913)), image.span()).what,
             outcome::too_large);
}

void test_firmware_image::mutated_hex()
{
    const QByteArray good = hex_file(bytes_of(200));
    std::mt19937 random(19990417);
    int loaded = 0;
    for (int i = mutation_count(); i > 0; --i) {
        guarded_buffer image(128 + random() % 128);
        const auto result = firmware_image::decode_hex(mutated(good, random), image.span());
        QVERIFY(image.guard_stands());
        QVERIFY(result.length >= 0 &&
                static_cast<std::size_t>(result.length) <= image.span().size());
        loaded += result.what == outcome::loaded ? 1 : 0;
    }
    QVERIFY(loaded > 0);
}

QTEST_GUILESS_MAIN(test_firmware_image)
#include "test_firmware_image.moc"
