#include "updates/update_form.h"

#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QShortcut>

updateForm::updateForm(QWidget* parent)
    : QWidget(parent), pushButton(new QPushButton(QStringLiteral("下载"), this)),
      progressBar(new QProgressBar(this)), bytesReceived(new QLabel(this)),
      bytesTotal(new QLabel(this)), label(new QLabel(QStringLiteral("下载："), this)),
      label_2(new QLabel(QStringLiteral("总大小："), this))
{
    setWindowTitle(QStringLiteral("软件更新"));
    setWindowFlags((windowFlags() | Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                    Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint) &
                   ~(Qt::WindowMinimizeButtonHint | Qt::WindowMaximizeButtonHint));
    setFixedSize(407, 147);

    pushButton->setObjectName(QStringLiteral("pushButton"));
    pushButton->setGeometry(287, 95, 100, 32);
    progressBar->setObjectName(QStringLiteral("progressBar"));
    progressBar->setGeometry(20, 24, 367, 24);
    progressBar->setRange(0, 100);
    progressBar->setValue(0);

    struct placed
    {
        QLabel* what;
        const char* name;
        QRect place;
    };
    for (const placed& one : {placed{label, "label", {20, 62, 60, 20}},
                              placed{bytesReceived, "bytesReceived", {80, 62, 110, 20}},
                              placed{label_2, "label_2", {200, 62, 70, 20}},
                              placed{bytesTotal, "bytesTotal", {270, 62, 117, 20}}}) {
        one.what->setObjectName(QLatin1String(one.name));
        one.what->setGeometry(one.place);
    }
    new QShortcut(QKeySequence::Cancel, this, this, &QWidget::close);
    QMetaObject::connectSlotsByName(this);
}

void updateForm::on_pushButton_clicked()
{
    pushButton->setEnabled(false);
    emit send_dowmfile_signal_to_software_upgrade();
}

void updateForm::set_ui(QString received, QString total, int percent)
{
    bytesReceived->setText(received);
    bytesTotal->setText(total);
    progressBar->setRange(0, percent < 0 ? 0 : 100);
    progressBar->setValue(percent);
}
