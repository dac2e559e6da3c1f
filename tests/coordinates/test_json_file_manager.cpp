#include "coordinates/json_file_manager.h"
#include "support/log_capture.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QStringConverter>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

#ifdef Q_OS_UNIX
#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

using namespace Qt::StringLiterals;

namespace {

QStringList names(const JsonFileManager& manager)
{
    QStringList all;
    for (const CoordinateSystem& system : manager.systems)
        all += system.name;
    return all;
}

CoordinateSystem sample(const QString& name)
{
    CoordinateSystem system;
    system.name = name;
    system.changzhou = 6378137.5;
    system.duanzhou = 6356752.25;
    system.pianlv = 0.003352811;
    system.type = 1;
    system.ellipsoid = 3;
    system.utm_mode = 2;
    system.method = 6;
    system.k0 = 0.9996;
    system.east = 500000.125;
    system.north = 1e7;
    system.tall = 12.5;
    system.l0 = 117.25;
    system.param7 = {1.5, -2.5, 3.5, 4.5, 5.5, -6.5, 1e-6};
    system.param4 = {7.5, 8.5, 1.00001, -9.5};
    return system;
}

/// All numbers in their order.
QList<double> values(const CoordinateSystem& s)
{
    return {s.changzhou,
            s.duanzhou,
            s.pianlv,
            double(s.type),
            double(s.ellipsoid),
            double(s.utm_mode),
            double(s.method),
            s.k0,
            s.east,
            s.north,
            s.tall,
            s.l0,
            s.param7.dx,
            s.param7.dy,
            s.param7.dz,
            s.param7.rx,
            s.param7.ry,
            s.param7.rz,
            s.param7.k,
            s.param4.dx,
            s.param4.dy,
            s.param4.k,
            s.param4.rt};
}

/// The level of the one line that begins so; fatal if there is none, or another.
QtMsgType level_of(const log_capture& log, const QString& beginning)
{
    QList<QtMsgType> levels;
    for (const log_capture::line& line : log.lines()) {
        if (line.text.startsWith(beginning))
            levels += line.type;
    }
    return levels.size() == 1 ? levels[0] : QtFatalMsg;
}

QList<QtMsgType> levels(const log_capture& log)
{
    QList<QtMsgType> all;
    for (const log_capture::line& line : log.lines())
        all += line.type;
    return all;
}

#ifdef Q_OS_UNIX
/// No file grows beyond that many bytes: as on a disk that is full.
class full_disk
{
public:
    explicit full_disk(rlim_t bytes) : m_usual_handler(std::signal(SIGXFSZ, SIG_IGN))
    {
        getrlimit(RLIMIT_FSIZE, &m_usual);
        rlimit narrow = m_usual;
        narrow.rlim_cur = bytes;
        setrlimit(RLIMIT_FSIZE, &narrow);
    }
    ~full_disk()
    {
        setrlimit(RLIMIT_FSIZE, &m_usual);
        std::signal(SIGXFSZ, m_usual_handler);
    }
    full_disk(const full_disk&) = delete;
    full_disk& operator=(const full_disk&) = delete;

private:
    void (*m_usual_handler)(int);
    rlimit m_usual{};
};
#endif

} // namespace

class test_json_file_manager : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void makes_folder_and_file();
    void built_in_systems();
    void layout_of_the_file();
    void every_value_survives();
    void sorted_after_a_restart();
    void nothing_is_rejected_data();
    void nothing_is_rejected();
    void foreign_files_data();
    void foreign_files();
    void huge_files();
    void pipe_in_place_of_the_file();
    void folder_in_place_of_the_file();
    void file_in_place_of_the_folder();
    void unwritable_folder();
    void vanished_file_and_folder();
    void full_disk_is_told_data();
    void full_disk_is_told();
    void file_that_vanishes_after_it_was_made();
    void saves_into_the_same_file();
    void lines_of_a_first_and_a_second_start();
    void add();
    void update();
    void remove();
    void get();
    void all_deleted();
    void next_save_replaces_a_damaged_file();
    void the_file_is_read_once();
    void failed_write_keeps_the_list();

private:
    [[nodiscard]] QString path() const { return folder() + "/coordinate_system.json"; }
    [[nodiscard]] QString folder() const { return m_data->path() + "/Velmo"; }
    void put(const QByteArray& content) const;
    [[nodiscard]] QByteArray content() const;

    std::unique_ptr<QTemporaryDir> m_data;
};

void test_json_file_manager::init()
{
    m_data = std::make_unique<QTemporaryDir>();
    qputenv("XDG_DATA_HOME", QFile::encodeName(m_data->path()));
}

void test_json_file_manager::put(const QByteArray& bytes) const
{
    QVERIFY(QDir().mkpath(folder()));
    QFile file(path());
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(bytes), bytes.size());
}

QByteArray test_json_file_manager::content() const
{
    QFile file(path());
    return file.open(QIODevice::ReadOnly) ? file.readAll() : "(none)";
}

void test_json_file_manager::makes_folder_and_file()
{
    const JsonFileManager manager;
    QCOMPARE(manager.metaObject()->methodCount(), QObject::staticMetaObject.methodCount());
    QCOMPARE(manager.file_path, path());
    QCOMPARE(names(manager),
             QStringList({u"BEIJING1954"_s, u"CGCS2000"_s, u"WGS1984"_s, u"XIAN1980"_s}));
    QCOMPARE(QJsonDocument::fromJson(content()).object().keys(), names(manager));
    QCOMPARE(QDir(folder()).entryList(QDir::Files), QStringList{u"coordinate_system.json"_s});
}

void test_json_file_manager::built_in_systems()
{
    const JsonFileManager manager;
    struct expected
    {
        const char* name;
        double changzhou, duanzhou, pianlv;
        int ellipsoid;
    };
    for (const expected& one :
         {expected{"BEIJING1954", 6378245.0, 6356863.018773047, 0.00335233, 0},
          expected{"XIAN1980", 6378140.0, 6356755.288157528, 0.003352813, 1},
          expected{"WGS1984", 6378137.0, 6356752.314245179, 0.003352811, 2},
          expected{"CGCS2000", 6378137.0, 6356752.314140355, 0.003352811, 3}}) {
        const CoordinateSystem system = manager.getCoordinateSystem(QString::fromLatin1(one.name));
        const QList<double> numbers = values(system);
        QCOMPARE(numbers.mid(0, 3), QList<double>({one.changzhou, one.duanzhou, one.pianlv}));
        QCOMPARE(numbers.mid(3, 9), QList<double>({0.0, double(one.ellipsoid), 1.0, 3.0, 1.0,
                                                   500000.0, 0.0, 0.0, 0.0}));
        QCOMPARE(numbers.mid(12), QList<double>(11, 0.0));
    }
}

void test_json_file_manager::layout_of_the_file()
{
    JsonFileManager manager;
    manager.systems.clear();
    QVERIFY(manager.addCoordinateSystem(sample(u"土地"_s)));
    QCOMPARE(QString::fromUtf8(content()), uR"({
    "土地": {
        "model_param": {
            "ellip_para": {
                "changzhou": 6378137.5,
                "duanzhou": 6356752.25,
                "pianlv": 0.003352811
            },
            "ellipsoid": 3,
            "gauss_param": {
                "east": 500000.125,
                "k0": 0.9996,
                "l0": 117.25,
                "method": 6,
                "north": 10000000,
                "tall": 12.5,
                "utm_mode": 2
            },
            "param4": {
                "dx": 7.5,
                "dy": 8.5,
                "k": 1.00001,
                "rt": -9.5
            },
            "param7": {
                "dx": 1.5,
                "dy": -2.5,
                "dz": 3.5,
                "k": 1e-06,
                "rx": 4.5,
                "ry": 5.5,
                "rz": -6.5
            },
            "type": 1
        }
    }
}
)"_s);
}

void test_json_file_manager::every_value_survives()
{
    const QList<double> before = values(sample(u"x"_s));
    {
        JsonFileManager manager;
        QVERIFY(manager.addCoordinateSystem(sample(u"x \"y\"\n\\ 中"_s)));
        CoordinateSystem fine = sample(u"fine"_s);
        fine.east = 0.1 + 0.2;
        fine.param7.k = -1.2345678901234567e-7;
        QVERIFY(manager.addCoordinateSystem(fine));
    }
    const JsonFileManager manager;
    QCOMPARE(values(manager.getCoordinateSystem(u"x \"y\"\n\\ 中"_s)), before);
    QVERIFY(manager.getCoordinateSystem(u"fine"_s).east == 0.1 + 0.2);
    QVERIFY(manager.getCoordinateSystem(u"fine"_s).param7.k == -1.2345678901234567e-7);
}

void test_json_file_manager::sorted_after_a_restart()
{
    JsonFileManager manager;
    QVERIFY(manager.addCoordinateSystem(sample(u"AAA"_s)));
    QCOMPARE(manager.systems.last().name, u"AAA"_s);
    const JsonFileManager restarted;
    QCOMPARE(restarted.systems.first().name, u"AAA"_s);
    QCOMPARE(restarted.systems.size(), 5);
}

void test_json_file_manager::nothing_is_rejected_data()
{
    QTest::addColumn<QByteArray>("system"); // the value under "S"
    QTest::addColumn<QList<double>>("expected");

    // The first twelve numbers; the rest is 0.
    const QList<double> defaults{0, 0, 0, 0, 0, 1, 3, 1, 500000, 0, 0, 0};
    const auto row = [](const char* name, const QByteArray& system, const QList<double>& expected) {
        QTest::newRow(name) << system << expected;
    };
    row("no model_param", "{}", defaults);
    row("another member", R"({"other": 1})", defaults);
    row("a number for a system", "5", defaults);
    row("null for a system", "null", defaults);
    row("a list for a system", "[1, 2]", defaults);
    row("a text for model_param", R"({"model_param": "x"})", defaults);
    row("a list for model_param", R"({"model_param": [{}]})", defaults);
    row("empty model_param", R"({"model_param": {}})", defaults);
    row("groups that are no objects",
        R"({"model_param": {"ellip_para": 1, "gauss_param": [], "param7": null, "param4": "x"}})",
        defaults);
    row("type and ellipsoid", R"({"model_param": {"type": 2, "ellipsoid": 3}})",
        {0, 0, 0, 2, 3, 1, 3, 1, 500000, 0, 0, 0});
    row("numbers as text",
        R"({"model_param": {"type": "2", "ellip_para": {"changzhou": "6378137"}}})", defaults);
    row("fractions and excess in whole numbers",
        R"({"model_param": {"type": 1.5, "ellipsoid": 1e300, "gauss_param": {"utm_mode": 3000000000}}})",
        {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0});
    row("a gauss_param without k0",
        R"({"model_param": {"gauss_param": {"utm_mode": 1, "method": 6, "east": 5, "l0": 117}}})",
        {0, 0, 0, 0, 0, 1, 6, 0, 5, 0, 0, 117});
    row("an empty gauss_param", R"({"model_param": {"gauss_param": {}}})",
        {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0});
    row("one axis", R"({"model_param": {"ellip_para": {"duanzhou": 7}}})",
        {0, 7, 0, 0, 0, 1, 3, 1, 500000, 0, 0, 0});
    row("booleans",
        R"({"model_param": {"type": true, "gauss_param": {"k0": true, "utm_mode": false}}})",
        {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0});
}

void test_json_file_manager::nothing_is_rejected()
{
    QFETCH(QByteArray, system);
    QFETCH(QList<double>, expected);
    put(R"({"S": )" + system + "}");
    const QByteArray before = content();
    const JsonFileManager manager;
    QCOMPARE(names(manager), QStringList{u"S"_s});
    QCOMPARE(values(manager.systems[0]), expected + QList<double>(11, 0.0));
    QCOMPARE(content(), before);
}

void test_json_file_manager::foreign_files_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QStringList>("loaded");

    const QByteArray good =
        QJsonDocument(JsonFileManager().createDefaultCoordinateSystems()).toJson();
    const QStringList four{u"BEIJING1954"_s, u"CGCS2000"_s, u"WGS1984"_s, u"XIAN1980"_s};
    const auto row = [](const char* name, const QByteArray& bytes, const QStringList& loaded = {}) {
        QTest::newRow(name) << bytes << loaded;
    };
    const auto utf16 = [&](QStringConverter::Encoding encoding) {
        QStringEncoder encoder(encoding, QStringConverter::Flag::WriteBom);
        return QByteArray(encoder(QString::fromUtf8(good)));
    };

    row("nothing", "");
    row("a space", " ");
    row("line ends", "\r\n\r\n");
    row("an empty object", "{}");
    row("an empty list", "[]");
    row("a list of systems", "[" + good + "]");
    row("null", "null");
    row("a number", "42");
    row("a text", R"("coordinate_system")");
    row("true", "true");
    row("one brace", "{");
    row("the other brace", "}");
    row("no value", R"({"A")");
    row("no value after the colon", R"({"A":)");
    row("no end of the object", R"({"A": {})");
    row("no end of a text", R"({"A)");
    row("no quotes", "{A: {}}");
    row("single quotes", "{'A': {}}");
    row("a comma at the end", R"({"A": {},})");
    row("two commas", R"({"A": {},, "B": {}})");
    row("no comma", R"({"A": {} "B": {}})");
    row("a comment", "// systems\n{\"A\": {}}");
    row("something behind", R"({"A": {}} {"B": {}})");
    row("cut in the middle", good.first(good.size() / 2));
    row("cut by one byte", good.trimmed().chopped(1));
    row("cut in the last number", good.first(good.lastIndexOf('0')));
    row("zeros of a crashed disk", QByteArray(4096, '\0'));
    row("zeros behind", good + QByteArray(512, '\0'));
    row("a zero between members", QByteArray(good).insert(1, '\0'));
    row("bytes 0xFF", QByteArray(1000, '\xFF'));
    row("a flipped byte in a key", QByteArray(good).replace("changzhou", "chang\x80hou"));
    row("Latin-1 name", "{\"Stra\xDF"
                        "e\": {}}");
    row("GBK name", "{\"\xCD\xC1\xB5\xD8\": {}}");
    row("an overlong form", "{\"\xC0\x80\": {}}");
    row("half a surrogate in UTF-8", "{\"\xED\xA0\x80\": {}}");
    row("UTF-8 with a mark", "\xEF\xBB\xBF" + good, four);
    row("the mark alone", "\xEF\xBB\xBF");
    row("UTF-16, little end first", utf16(QStringConverter::Utf16LE));
    row("UTF-16, big end first", utf16(QStringConverter::Utf16BE));
    row("UTF-32", utf16(QStringConverter::Utf32LE));
    row("NaN", R"({"A": {"model_param": {"ellip_para": {"changzhou": NaN}}}})");
    row("Infinity", R"({"A": {"model_param": {"ellip_para": {"changzhou": Infinity}}}})");
    row("-Infinity", R"({"A": {"model_param": {"ellip_para": {"changzhou": -Infinity}}}})");
    row("nan", R"({"A": {"model_param": {"type": nan}}})");
    row("a number beyond all", R"({"A": {"model_param": {"ellip_para": {"changzhou": 1e999}}}})");
    row("hexadecimal", R"({"A": {"model_param": {"type": 0x10}}})");
    row("a plus sign", R"({"A": {"model_param": {"type": +1}}})");
    row("a decimal comma", R"({"A": {"model_param": {"ellip_para": {"changzhou": 6378137,5}}}})");
    row("an unknown escape", R"({"A\q": {}})", {u"Aq"_s});
    row("half an escape", R"({"A\u12": {}})");
    row("a deep nest of lists", QByteArray("{\"A\": ") + QByteArray(100000, '['));
    row("a deep nest of objects", QByteArray("{\"A\":").repeated(100000));
    row("a closed deep nest", "{\"A\": " + QByteArray(5000, '[') + QByteArray(5000, ']') + "}");
    row("XML", "<?xml version=\"1.0\"?><systems/>");
    row("CSV", "name,a,b\nBEIJING1954,6378245,6356863\n");
    row("HTML", "<!DOCTYPE html><html><body>404</body></html>");
    row("a ZIP file", QByteArray("PK\x03\x04\x14\x00\x08\x00", 8) + QByteArray(200, 'x'));
    row("a PNG", QByteArray("\x89PNG\r\n\x1A\n\0\0\0\rIHDR", 16));
    row("JSON lines", "{\"A\": {}}\n{\"B\": {}}\n");
    row("another program's settings", R"({"version": 3, "window": {"width": 800}})",
        {u"version"_s, u"window"_s});
    row("GeoJSON", R"({"type": "FeatureCollection", "features": []})", {u"features"_s, u"type"_s});
    row("the same name twice",
        R"({"A": {"model_param": {"type": 1}}, "A": {"model_param": {"type": 2}}})", {u"A"_s});
    row("names that differ in case", R"({"b": {}, "B": {}})", {u"B"_s, u"b"_s});
    row("an empty name", R"({"": {}})", {QString()});
    row("a name of spaces", R"({"  ": {}})", {u"  "_s});
    row("half a surrogate as an escape", R"({"\ud800": {}})", {QString(QChar(0xD800))});
    row("a zero in a name", R"({"A\u0000B": {}})", {u"A"_s + QChar(0) + u"B"_s});
    row("a name of 100,000 letters", "{\"" + QByteArray(100000, 'n') + "\": {}}",
        {QString(100000, u'n')});
    row("Windows line ends", QByteArray(good).replace("\n", "\r\n"), four);
    row("no line ends", QByteArray(good).replace("\n", ""), four);
    row("old Mac line ends", QByteArray(good).replace("\n", "\r"), four);
    QByteArray many = "{";
    QStringList many_names;
    for (int i = 0; i < 20000; ++i) {
        const QString name = u"S%1"_s.arg(i, 5, 10, QChar(u'0'));
        many += (i == 0 ? "\"" : ",\"") + name.toLatin1() + R"(": {"model_param": {"type": 1}})";
        many_names += name;
    }
    row("20,000 systems", many + "}", many_names);
}

/// Whatever the file holds: the program starts, and the file stays as it is.
void test_json_file_manager::foreign_files()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QStringList, loaded);
    put(bytes);
    const QDateTime written = QFileInfo(path()).lastModified();
    const log_capture log;
    const JsonFileManager manager;
    QCOMPARE(names(manager), loaded);
    QCOMPARE(content(), bytes);
    QCOMPARE(QFileInfo(path()).lastModified(), written);
    QCOMPARE(log.has(u"读取坐标系统失败"_s), loaded.isEmpty());
    QCOMPARE(log.has(u"JSON文件为空或读取失败"_s), loaded.isEmpty());
    QCOMPARE(QDir(folder()).entryList(QDir::Files), QStringList{u"coordinate_system.json"_s});
}

void test_json_file_manager::huge_files()
{
    put("{");
    QFile file(path());
    // Sizes only, no bytes: the disk holds a hole.
    for (const qint64 size :
         {qint64{64} * 1024 * 1024 + 1, qint64{8} * 1024 * 1024 * 1024 * 1024}) {
        if (!file.resize(size))
            continue; // more than this disk lets one file be
        const log_capture log;
        const JsonFileManager manager;
        QCOMPARE(manager.systems.size(), 0);
        QVERIFY(log.has(u"JSON解析错误:"_s));
        QCOMPARE(QFileInfo(path()).size(), size);
    }
    QVERIFY(file.size() > qint64{64} * 1024 * 1024);
}

void test_json_file_manager::pipe_in_place_of_the_file()
{
#ifdef Q_OS_UNIX
    QVERIFY(QDir().mkpath(folder()));
    QCOMPARE(mkfifo(QFile::encodeName(path()).constData(), 0600), 0);
    JsonFileManager manager; // does not wait for somebody to write
    QCOMPARE(manager.systems.size(), 0);
    const log_capture log;
    QVERIFY(!manager.addCoordinateSystem(sample(u"A"_s))); // nor for somebody to read
    QVERIFY(log.has(u"无法打开文件进行写入:"_s));
    QVERIFY(QFile::remove(path()));
    QVERIFY(QFile::link(u"/dev/zero"_s, path()));
    QCOMPARE(JsonFileManager().systems.size(), 0);
#else
    QSKIP("no pipes among the files");
#endif
}

void test_json_file_manager::folder_in_place_of_the_file()
{
    QVERIFY(QDir().mkpath(path()));
    const log_capture log;
    JsonFileManager manager;
    QCOMPARE(manager.systems.size(), 0);
    QCOMPARE(level_of(log, u"无法打开文件进行读取: \""_s), QtWarningMsg); // with the reason
    QVERIFY(!manager.addCoordinateSystem(sample(u"A"_s)));
    QCOMPARE(level_of(log, u"无法打开文件进行写入: \""_s), QtWarningMsg);
    QVERIFY(QFileInfo(path()).isDir());
}

void test_json_file_manager::file_in_place_of_the_folder()
{
    QFile file(folder());
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("mine");
    file.close();
    const log_capture log;
    JsonFileManager manager;
    QCOMPARE(manager.systems.size(), 0);
    QCOMPARE(level_of(log, u"创建目录失败: \"%1\""_s.arg(folder())), QtDebugMsg);
    QCOMPARE(level_of(log, u"JSON文件不存在，正在创建..."_s), QtDebugMsg);
    QCOMPARE(level_of(log, u"无法创建目录"_s), QtWarningMsg);
    QCOMPARE(level_of(log, u"创建JSON文件失败"_s), QtDebugMsg);
    QVERIFY(!manager.addCoordinateSystem(sample(u"A"_s)));
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), "mine");
}

void test_json_file_manager::unwritable_folder()
{
    // Nobody may write here, not even root.
    if (!QFileInfo::exists(u"/proc/self"_s))
        QSKIP("no file system at hand that refuses everybody");
    qputenv("XDG_DATA_HOME", "/proc/self");
    const log_capture log;
    JsonFileManager manager;
    QCOMPARE(manager.systems.size(), 0);
    QCOMPARE(manager.file_path, u"/proc/self/Velmo/coordinate_system.json"_s);
    QVERIFY(log.has(u"创建目录失败:"_s));
    QVERIFY(log.has(u"创建JSON文件失败"_s));
    QVERIFY(!manager.addCoordinateSystem(sample(u"A"_s)));
    QCOMPARE(names(manager), QStringList{u"A"_s});
}

void test_json_file_manager::vanished_file_and_folder()
{
    JsonFileManager manager;
    QVERIFY(QDir(folder()).removeRecursively());
    {
        const log_capture log;
        QVERIFY(!manager.readAllCoordinateSystems());
        QCOMPARE(log.texts(),
                 QStringList({u"文件不存在，无法读取"_s, u"JSON文件为空或读取失败"_s}));
        QCOMPARE(manager.systems.size(), 0); // emptied first
    }
    QVERIFY(manager.addCoordinateSystem(sample(u"A"_s))); // makes the folder again
    QCOMPARE(names(JsonFileManager()), QStringList{u"A"_s});
}

void test_json_file_manager::full_disk_is_told_data()
{
    QTest::addColumn<int>("room"); // bytes
    QTest::newRow("full") << 0;
    QTest::newRow("full after the first hundred bytes") << 100;
}

void test_json_file_manager::full_disk_is_told()
{
#ifdef Q_OS_UNIX
    QFETCH(int, room);
    JsonFileManager manager;
    const log_capture log;
    {
        const full_disk disk(static_cast<rlim_t>(room));
        QVERIFY(!manager.addCoordinateSystem(sample(u"A"_s)));
    }
    QCOMPARE(log.texts(), QStringList{u"写入文件失败"_s});
    QCOMPARE(levels(log), QList<QtMsgType>{QtWarningMsg});
    QCOMPARE(content().size(), room);
    QCOMPARE(manager.systems.size(), 5);
    // There is room again: the next change writes all.
    QVERIFY(manager.addCoordinateSystem(sample(u"B"_s)));
    QCOMPARE(JsonFileManager().systems.size(), 6);
#else
    QSKIP("no limit to a file's size at hand");
#endif
}

/// Another program may take the file away between writing and reading.
void test_json_file_manager::file_that_vanishes_after_it_was_made()
{
    static QString file;
    static QList<log_capture::line> told;
    file = path();
    told.clear();
    const QtMessageHandler usual = qInstallMessageHandler(
        [](QtMsgType type, const QMessageLogContext& /*context*/, const QString& text) {
            told += {type, text};
            if (text == u"默认JSON文件创建成功"_s)
                QFile::remove(file);
        });
    const JsonFileManager manager;
    qInstallMessageHandler(usual);
    QCOMPARE(manager.systems.size(), 0);
    QCOMPARE(told.constLast().text, u"加载默认坐标系统失败"_s);
    QCOMPARE(told.constLast().type, QtWarningMsg);
}

/// No second file takes the place of the first: links to it stay what they are.
void test_json_file_manager::saves_into_the_same_file()
{
#ifdef Q_OS_UNIX
    JsonFileManager manager;
    const QByteArray file = QFile::encodeName(path());
    const auto inode = [&] {
        struct stat about = {};
        return stat(file.constData(), &about) == 0 ? about.st_ino : 0;
    };
    const QString hard_link = m_data->path() + "/hard";
    QCOMPARE(link(file.constData(), QFile::encodeName(hard_link).constData()), 0);
    const auto before = inode();
    QVERIFY(before != 0);
    QVERIFY(manager.addCoordinateSystem(sample(u"A"_s)));
    QCOMPARE(inode(), before);
    QFile linked(hard_link);
    QVERIFY(linked.open(QIODevice::ReadOnly));
    QCOMPARE(linked.readAll(), content());

    const QString elsewhere = m_data->path() + "/elsewhere.json";
    QVERIFY(QFile::rename(path(), elsewhere));
    QVERIFY(QFile::link(elsewhere, path()));
    QVERIFY(manager.deleteCoordinateSystem(u"A"_s));
    QVERIFY(QFileInfo(path()).isSymLink());
    QFile target(elsewhere);
    QVERIFY(target.open(QIODevice::ReadOnly));
    QCOMPARE(QJsonDocument::fromJson(target.readAll()).object().size(), 4);
    QCOMPARE(JsonFileManager().systems.size(), 4);
#else
    QSKIP("links are looked at on Unix");
#endif
}

void test_json_file_manager::lines_of_a_first_and_a_second_start()
{
    {
        const log_capture log;
        const JsonFileManager manager;
        const QString bytes = QString::number(content().size());
        QCOMPARE(
            log.texts(),
            QStringList({u"成功创建目录: \"%1\""_s.arg(folder()),
                         u"JSON文件路径: \"%1\""_s.arg(path()), u"JSON文件不存在，正在创建..."_s,
                         u"JSON文件写入成功，写入 %1 字节"_s.arg(bytes), u"默认JSON文件创建成功"_s,
                         u"从文件加载了 4 个坐标系统"_s, u"成功加载默认坐标系统到内存"_s}));
        for (const log_capture::line& line : log.lines())
            QCOMPARE(line.type, QtDebugMsg);
    }
    {
        const log_capture log;
        const JsonFileManager manager;
        QCOMPARE(log.texts(),
                 QStringList({u"JSON文件路径: \"%1\""_s.arg(path()),
                              u"JSON文件已存在，正在读取所有坐标系统..."_s,
                              u"从文件加载了 4 个坐标系统"_s, u"成功读取 4 个坐标系统到内存"_s}));
    }
    put("{]");
    const log_capture log;
    const JsonFileManager manager;
    QCOMPARE(log.texts().size(), 5);
    QVERIFY(log.texts()[2].startsWith(u"JSON解析错误: "_s));
    QCOMPARE(log.texts()[3], u"JSON文件为空或读取失败"_s);
    QCOMPARE(log.texts()[4], u"读取坐标系统失败"_s);
    for (const log_capture::line& line : log.lines().mid(2))
        QCOMPARE(line.type, QtWarningMsg);
}

void test_json_file_manager::add()
{
    JsonFileManager manager;
    const QByteArray before = content();
    {
        const log_capture log;
        QVERIFY(!manager.addCoordinateSystem(CoordinateSystem()));
        QVERIFY(!manager.addCoordinateSystem(sample(u"WGS1984"_s)));
        QCOMPARE(log.texts(),
                 QStringList({u"坐标系统名称为空"_s, u"坐标系统 \"WGS1984\" 已存在"_s}));
        QCOMPARE(levels(log), QList<QtMsgType>(2, QtWarningMsg));
    }
    QCOMPARE(manager.systems.size(), 4);
    QCOMPARE(manager.getCoordinateSystem(u"WGS1984"_s).type, 0);
    QCOMPARE(content(), before);
    QVERIFY(manager.addCoordinateSystem(sample(u"wgs1984"_s))); // another name
    QCOMPARE(manager.systems.size(), 5);
    QCOMPARE(QJsonDocument::fromJson(content()).object().size(), 5);
}

void test_json_file_manager::update()
{
    JsonFileManager manager;
    const QByteArray before = content();
    {
        const log_capture log;
        QVERIFY(!manager.updateCoordinateSystem(CoordinateSystem()));
        QVERIFY(!manager.updateCoordinateSystem(sample(u"X"_s)));
        QCOMPARE(log.texts(),
                 QStringList({u"坐标系统名称为空"_s, u"坐标系统 \"X\" 不存在，无法更新"_s}));
        QCOMPARE(levels(log), QList<QtMsgType>(2, QtWarningMsg));
        QCOMPARE(content(), before);
    }
    QVERIFY(manager.updateCoordinateSystem(sample(u"WGS1984"_s)));
    QCOMPARE(values(JsonFileManager().getCoordinateSystem(u"WGS1984"_s)), values(sample(u"x"_s)));
    // In place, as the forms do it.
    manager.systems[0].l0 = 123.0;
    QVERIFY(manager.updateCoordinateSystem(manager.systems[0]));
    QCOMPARE(JsonFileManager().systems[0].l0, 123.0);
}

void test_json_file_manager::remove()
{
    JsonFileManager manager;
    {
        const log_capture log;
        QVERIFY(!manager.deleteCoordinateSystem(u"X"_s));
        QCOMPARE(log.texts(), QStringList{u"坐标系统 \"X\" 不存在"_s});
        QCOMPARE(levels(log), QList<QtMsgType>{QtWarningMsg});
    }
    QVERIFY(manager.deleteCoordinateSystem(u"CGCS2000"_s));
    QVERIFY(manager.deleteCoordinateSystem(manager.systems[0].name));
    QCOMPARE(names(manager), QStringList({u"WGS1984"_s, u"XIAN1980"_s}));
    QCOMPARE(names(JsonFileManager()), names(manager));
}

void test_json_file_manager::get()
{
    const JsonFileManager manager;
    QCOMPARE(manager.getCoordinateSystem(u"WGS1984"_s).name, u"WGS1984"_s);
    const log_capture log;
    QCOMPARE(manager.getCoordinateSystem(u"wgs1984"_s).name, QString());
    QCOMPARE(manager.getCoordinateSystem(QString()).east, 500000.0);
    QCOMPARE(log.texts(),
             QStringList({u"坐标系统 \"wgs1984\" 不存在"_s, u"坐标系统 \"\" 不存在"_s}));
    QCOMPARE(levels(log), QList<QtMsgType>(2, QtWarningMsg));
}

void test_json_file_manager::all_deleted()
{
    JsonFileManager manager;
    for (const QString& name : names(manager))
        QVERIFY(manager.deleteCoordinateSystem(name));
    QCOMPARE(content(), "{\n}\n");
    const log_capture log;
    JsonFileManager restarted;
    QCOMPARE(restarted.systems.size(), 0);
    QVERIFY(log.has(u"JSON文件为空或读取失败"_s));
    QCOMPARE(content(), "{\n}\n");
    // Only a system that was loaded is a success.
    QVERIFY(!restarted.readAllCoordinateSystems());
    QVERIFY(!restarted.initJsonFile(u"coordinate_system.json"_s));
    put(R"({"A": {}})");
    QVERIFY(restarted.readAllCoordinateSystems());
    QVERIFY(restarted.initJsonFile(u"coordinate_system.json"_s));
    QVERIFY(restarted.initJsonFile(u"another.json"_s)); // the built-in ones
    QCOMPARE(restarted.file_path, folder() + "/another.json");
}

void test_json_file_manager::next_save_replaces_a_damaged_file()
{
    put(R"({"A": {"model_par)");
    JsonFileManager manager;
    QVERIFY(manager.addCoordinateSystem(sample(u"B"_s)));
    QCOMPARE(names(JsonFileManager()), QStringList{u"B"_s});
}

/// After the start memory counts, whatever another program makes of the file.
void test_json_file_manager::the_file_is_read_once()
{
    JsonFileManager manager;
    put(R"({"foreign": {}})");
    QCOMPARE(manager.getCoordinateSystem(u"foreign"_s).name, QString());
    QCOMPARE(manager.getCoordinateSystem(u"WGS1984"_s).name, u"WGS1984"_s);
    QVERIFY(manager.deleteCoordinateSystem(u"WGS1984"_s));
    QCOMPARE(names(JsonFileManager()),
             QStringList({u"BEIJING1954"_s, u"CGCS2000"_s, u"XIAN1980"_s}));
}

void test_json_file_manager::failed_write_keeps_the_list()
{
    JsonFileManager manager;
    QVERIFY(QFile::remove(path()));
    QVERIFY(QDir().mkpath(path()));
    QVERIFY(!manager.addCoordinateSystem(sample(u"A"_s)));
    QVERIFY(!manager.updateCoordinateSystem(sample(u"WGS1984"_s)));
    QVERIFY(!manager.deleteCoordinateSystem(u"XIAN1980"_s));
    QCOMPARE(names(manager), QStringList({u"BEIJING1954"_s, u"CGCS2000"_s, u"WGS1984"_s, u"A"_s}));
    QCOMPARE(manager.getCoordinateSystem(u"WGS1984"_s).type, 1);
}

QTEST_GUILESS_MAIN(test_json_file_manager)
#include "test_json_file_manager.moc"
