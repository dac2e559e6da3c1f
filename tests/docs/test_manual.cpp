// The manual names what the program shows: every message box in both languages, and
// no button or menu that is not there. What the boxes say is taken from the sources.

#include <QDirIterator>
#include <QFile>
#include <QHash>
#include <QRegularExpression>
#include <QSet>
#include <QTest>
#include <QXmlStreamReader>

#include <algorithm>

namespace {

const QString root = QStringLiteral(SOURCE_DIR "/");

QString read_all(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

/// The program's own sources, by path.
QHash<QString, QString> sources()
{
    QHash<QString, QString> found;
    for (const char* folder :
         {"core", "presentation", "device", "coordinates", "exchange", "updates"}) {
        QDirIterator files(root + QLatin1String(folder), {"*.cpp", "*.h"}, QDir::Files);
        while (files.hasNext()) {
            const QString path = files.next();
            static const QRegularExpression directives(QStringLiteral("^#.*$"),
                                                       QRegularExpression::MultilineOption);
            found.insert(path.mid(root.size()), read_all(path).remove(directives));
        }
    }
    return found;
}

/// What the texts of the English interface are, by their source text.
QHash<QString, QString> translations()
{
    QHash<QString, QString> found;
    QFile file(root + QStringLiteral("translations/en_CN.ts"));
    if (!file.open(QIODevice::ReadOnly))
        return found;
    QXmlStreamReader xml(&file);
    QString source;
    while (!xml.atEnd()) {
        if (xml.readNext() != QXmlStreamReader::StartElement)
            continue;
        if (xml.name() == u"source")
            source = xml.readElementText();
        else if (xml.name() == u"translation")
            found.insert(source, xml.readElementText());
    }
    return found;
}

bool is_chinese(const QString& text)
{
    static const QRegularExpression han(QStringLiteral("\\p{Han}"));
    return text.contains(han);
}

// \x22 is the quotation mark.
const QRegularExpression
    literal(QStringLiteral(R"(((?:tr|translate)\((?:\x22MainWindow\x22,\s*)?)?)"
                           R"(\x22((?:[^\x22\\]|\\.)*)\x22((?:\s*\x22(?:[^\x22\\]|\\.)*\x22)*))"));

QString unescaped(QString text)
{
    return text.replace(QLatin1String("\\n"), QLatin1String("\n"))
        .replace(QLatin1String("\\\""), QLatin1String("\""));
}

/// The texts of one statement, as they read in each language.
struct texts
{
    QStringList chinese;
    QStringList english;
};

texts texts_of(const QString& statement, const QHash<QString, QString>& constants)
{
    static const QHash<QString, QString> translated = translations();
    static const QRegularExpression joint(QStringLiteral(R"(\x22\s*\x22)"));
    QStringList all;
    texts found;
    const auto take = [&](const QString& text) {
        (is_chinese(text) ? found.chinese : found.english).append(text);
    };
    auto match = literal.globalMatch(statement);
    while (match.hasNext()) {
        const auto one = match.next();
        const QString more = one.captured(3).trimmed();
        const QString text =
            unescaped(one.captured(2) + more.mid(1, more.size() - 2).remove(joint));
        take(text);
        if (!one.captured(1).isEmpty() && translated.contains(text))
            found.english.append(translated.value(text));
    }
    for (auto constant = constants.begin(); constant != constants.end(); ++constant) {
        if (statement.contains(QRegularExpression(QStringLiteral("\\b%1\\b").arg(constant.key()))))
            take(constant.value());
    }
    return found;
}

/// The code in pieces that end with a semicolon or a brace outside of brackets.
QStringList statements(const QString& code)
{
    QStringList found;
    QString current;
    int depth = 0;
    bool quoted = false;
    for (qsizetype i = 0; i < code.size(); ++i) {
        const QChar c = code[i];
        if (!quoted && c == u'/' && i + 1 < code.size() && code[i + 1] == u'/') {
            i = code.indexOf(u'\n', i);
            if (i < 0)
                break;
            continue;
        }
        if (!quoted && c == u'\'' && i + 2 < code.size() && code[i + 2] == u'\'') {
            i += 2; // a character, which may be a quote
            continue;
        }
        if (c == u'"' && (i == 0 || code[i - 1] != u'\\'))
            quoted = !quoted;
        current += c;
        if (quoted)
            continue;
        depth += c == u'(' ? 1 : c == u')' ? -1 : 0;
        if (depth == 0 && (c == u';' || c == u'{' || c == u'}')) {
            found.append(current.trimmed());
            current.clear();
        }
    }
    return found;
}

/// Titles of boxes and what else stands in their calls without being said.
bool is_no_message(const QString& text)
{
    static const QSet<QString> known{
        "警告", "Warning", "串口", "数据读取", "上传", "提示", "升级", "检查失败", "检查更新",
        "下载", "下载错误", "csv", "gpx", "kml", "dxf", "img", "Excel", "导入", "import", "Import",
        "计算", "错误", "ERROR", "成功", "Success", "计算失败", "Calculation", "删除", "DELETE",
        "新建", "CREAT", "退出确认", "Quit", "MainWindow", "Calculation failed",
        // The state of the connection, beside the lamps.
        "已连接", "未连接", "connect", "disconnect"};
    const QString words = text.trimmed();
    return words.isEmpty() || known.contains(words);
}

/// What the boxes say, each with the file that shows it.
struct message
{
    QString file;
    QString text;
};

struct messages
{
    QList<message> chinese; ///< under the Chinese interface
    QList<message> english;
};

messages box_messages()
{
    // Calls that show a box or carry its text there, and the places where a text is
    // made that goes into a box later.
    static const QRegularExpression shows(QStringLiteral(
        R"(\b(show_box|show_information|show_warning|show_message_box|warn|notify|tell)"
        R"(|warn_about_row|finish_export|export_merged|export_each|ways\.append|box\.setText)"
        R"(|QMessageBox::(information|warning|critical|question))\()"));
    static const QRegularExpression makes(
        QStringLiteral(R"((^|\)\s*|\bcase [\w:]+\s+)(return\b)"
                       R"(|(const )?(QString )?(error|message|text|done) \+?=))"));
    static const QRegularExpression logs(QStringLiteral(R"(\bq(C?)(Debug|Warning)\()"));
    static const QRegularExpression constant(
        QStringLiteral(R"(const QString (\w+) = QStringLiteral\(\x22([^\x22]*)\x22\);)"));
    messages found;
    const auto all = sources();
    for (auto file = all.begin(); file != all.end(); ++file) {
        const bool in_boxes = file->contains(shows) || file.key() == u"device/upload_records.cpp";
        if (!in_boxes)
            continue;
        QHash<QString, QString> constants;
        for (auto match = constant.globalMatch(*file); match.hasNext();) {
            const auto one = match.next();
            constants.insert(one.captured(1), one.captured(2));
        }
        for (const QString& statement : statements(*file)) {
            const bool shown = statement.contains(shows);
            if (statement.contains(logs) || (!shown && !statement.contains(makes)))
                continue;
            texts said = texts_of(statement, shown ? constants : QHash<QString, QString>());
            if (statement.contains(QLatin1String("tell("))) // with what the log says
                said.english.clear();
            said.chinese.removeIf(is_no_message);
            said.english.removeIf(is_no_message);
            const auto is_line_of_a_file = [](const QString& text) { return text.endsWith(u'\n'); };
            if (!shown &&
                (said.chinese.isEmpty() || std::ranges::any_of(said.chinese, is_line_of_a_file)))
                continue; // made for something else
            for (const QString& text : said.chinese.isEmpty() ? said.english : said.chinese)
                found.chinese.append({file.key(), text});
            for (const QString& text : said.english.isEmpty() ? said.chinese : said.english)
                found.english.append({file.key(), text});
        }
    }
    return found;
}

/// Whether a page has a box's text: line by line, and anything of a few letters
/// where the text has a placeholder.
bool has_text(const QString& page, const QString& text)
{
    static const QRegularExpression placeholder(QStringLiteral("%\\d"));
    for (const QString& line : text.split(u'\n', Qt::SkipEmptyParts)) {
        QStringList parts;
        for (const QString& part : line.trimmed().split(placeholder))
            parts.append(QRegularExpression::escape(part));
        if (!page.contains(QRegularExpression(parts.join(QStringLiteral(".{0,12}?")))))
            return false;
    }
    return true;
}

QString page(const char* language)
{
    return read_all(root + QStringLiteral("docs/manual.%1.md").arg(QLatin1String(language)));
}

} // namespace

class test_manual : public QObject
{
    Q_OBJECT

private slots:
    void boxes_are_found_in_the_sources();
    void every_box_is_in_the_manual_data();
    void every_box_is_in_the_manual();
    void buttons_and_menus_are_those_of_the_program_data();
    void buttons_and_menus_are_those_of_the_program();
    void pictures_are_there_data();
    void pictures_are_there();
    void both_languages_have_the_same_outline();
};

// One of each way in which the sources hand a text to a box.
void test_manual::boxes_are_found_in_the_sources()
{
    const messages found = box_messages();
    const auto has = [](const QList<message>& list, const char* text) {
        return std::ranges::any_of(
            list, [text](const message& one) { return one.text == QString::fromUtf8(text); });
    };
    for (const char* text :
         {"设备已连接", "数据读取失败", "数据读取失败，请重新读取", "第%1条数据%2", "通道未连接",
          "数据类型不支持", "安卓设备上传失败：%1", "Failed to open file", "kml文件导出成功",
          "csv多数据文件导入成功", "未勾选数据", "坐标系统新建成功", "是否同步到'参数设置'中?",
          "当前已经是最新版本!", "本设备不支持升级", "hex文件过大", "功能等待更新",
          "您确定要退出程序吗？"})
        QVERIFY2(has(found.chinese, text), text);
    for (const char* text :
         {"设备已连接", "Unselected data", "The coordinate system has been deleted.",
          "Whether to synchronize to the 'Parameter Settings'?", "This function awaits an update",
          "hex文件过大", "Are you sure you want to quit the program?"})
        QVERIFY2(has(found.english, text), text);
    QVERIFY(!has(found.english, "坐标系统已删除"));
    QVERIFY(!has(found.english, "hex file too large"));
}

void test_manual::every_box_is_in_the_manual_data()
{
    QTest::addColumn<QString>("language");
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("text");
    const messages found = box_messages();
    for (const message& one : found.chinese)
        QTest::addRow("zh: %s", qPrintable(one.text)) << "zh" << one.file << one.text;
    for (const message& one : found.english)
        QTest::addRow("en: %s", qPrintable(one.text)) << "en" << one.file << one.text;
}

void test_manual::every_box_is_in_the_manual()
{
    QFETCH(QString, language);
    QFETCH(QString, file);
    QFETCH(QString, text);
    QVERIFY2(has_text(page(qPrintable(language)), text),
             qPrintable(QStringLiteral("%1 shows a box that manual.%2.md does not explain: %3")
                            .arg(file, language, text)));
}

void test_manual::buttons_and_menus_are_those_of_the_program_data()
{
    QTest::addColumn<QString>("language");
    QTest::addRow("Chinese") << "zh";
    QTest::addRow("English") << "en";
}

// What stands in bold letters is the name of a button, a menu or a choice.
void test_manual::buttons_and_menus_are_those_of_the_program()
{
    QFETCH(QString, language);
    static const QRegularExpression ending(QStringLiteral("[ :：]+$"));
    static const QRegularExpression quoted(QStringLiteral("\"([^\"\n]*)\""));
    static const QRegularExpression bold(QStringLiteral("\\*\\*([^*]+)\\*\\*"));
    QSet<QString> words;
    const auto add = [&words](QString word) { words.insert(word.trimmed().remove(ending)); };
    auto files = sources();
    files.insert(QStringLiteral("pic"), read_all(root + QStringLiteral("pic/CMakeLists.txt")));
    for (const QString& code : std::as_const(files)) {
        for (auto match = quoted.globalMatch(code); match.hasNext();)
            add(match.next().captured(1));
    }
    const auto translated = translations();
    for (const QString& word : translated)
        add(word);

    QStringList names;
    for (auto match = bold.globalMatch(page(qPrintable(language))); match.hasNext();)
        names += match.next().captured(1).simplified().split(QStringLiteral(" → "));
    QVERIFY(names.size() > 50);
    for (const QString& name : std::as_const(names))
        QVERIFY2(words.contains(name), qPrintable(name));
}

void test_manual::pictures_are_there_data()
{
    buttons_and_menus_are_those_of_the_program_data();
}

void test_manual::pictures_are_there()
{
    QFETCH(QString, language);
    static const QRegularExpression picture(QStringLiteral("!\\[([^]]+)\\]\\(([^)]+)\\)"));
    int count = 0;
    for (auto match = picture.globalMatch(page(qPrintable(language))); match.hasNext(); ++count) {
        const QString path = match.next().captured(2);
        QVERIFY2(QFile::exists(root + QStringLiteral("docs/") + path), qPrintable(path));
    }
    QVERIFY(count >= 10);
}

void test_manual::both_languages_have_the_same_outline()
{
    const auto outline = [](const char* language) {
        QStringList found;
        for (const QString& line : page(language).split(u'\n')) {
            if (line.startsWith(u'#'))
                found.append(line.section(u' ', 0, 0));
            else if (line.startsWith(QLatin1String("!["))) // with pictures, tables and lists
                found.append(QStringLiteral("picture"));
            else if (line.startsWith(u'|') || line.startsWith(QLatin1String("- ")))
                found.append(line.first(1));
        }
        return found;
    };
    QVERIFY(outline("zh").size() > 120);
    QCOMPARE(outline("zh"), outline("en"));
}

QTEST_GUILESS_MAIN(test_manual)
#include "test_manual.moc"
