#include "exchange/file_export_thread.h"
#include "support/box_watcher.h"

#include <dxflib/dl_dxf.h>

#include <QTemporaryDir>
#include <QTest>

#include <string>

// Stands between the program and dxflib, which writes words of its own for the line
// type of a name that it knows.

void real_write_linetype(DL_Dxf* dxf, DL_WriterA& writer, const DL_LinetypeData& data) asm(
    "__real__ZN6DL_Dxf13writeLinetypeER10DL_WriterARK15DL_LinetypeData");
void write_linetype(DL_Dxf* dxf, DL_WriterA& writer, const DL_LinetypeData& data) asm(
    "__wrap__ZN6DL_Dxf13writeLinetypeER10DL_WriterARK15DL_LinetypeData");

namespace {

QList<DL_LinetypeData> handed; ///< to the library

} // namespace

void write_linetype(DL_Dxf* dxf, DL_WriterA& writer, const DL_LinetypeData& data)
{
    handed += data;
    real_write_linetype(dxf, writer, data);
}

class test_dxf_line_types : public QObject
{
    Q_OBJECT

private slots:
    void names_and_descriptions();
};

void test_dxf_line_types::names_and_descriptions()
{
    const QTemporaryDir folder;
    box_watcher boxes;
    file_export_thread exporter;
    exporter.one_dxf_export(0, {}, folder.filePath(QStringLiteral("out.dxf")));
    QCOMPARE(boxes.boxes.size(), 1);
    QCOMPARE(handed.size(), 3);
    constexpr const char* names[][2] = {
        {"BYBLOCK", "BYBLOCK"}, {"BYLAYER", "BYLAYER"}, {"CONTINUOUS", "Continuous"}};
    for (qsizetype i = 0; i < handed.size(); ++i) {
        QCOMPARE(handed[i].name, std::string(names[i][0]));
        QCOMPARE(handed[i].description, std::string(names[i][1]));
        QCOMPARE(handed[i].flags, 0);
        QCOMPARE(handed[i].numberOfDashes, 0);
        QCOMPARE(handed[i].patternLength, 0.0);
    }
}

QTEST_MAIN(test_dxf_line_types)
#include "test_dxf_line_types.moc"
