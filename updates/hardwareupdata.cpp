#include "updates/hardwareupdata.h"

#include <QComboBox>
#include <QFrame>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QShortcut>

namespace {

/// The style of a button that is an image, `name` being "cloudupdata" and
/// `language_end` "" or "_en".
QString image_style(const QString& folder, const QString& name, const QString& language_end)
{
    return QStringLiteral("QPushButton{border:none;background-color:transparent;image: "
                          "url(./pic/%1/normal/%2%3.png);}QPushButton:pressed {image: "
                          "url(./pic/%1/push/%2%3_push.png);}")
        .arg(folder, name, language_end);
}

} // namespace

hardwareupdata::hardwareupdata(QWidget* parent)
    : QWidget(parent), progressBar(new QProgressBar(this)), pushButton(new QPushButton(this)),
      pushButton_2(new QPushButton(this)), pushButton_3(new QPushButton(this)),
      comboBox(new QComboBox(this)), label(new QLabel(QStringLiteral("升级进度："), this)),
      line(new QFrame(this))
{
    setWindowTitle(QStringLiteral("设备升级"));
    setWindowFlag(Qt::Window);
    setFixedSize(510, 253);

    struct placed
    {
        QWidget* what;
        const char* name;
        QRect place;
    };
    // The upper half fetches and confirms, the lower half shows the progress.
    for (const placed& one :
         {placed{pushButton, "pushButton", {25, 25, 120, 41}},
          placed{pushButton_2, "pushButton_2", {365, 25, 120, 41}},
          placed{comboBox, "comboBox", {25, 92, 320, 32}},
          placed{pushButton_3, "pushButton_3", {365, 87, 120, 41}},
          placed{line, "line", {25, 152, 460, 3}}, placed{label, "label", {25, 187, 75, 24}},
          placed{progressBar, "progressBar", {105, 187, 380, 24}}}) {
        one.what->setObjectName(QLatin1String(one.name));
        one.what->setGeometry(one.place);
    }
    line->setFrameStyle(QFrame::HLine | QFrame::Sunken);
    progressBar->setRange(0, 100);
    progressBar->setValue(0);
    setlanguage(0);
    new QShortcut(QKeySequence::Cancel, this, this, &QWidget::close);
    QMetaObject::connectSlotsByName(this);
}

void hardwareupdata::setlanguage(int language)
{
    struct image_button
    {
        QPushButton* button;
        const char* image;
        const char* chinese; ///< the word in the picture, for those who hear the window
        const char* english;
    };
    for (const image_button& one :
         {image_button{pushButton, "cloudupdata", "云端升级", "Cloud"},
          image_button{pushButton_2, "localupdata", "本地升级", "Local File"},
          image_button{pushButton_3, "sure", "确定", "Confirm"}}) {
        const QString name = QLatin1String(one.image);
        one.button->setStyleSheet(
            language == 0 ? image_style(QStringLiteral("ch"), name, QString())
                          : image_style(QStringLiteral("en"), name, QStringLiteral("_en")));
        one.button->setAccessibleName(QString::fromUtf8(language == 0 ? one.chinese : one.english));
    }
}

void hardwareupdata::on_pushButton_clicked()
{
    emit send_signal_cloud_updata();
}

void hardwareupdata::on_pushButton_2_clicked()
{
    emit send_signal_local_updata();
}

void hardwareupdata::on_pushButton_3_clicked()
{
    emit send_signal_sure(comboBox->currentText());
}

void hardwareupdata::recv_add_comboBox_value(QString value)
{
    comboBox->addItem(value);
}

void hardwareupdata::recv_updata_progress_value(int percent)
{
    progressBar->setValue(percent);
}
