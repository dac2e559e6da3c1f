#include "coordinates/transforms.h"
#include "support/log_capture.h"

#include <QFile>
#include <QLoggingCategory>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTemporaryFile>
#include <QTest>

#include <clocale>
#include <cstdio>
#include <locale>

#ifdef Q_OS_UNIX
#include <unistd.h>
#endif

using namespace Qt::StringLiterals;

namespace {

/// What the function writes to standard output.
template <class Function>
QByteArray printed_by(Function function)
{
    QTemporaryFile file;
    if (!file.open())
        qFatal("no file for the output");
    std::fflush(stdout);
    const int usual = dup(STDOUT_FILENO);
    dup2(file.handle(), STDOUT_FILENO);
    function();
    std::fflush(stdout);
    dup2(usual, STDOUT_FILENO);
    close(usual);
    file.seek(0);
    return file.readAll();
}

/// The lines of the function without what stands in them for a number.
template <class Function>
QStringList lines_of(Function function)
{
    const log_capture log;
    function();
    return log.texts();
}

QString number(double value)
{
    return QString::number(value, 'f', 9);
}

QString short_number(double value)
{
    return QString::number(value, 'f', 6);
}

/// A locale of the test's own with a comma for the decimal point, for C and C++ as
/// long as it lives: the machine may have no such locale.
class comma_locale
{
public:
    comma_locale()
        : m_usual(std::locale::global(std::locale(std::locale(), new comma))),
          m_usual_categories(std::setlocale(LC_ALL, nullptr)), m_usual_folder(qgetenv("LOCPATH"))
    {
        put("characters", "<code_set_name> ASCII\nCHARMAP\n<U0000>..<U007F> /x00\nEND CHARMAP\n");
        put("numbers", "LC_NUMERIC\ndecimal_point \",\"\nthousands_sep \"\"\ngrouping -1\n"
                       "END LC_NUMERIC\n");
        QProcess localedef;
        localedef.setWorkingDirectory(m_folder.path());
        // The other categories are not defined: it warns of that and ends with 1.
        localedef.start(u"localedef"_s, {u"--force"_s, u"--quiet"_s, u"--no-archive"_s, u"-f"_s,
                                         u"./characters"_s, u"-i"_s, u"./numbers"_s, u"./comma"_s});
        localedef.waitForFinished();
        qputenv("LOCPATH", QFile::encodeName(m_folder.path()));
        std::setlocale(LC_NUMERIC, "comma");
    }
    ~comma_locale()
    {
        m_usual_folder.isNull() ? qunsetenv("LOCPATH") : qputenv("LOCPATH", m_usual_folder);
        std::locale::global(m_usual);
        std::setlocale(LC_ALL, m_usual_categories.constData());
    }
    comma_locale(const comma_locale&) = delete;
    comma_locale& operator=(const comma_locale&) = delete;

private:
    struct comma : std::numpunct<char>
    {
        char do_decimal_point() const override { return ','; }
    };

    void put(const char* name, const QByteArray& text) const
    {
        QFile file(m_folder.filePath(QLatin1String(name)));
        if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size())
            qFatal("no file for the locale");
    }

    QTemporaryDir m_folder;
    std::locale m_usual;
    QByteArray m_usual_categories;
    QByteArray m_usual_folder;
};

constexpr double a = 6378137.0;
constexpr double b = 6356752.314245179;
constexpr double f = 0.003352811;

model_param system_of(int ellipsoid, int utm_mode)
{
    CoordinateSystem system;
    system.ellipsoid = ellipsoid;
    system.utm_mode = utm_mode;
    system.l0 = 117.0;
    system.tall = 1.5;
    return flat_parameters(system);
}

} // namespace

class test_transform_lines : public QObject
{
    Q_OBJECT

private slots:
    void init() { QLoggingCategory::setFilterRules(QString()); }

    void each_routine_tells();
    void forward_in_order();
    void back_prints();
    void routines_that_say_nothing();
    void lines_are_of_level_debug();
    void the_category_switches_all_off();
    void the_category_is_read_from_the_rules();
    void numbers_do_not_follow_the_locale();
};

void test_transform_lines::each_routine_tells()
{
    model_param::projection_block block = system_of(2, 1).projection;
    block.l0 *= 10000.0F;
    block.east *= 10.0;

    plane_position plane;
    QStringList lines = lines_of([&] { plane = BL2XY(block, {30.5, 117.75, 20.0}, a, f); });
    QCOMPARE(lines,
             QStringList{u"BL2XY  : B:30.500000000, L:117.750000000, H:20.000000000 => x:%1, "
                         u"y:%2, h:20.000000000\r\n"_s.arg(number(plane.x), number(plane.y))});
    lines = lines_of([&] { plane = UTMBL2XY(block, {30.5, 117.75, 20.0}, a, f, 1); });
    QCOMPARE(lines, QStringList{u"UTMBL2XY:xy->X=%1,xy->Y=%2,xy->H=20.000000\r\n\r\n"_s.arg(
                        short_number(plane.x), short_number(plane.y))});

    cartesian_position cartesian;
    lines = lines_of([&] { cartesian = BLH2XYZ({30.5, 117.75, 20.0}, a, b); });
    QCOMPARE(lines, QStringList{u"BLH2XYZ:xyz->X=%1,xyz->Y=%2\r\n\r\n"_s.arg(
                        short_number(cartesian.x), short_number(cartesian.y))});
    QCOMPARE(lines_of([] {
                 By7Param({1.0, 2.0, 3.0, 0.0, 0.0, 0.0, 1.0}, {10.0, -20.0, 0.5});
             }),
             QStringList{u"By7Param: X:10.000000000, Y:-20.000000000, Z:0.500000000 => "
                         u"X:21.000000000, Y:-38.000000000, Z:4.000000000\r\n"_s});

    skip_four_param = 0;
    const QString shifted = u"By4Param: x:10.000000000, y:20.000000000, h:3.000000000 => "
                            u"x:21.000000000, y:42.000000000, h:3.000000000\r\n"_s;
    QCOMPARE(lines_of([] {
                 By4Param({1.0, 2.0, 0.0, 2.0}, {10.0, 20.0, 3.0});
             }),
             QStringList{shifted});
    skip_four_param = 1;
    QCOMPARE(lines_of([] {
                 By4Param({1.0, 2.0, 0.0, 2.0}, {10.0, 20.0, 3.0});
             }),
             QStringList{u"By4Param: x:10.000000000, y:20.000000000, h:3.000000000 => "
                         u"x:10.000000000, y:20.000000000, h:3.000000000\r\n"_s});

    QCOMPARE(lines_of([] { degrees_to_dms(-12.5 - 0.25 / 3600.0, true); }),
             QStringList{uR"(~~~~~~~~~~ "-12" "30" "00" ".25")"_s});
}

void test_transform_lines::forward_in_order()
{
    model_param param = system_of(0, 1);
    geodetic_position position{30.5, 117.75, 2.0};
    const QStringList lines = lines_of(
        [&] { wgs84_to_plane(position, param, 6378245.0, 6356863.018773047, 0.00335233); });
    QCOMPARE(lines.size(), 6);
    QCOMPARE(lines[0], u"b:30.500000,l:117.750000,h:20.000000\r\n\r\n"_s);
    QCOMPARE(lines[1],
             u"model_param:0,0,0,1,0,3,0,0,1170000.000000,1.000000,5000000.000000,0.000000,"
             u"1.500000\r\n\r\n"_s);
    const char* const heads[] = {"BLH2XYZ:xyz->X=", "By7Param: X:", "BL2XY  : B:", "By4Param: x:"};
    for (qsizetype i = 0; i < 4; ++i)
        QVERIFY2(lines[i + 2].startsWith(QLatin1String(heads[i])), qPrintable(lines[i + 2]));

    param = system_of(2, 2);
    const QStringList utm = lines_of([&] { wgs84_to_plane(position, param, a, b, f); });
    QCOMPARE(utm.size(), 4);
    QCOMPARE(utm[1], u"model_param:0,2,0,2,0,3,0,0,1170000.000000,1.000000,5000000.000000,0.000000,"
                     u"1.500000\r\n\r\n"_s);
    QVERIFY(utm[2].startsWith("UTMBL2XY:xy->X="));
}

void test_transform_lines::back_prints()
{
    const model_param param = system_of(2, 1);
    QStringList logged;
    QCOMPARE(printed_by([&] {
                 logged = lines_of([&] {
                     plane_to_wgs84({3000000.25, 39400000.5, 7.0}, param, a, b, f);
                 });
             }),
             "By4Param: x:3000000.250000000, y:39400000.500000000, h:7.000000000 <= "
             "x:3000000.250000000, y:39400000.500000000, h:7.000000000\r\n");
    QCOMPARE(logged, QStringList());

    QCOMPARE(printed_by([] {
                 By7ParamInverse({1.0, 2.0, 3.0, 0.0, 0.0, 0.0, 1.0}, {21.0, -38.0, 4.0});
             }),
             "By7Param: X:10.000000000, Y:-20.000000000, Z:0.500000000 <= "
             "X:21.000000000, Y:-38.000000000, Z:4.000000000\r\n");
    QCOMPARE(printed_by([] {
                 By4ParamInverse({1.0, 2.0, 0.0, 1.0}, {21.0, 42.0, 3.0});
             }),
             "By4Param: x:10.000000000, y:20.000000000, h:3.000000000 <= "
             "x:21.000000000, y:42.000000000, h:3.000000000\r\n");

    // With a change of datum both lines and the one of BLH2XYZ(), which is logged.
    const QByteArray both = printed_by([&] {
        logged = lines_of([&] {
            plane_to_wgs84({3000000.0, 39400000.0, 7.0}, system_of(3, 1), a, b, f);
        });
    });
    QCOMPARE(both.count("\r\n"), 2);
    QVERIFY(both.startsWith("By4Param: "));
    QVERIFY(both.contains("\r\nBy7Param: "));
    QCOMPARE(logged.size(), 1);
}

void test_transform_lines::routines_that_say_nothing()
{
    QStringList logged;
    QCOMPARE(printed_by([&] {
                 logged = lines_of([] {
                     const model_param::projection_block block = system_of(2, 1).projection;
                     XY2BL(block, {3000000.0, 39400000.0, 0.0}, a, f);
                     UTMXY2BL(block, {3000000.0, 50400000.0, 0.0}, a, f);
                     XYZ2BLH({-2595420.5, 4875112.25, 3182002.75}, a, b);
                     degrees_to_dm(12.5, true);
                     dm_to_degrees(u"12°30′"_s);
                     dms_to_degrees(u"12°30′5″"_s);
                 });
             }),
             QByteArray());
    QCOMPARE(logged, QStringList());
}

void test_transform_lines::lines_are_of_level_debug()
{
    const log_capture log;
    model_param param = system_of(0, 1);
    geodetic_position position{30.5, 117.75, 2.0};
    wgs84_to_plane(position, param, a, b, f);
    degrees_to_dms(12.5, true);
    QCOMPARE(log.lines().size(), 7);
    for (const log_capture::line& line : log.lines())
        QCOMPARE(line.type, QtDebugMsg);
}

void test_transform_lines::the_category_switches_all_off()
{
    for (const QString& rule :
         {u"velmo.transforms=false"_s, u"velmo.transforms.debug=false"_s, u"velmo.*=false"_s}) {
        QLoggingCategory::setFilterRules(rule);
        QStringList logged;
        QCOMPARE(printed_by([&] {
                     logged = lines_of([] {
                         for (const int mode : {1, 2}) {
                             model_param param = system_of(0, mode);
                             geodetic_position position{30.5, 117.75, 2.0};
                             plane_to_wgs84(wgs84_to_plane(position, param, a, b, f), param, a, b,
                                            f);
                         }
                         degrees_to_dms(12.5, true);
                     });
                 }),
                 QByteArray());
        QCOMPARE(logged, QStringList());
    }
}

void test_transform_lines::the_category_is_read_from_the_rules()
{
    // What QT_LOGGING_RULES does is Qt's; here only that the category has its name and
    // is on when no rule speaks of it.
    QLoggingCategory::setFilterRules(u"velmo.transform=false\nvelmo.transforms.warning=false"_s);
    QCOMPARE(lines_of([] { BLH2XYZ({30.0, 100.0, 0.0}, a, b); }).size(), 1);
}

void test_transform_lines::numbers_do_not_follow_the_locale()
{
    if (QStandardPaths::findExecutable(u"localedef"_s).isEmpty())
        QSKIP("no localedef: no locale to make");
    const comma_locale locale;
    char probe[8];
    std::snprintf(probe, sizeof probe, "%.1f", 1.5);
    QCOMPARE(probe, "1,5");

    QStringList logged;
    const QByteArray printed = printed_by([&] {
        By4ParamInverse({0.0, 0.0, 0.0, 0.0}, {1.5, 2.5, 3.5});
        By7ParamInverse({0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0}, {1.5, 2.5, 3.5});
        skip_four_param = 1;
        logged = lines_of([] { By4Param({0.0, 0.0, 0.0, 0.0}, {1.5, 2.5, 3.5}); });
    });
    QCOMPARE(printed.count(".500000000"), 12);
    QVERIFY(!printed.contains(",500000000"));
    QVERIFY(logged.join(QString()).startsWith(u"By4Param: x:1.500000000, y:2.500000000"_s));
}

QTEST_GUILESS_MAIN(test_transform_lines)
#include "test_transform_lines.moc"
